#pragma once

#include <QByteArray>
#include <QString>

namespace zelvane {

/// The end of what a server printed.
class ServerLog
{
public:
    static constexpr qsizetype maximalCharacters = 20000;

    /// Begins anew. `secret` is blotted out of what follows.
    void begin(const QString& secret);

    /// Takes bytes that may be cut anywhere. A piece that isn't UTF-8 is dropped whole.
    void append(const QByteArray& bytes);

    /// At most the last `maximalCharacters` user-perceived characters.
    [[nodiscard]] QString text() const;

private:
    QString m_secret;
    QByteArray m_unfinished; ///< the first bytes of a character whose others are still to come
    QString m_text;          ///< cut now and then only, since counting takes time
};

} // namespace zelvane
