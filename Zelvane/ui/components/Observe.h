#pragma once

#include <QBindable>
#include <QObject>
#include <QPropertyNotifier>

#include <utility>

namespace zelvane {

/// Runs `apply` with the value of `property` now and after each change, as long as `owner` lives.
template <typename T, typename Apply>
void observe(QObject* owner, QBindable<T> property, Apply apply)
{
    /// Goes with the owner and takes the subscription along.
    class Subscription final : public QObject
    {
    public:
        using QObject::QObject;
        QPropertyNotifier notifier;
    };
    auto* subscription = new Subscription(owner);
    apply(property.value());
    subscription->notifier = property.addNotifier(
        [property, apply = std::move(apply)]() mutable { apply(property.value()); });
}

} // namespace zelvane
