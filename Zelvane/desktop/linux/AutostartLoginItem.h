#pragma once

#include "desktop/LoginItem.h"
#include "desktop/linux/AutostartFile.h"
#include "foundation/Worker.h"

namespace zelvane {

/// The autostart file, read and written on a worker's thread.
class AutostartLoginItem final : public LoginItem
{
public:
    /// `worker` must outlive this object.
    AutostartLoginItem(AutostartFile file, Worker& worker);

    [[nodiscard]] QCoro::Task<State> look() override;
    [[nodiscard]] QCoro::Task<bool> set(bool on) override;

private:
    AutostartFile m_file;
    Worker& m_worker;
};

/// The user's autostart folder, which may not exist.
[[nodiscard]] QString autostartFolder();

} // namespace zelvane
