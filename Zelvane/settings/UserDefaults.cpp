#include "settings/UserDefaults.h"

#include <QSet>

namespace zelvane {

namespace {

template <typename T>
std::optional<T> valueOfType(const UserDefaults& defaults, const QString& key)
{
    const std::optional<DefaultsValue> stored = defaults.value(key);
    if (stored && std::holds_alternative<T>(*stored)) {
        return std::get<T>(*stored);
    }
    return std::nullopt;
}

} // namespace

std::optional<QString> UserDefaults::string(const QString& key) const
{
    return valueOfType<QString>(*this, key);
}

std::optional<bool> UserDefaults::boolean(const QString& key) const
{
    return valueOfType<bool>(*this, key);
}

std::optional<QByteArray> UserDefaults::data(const QString& key) const
{
    return valueOfType<QByteArray>(*this, key);
}

std::optional<double> UserDefaults::number(const QString& key) const
{
    if (const auto whole = valueOfType<qint64>(*this, key)) {
        return static_cast<double>(*whole);
    }
    return valueOfType<double>(*this, key);
}

OverlayUserDefaults::OverlayUserDefaults(const UserDefaults* base)
    : m_base(base)
{
}

std::optional<DefaultsValue> OverlayUserDefaults::value(const QString& key) const
{
    const std::scoped_lock lock(m_lock);
    if (const auto change = m_changes.constFind(key); change != m_changes.constEnd()) {
        return *change;
    }
    return m_base ? m_base->value(key) : std::nullopt;
}

void OverlayUserDefaults::setValue(const QString& key, const DefaultsValue& value)
{
    const std::scoped_lock lock(m_lock);
    m_changes.insert(key, value);
}

void OverlayUserDefaults::remove(const QString& key)
{
    const std::scoped_lock lock(m_lock);
    m_changes.insert(key, std::nullopt);
}

void OverlayUserDefaults::update(const QString& key, const DefaultsUpdate& update)
{
    const auto next = update(value(key));
    const std::scoped_lock lock(m_lock);
    m_changes.insert(key, next);
}

QStringList OverlayUserDefaults::keys() const
{
    const std::scoped_lock lock(m_lock);
    QStringList baseKeys = m_base ? m_base->keys() : QStringList();
    QSet<QString> all(baseKeys.cbegin(), baseKeys.cend());
    for (auto change = m_changes.cbegin(); change != m_changes.cend(); ++change) {
        if (change.value()) {
            all.insert(change.key());
        } else {
            all.remove(change.key());
        }
    }
    QStringList sorted(all.cbegin(), all.cend());
    sorted.sort();
    return sorted;
}

} // namespace zelvane
