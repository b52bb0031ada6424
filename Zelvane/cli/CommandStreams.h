#pragma once

#include <QIODevice>
#include <QString>

namespace zelvane {

/// The three standard streams of a command. Texts go out as UTF-8.
struct CommandStreams
{
    QIODevice& input;
    QIODevice& output;
    QIODevice& error;

    void print(const QString& text) const { output.write(text.toUtf8()); }

    /// One line on the error stream, behind the program's name.
    void complain(const QString& sentence) const
    {
        error.write("zelvane-desk: " + sentence.toUtf8() + '\n');
    }
};

/// `value` for output that is read line by line and column by column: backslashes, line breaks and
/// tabs are escaped.
[[nodiscard]] QByteArray onOneLine(const QByteArray& value);

} // namespace zelvane
