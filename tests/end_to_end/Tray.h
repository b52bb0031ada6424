#pragma once

#include "end_to_end/ZelvaneSession.h"

namespace zelvane::test {

/// A tray at the lower right of a monitor, in which the program shows its icon.
class Tray
{
public:
    static inline const QString panelTitle = QStringLiteral("^Zelvane Desk$");

    /// Monitors are numbered from 1.
    explicit Tray(ZelvaneSession& session, int monitor = 1);

    /// Clicks on the icon until the program's panel is there: a tray moves an icon while it takes
    /// it in. Yields the panel's window.
    QString openPanel();

private:
    /// Clicks on the program's window in the tray, the only one of its windows that shows unasked,
    /// if it is there already.
    void clickIcon();

    ZelvaneSession& m_session;
};

} // namespace zelvane::test
