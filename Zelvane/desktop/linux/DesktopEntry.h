#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace zelvane {

/// A file that tells a desktop of a program, as far as this program reads and changes such files:
/// the keys of its main group. All other lines stay as they are.
class DesktopEntry
{
public:
    /// Whatever the bytes are.
    [[nodiscard]] static DesktopEntry parse(const QByteArray& bytes);

    [[nodiscard]] std::optional<QString> value(const QString& key) const;
    /// A value is kept on one line: it must hold no line break.
    void setValue(const QString& key, const QString& value);
    void remove(const QString& key);

    [[nodiscard]] QByteArray toBytes() const;

    friend bool operator==(const DesktopEntry&, const DesktopEntry&) = default;

private:
    [[nodiscard]] qsizetype lineOf(const QString& key) const;

    QStringList m_lines;
    /// The lines of the main group: from behind its head to the next one's.
    qsizetype m_begin = 0;
    qsizetype m_end = 0;
};

/// A command for the key "Exec": quoted so that every argument arrives as it is.
[[nodiscard]] QString execValue(const QStringList& command);

/// The program that such a value starts; empty if it can't be read.
[[nodiscard]] QString programOfExec(const QString& value);

} // namespace zelvane
