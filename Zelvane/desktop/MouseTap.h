#pragma once

#include <QPoint>
#include <QString>

#include <functional>

namespace zelvane {

/// What a tap tells of: a press or release of the right button, or that it has been switched off.
struct TapEvent
{
    enum class Type {
        rightMouseDown,
        rightMouseUp,
        disabledByTimeout,
        disabledByUserInput,
        other,
    };

    /// Bits of `flags`.
    static constexpr quint32 shiftFlag = 0x20000;
    static constexpr quint32 controlFlag = 0x40000;
    static constexpr quint32 optionFlag = 0x80000;
    static constexpr quint32 commandFlag = 0x100000;

    Type type = Type::other;
    /// The modifiers that were down.
    quint32 flags = 0;
    /// Where the pointer was, in the platform's own coordinates.
    QPoint location = {}; // NOLINT(readability-redundant-member-init)
};

enum class TapVerdict {
    pass,
    /// The program under the pointer never sees the event.
    swallow,
};

/// The platform's interception of right clicks, whatever window they fall on. At most one tap
/// exists. Main thread.
class MouseTap
{
public:
    /// Where the tap sits on an event's way to the programs.
    enum class Place {
        hardware,
        session,
    };

    /// Called for each event, on the main thread. A tap may leave out clicks without the Option
    /// key, which pass in any case. The tap must not be removed from within the call.
    using Handler = std::function<TapVerdict(const TapEvent&)>;

    MouseTap() = default;
    virtual ~MouseTap() = default;
    Q_DISABLE_COPY_MOVE(MouseTap)

    /// Makes the tap and switches it on. False if the platform refuses it at this place.
    [[nodiscard]] virtual bool create(Place place, Handler handler) = 0;
    /// Switches a tap on again that has been switched off. False if that can't be done any more.
    [[nodiscard]] virtual bool enable() = 0;
    /// Removes the tap, if there is one.
    virtual void remove() = 0;

    /// Why the last `create` failed, for the user, if the platform knows that; else empty.
    [[nodiscard]] virtual QString refusal() const = 0;
};

} // namespace zelvane
