#pragma once

#include "settings/KeyChord.h"

#include <functional>
#include <optional>

namespace zelvane {

/// Names a registration in the platform's press events.
struct HotKeyID
{
    quint32 signature = 0;
    quint32 id = 0;

    friend bool operator==(const HotKeyID&, const HotKeyID&) = default;
};

/// The platform's global shortcuts. Main thread.
class HotKeyRegistrar
{
public:
    /// An opaque handle of a live registration.
    using Reference = quint64;

    HotKeyRegistrar() = default;
    virtual ~HotKeyRegistrar() = default;
    Q_DISABLE_COPY_MOVE(HotKeyRegistrar)

    /// Delivers every later press of a registered chord to `onPressed`, on the main thread and not
    /// from within the call that the platform makes. False if the platform refuses.
    [[nodiscard]] virtual bool installHandler(std::function<void(HotKeyID)> onPressed) = 0;

    /// None if the platform refuses the chord: another program holds it, or no key has this code.
    [[nodiscard]] virtual std::optional<Reference> registerHotKey(const KeyChord& chord,
                                                                  HotKeyID id) = 0;

    virtual void unregisterHotKey(Reference reference) = 0;
};

} // namespace zelvane
