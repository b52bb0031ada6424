#pragma once

#include "foundation/DescribedError.h"

namespace zelvane {

/// Why a dictionary can't be had.
class GlossaryError final : public DescribedError
{
public:
    enum class Code {
        noData,
        preparationFailed,
    };

    /// No dictionary is published for the language of this English name.
    [[nodiscard]] static GlossaryError noData(QString languageName);
    /// The published dictionary can't be made use of; `reason` is shown as it stands.
    [[nodiscard]] static GlossaryError preparationFailed(QString reason);

    [[nodiscard]] Code code() const { return m_code; }
    /// The name or the reason.
    [[nodiscard]] const QString& payload() const { return m_payload; }

    [[nodiscard]] QString description() const override;

private:
    GlossaryError(Code code, QString payload);

    Code m_code;
    QString m_payload;
};

} // namespace zelvane
