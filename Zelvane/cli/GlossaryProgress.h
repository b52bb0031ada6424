#pragma once

#include "cli/CommandStreams.h"
#include "glossary/GlossaryManager.h"

#include <QProperty>

namespace zelvane {

/// Tells on the error stream how the installation of a package goes, as long as it exists.
class GlossaryProgress
{
public:
    enum class Style {
        oneLine,    ///< for a terminal: one line that changes and goes in the end
        plainLines, ///< one line for each step
    };

    /// Both must outlive this object.
    GlossaryProgress(GlossaryManager& manager, const GlossaryPackage& package,
                     const CommandStreams& streams, Style style);
    ~GlossaryProgress();
    Q_DISABLE_COPY_MOVE(GlossaryProgress)

private:
    void show();
    /// Empty if there is nothing to be told.
    [[nodiscard]] QString step() const;
    [[nodiscard]] QString amount() const;
    [[nodiscard]] QString direction(const QString& targetCode) const;

    GlossaryManager& m_manager;
    const GlossaryPackage m_package;
    const QString m_key;
    const CommandStreams m_streams;
    const Style m_style;
    QString m_shown;
    QPropertyNotifier m_onActivity;
    QPropertyNotifier m_onDownload;
};

} // namespace zelvane
