#pragma once

#include "ui/menubar/IconPulse.h"
#include "ui/menubar/MenuBarModel.h"
#include "ui/style/Theme.h"

#include <QHash>
#include <QIcon>
#include <QObject>

namespace zelvane {

/// The program's picture in the tray, which pulses while a translation runs.
class MenuBarStatusIcon final : public QObject
{
    Q_OBJECT

public:
    /// All must outlive this object.
    MenuBarStatusIcon(MenuBarModel& model, const Theme& theme, Clock& clock);

    /// The picture of this moment.
    [[nodiscard]] QIcon icon();

Q_SIGNALS:
    /// There is another picture.
    void changed();

private:
    IconPulse m_pulse;
    /// By opacity in percent. The pulse comes by the same ones again and again.
    QHash<int, QIcon> m_icons;
};

} // namespace zelvane
