#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <mutex>
#include <optional>
#include <variant>

namespace zelvane {

/// A stored setting with its type.
using DefaultsValue = std::variant<bool, qint64, double, QString, QByteArray>;

/// Makes the new value, or none, out of the present one, or of none. Runs on any thread. It must
/// not use the settings, nor the interface language, which is one of them, and not mind being
/// applied to its own result: "add this to the list" rather than "add one".
using DefaultsUpdate =
    std::function<std::optional<DefaultsValue>(const std::optional<DefaultsValue>&)>;

/// The persistent settings of one user, by key.
///
/// Reads never touch the disk. Writes are visible to reads at once and reach the disk without
/// holding up the caller. Callable from any thread.
class UserDefaults
{
public:
    UserDefaults() = default;
    virtual ~UserDefaults() = default;
    Q_DISABLE_COPY_MOVE(UserDefaults)

    [[nodiscard]] virtual std::optional<DefaultsValue> value(const QString& key) const = 0;
    virtual void setValue(const QString& key, const DefaultsValue& value) = 0;
    virtual void remove(const QString& key) = 0;
    /// Changes a value that other processes change too: on the disk, `update` is applied to what is
    /// stored there by then.
    virtual void update(const QString& key, const DefaultsUpdate& update) = 0;
    [[nodiscard]] virtual QStringList keys() const = 0;

    /// Takes over what other processes have stored since. Blocks, so not for the main thread.
    virtual void reread() = 0;

    /// The value if it is stored and of this type, else none.
    [[nodiscard]] std::optional<QString> string(const QString& key) const;
    [[nodiscard]] std::optional<bool> boolean(const QString& key) const;
    [[nodiscard]] std::optional<QByteArray> data(const QString& key) const;
    /// A stored double, or a stored integer as one.
    [[nodiscard]] std::optional<double> number(const QString& key) const;
};

/// Settings that live in memory, over an optional read-only base: for one call of the command line,
/// whose choices must not stay, and for tests.
class OverlayUserDefaults final : public UserDefaults
{
public:
    /// `base` may be null and must outlive this object.
    explicit OverlayUserDefaults(const UserDefaults* base = nullptr);

    [[nodiscard]] std::optional<DefaultsValue> value(const QString& key) const override;
    void setValue(const QString& key, const DefaultsValue& value) override;
    void remove(const QString& key) override;
    void update(const QString& key, const DefaultsUpdate& update) override;
    [[nodiscard]] QStringList keys() const override;
    /// Does nothing: there is nobody else.
    void reread() override {}

private:
    const UserDefaults* m_base;
    mutable std::mutex m_lock;
    /// None marks a key that is removed here though the base has it.
    QHash<QString, std::optional<DefaultsValue>> m_changes;
};

} // namespace zelvane
