#include "desktop/linux/AutostartLoginItem.h"

#include <QStandardPaths>

#include <tuple>
#include <utility>

namespace zelvane {

AutostartLoginItem::AutostartLoginItem(AutostartFile file, Worker& worker)
    : m_file(std::move(file))
    , m_worker(worker)
{
}

QCoro::Task<LoginItem::State> AutostartLoginItem::look()
{
    return m_worker.run(
        [file = m_file] {
            // One that can't be written is as good as one that needn't be: it is looked at next.
            std::ignore = file.repair();
            return file.state();
        },
        {});
}

QCoro::Task<bool> AutostartLoginItem::set(bool on)
{
    return m_worker.run(
        [file = m_file, on] { return on ? file.turnOn().has_value() : file.turnOff().has_value(); },
        {});
}

QString autostartFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart");
}

} // namespace zelvane
