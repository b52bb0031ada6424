#pragma once

#include "foundation/DescribedError.h"

namespace zelvane {

/// What kept an engine on this machine from being installed or started.
class EngineError final : public DescribedError
{
public:
    /// The codes are those that reports of users name.
    enum Code {
        unpackFailed = 10,
        sizeMismatch = 11,
        archiveMissing = 12,
        serverEnded = 20,
        serverTooSlow = 21,
    };

    /// The same for all of these failures.
    [[nodiscard]] static QString domain();

    /// `text` is a key of the translations, or foreign text, which is shown as it is. `code` is one
    /// of the above or the exit status of a program.
    EngineError(int code, QString text);

    [[nodiscard]] int code() const { return m_code; }
    [[nodiscard]] QString description() const override;

private:
    int m_code;
    QString m_text;
};

} // namespace zelvane
