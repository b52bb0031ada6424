#pragma once

#include <QtGlobal>

namespace zelvane {

/// Whether the program shows among the running programs: in the Dock, or in the taskbar and in the
/// switcher of Alt+Tab. Main thread.
class ActivationPolicy
{
public:
    enum class Kind {
        accessory, ///< it lives in the tray alone
        regular,   ///< its windows show among those of other programs
    };

    ActivationPolicy() = default;
    virtual ~ActivationPolicy() = default;
    Q_DISABLE_COPY_MOVE(ActivationPolicy)

    [[nodiscard]] virtual Kind current() const = 0;
    virtual void set(Kind kind) = 0;
};

} // namespace zelvane
