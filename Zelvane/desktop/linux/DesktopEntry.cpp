#include "desktop/linux/DesktopEntry.h"

namespace zelvane {

namespace {

const QString mainGroup = QStringLiteral("[Desktop Entry]");

/// The key that a line sets; empty for any other line.
QStringView keyOf(QStringView line)
{
    const qsizetype equals = line.indexOf(u'=');
    return equals < 0 || line.startsWith(u'#') ? QStringView() : line.first(equals).trimmed();
}

bool isPlain(const QString& argument)
{
    // What means something to the reader of the command.
    const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    return !argument.isEmpty() &&
           std::ranges::none_of(argument, [&](QChar c) { return reserved.contains(c); });
}

QString quoted(const QString& argument)
{
    QString inside;
    for (const QChar c : argument) {
        if (QStringLiteral("\"`$\\").contains(c)) {
            inside += u'\\';
        }
        inside += c;
    }
    return u'"' + inside + u'"';
}

} // namespace

DesktopEntry DesktopEntry::parse(const QByteArray& bytes)
{
    DesktopEntry entry;
    entry.m_lines = QString::fromUtf8(bytes).split(u'\n');
    if (entry.m_lines.last().isEmpty()) {
        entry.m_lines.removeLast(); // behind the last line's end
    }
    const qsizetype head = entry.m_lines.indexOf(mainGroup);
    if (head < 0) {
        entry.m_lines.append(mainGroup);
        entry.m_begin = entry.m_end = entry.m_lines.size();
        return entry;
    }
    entry.m_begin = entry.m_end = head + 1;
    while (entry.m_end < entry.m_lines.size() && !entry.m_lines[entry.m_end].startsWith(u'[')) {
        ++entry.m_end;
    }
    return entry;
}

qsizetype DesktopEntry::lineOf(const QString& key) const
{
    for (qsizetype i = m_begin; i < m_end; ++i) {
        if (keyOf(m_lines[i]) == key) {
            return i;
        }
    }
    return -1;
}

std::optional<QString> DesktopEntry::value(const QString& key) const
{
    const qsizetype line = lineOf(key);
    if (line < 0) {
        return std::nullopt;
    }
    return m_lines[line].sliced(m_lines[line].indexOf(u'=') + 1).trimmed();
}

void DesktopEntry::setValue(const QString& key, const QString& value)
{
    const QString text = key + u'=' + value;
    if (const qsizetype line = lineOf(key); line >= 0) {
        m_lines[line] = text;
        return;
    }
    // Behind the last key: blank lines and comments at the end belong to the next group.
    qsizetype place = m_end;
    while (place > m_begin && keyOf(m_lines[place - 1]).isEmpty()) {
        --place;
    }
    m_lines.insert(place, text);
    ++m_end;
}

void DesktopEntry::remove(const QString& key)
{
    if (const qsizetype line = lineOf(key); line >= 0) {
        m_lines.removeAt(line);
        --m_end;
    }
}

QByteArray DesktopEntry::toBytes() const
{
    return m_lines.join(u'\n').toUtf8() + '\n';
}

QString execValue(const QStringList& command)
{
    QStringList parts;
    for (const QString& argument : command) {
        parts << (isPlain(argument) ? argument : quoted(argument));
    }
    // Per cent signs stand for what the desktop puts in, and the file's own escapes come on top.
    return parts.join(u' ')
        .replace(u'%', QStringLiteral("%%"))
        .replace(u'\\', QStringLiteral("\\\\"));
}

QString programOfExec(const QString& value)
{
    QString text = value;
    text.replace(QStringLiteral("\\\\"), QStringLiteral("\\"))
        .replace(QStringLiteral("%%"), QStringLiteral("%"));
    if (!text.startsWith(u'"')) {
        return text.section(u' ', 0, 0);
    }
    QString program;
    for (qsizetype i = 1; i < text.size(); ++i) {
        if (text[i] == u'"') {
            return program;
        }
        if (text[i] == u'\\' && i + 1 < text.size()) {
            ++i;
        }
        program += text[i];
    }
    return {}; // the quotation doesn't end
}

} // namespace zelvane
