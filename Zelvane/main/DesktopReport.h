#pragma once

#include "desktop/AppModel.h"
#include "foundation/Clock.h"
#include "main/Platform.h"

#include <memory>

namespace zelvane {

/// Prints what `--report` promises, for as long as the model lives.
void reportOn(AppModel& model);

/// Tells on standard error what the desktop lacks, once that is known: what is missing at first may
/// just be starting.
class ShortcomingNotice
{
public:
    /// Both must outlive this object.
    ShortcomingNotice(const Desktop& desktop, Clock& clock);

private:
    void look();

    const Desktop& m_desktop;
    int m_looks = 0;
    std::unique_ptr<Timer> m_timer;
};

} // namespace zelvane
