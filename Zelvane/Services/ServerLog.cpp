#include "Services/ServerLog.h"

#include "foundation/Text.h"

#include <QStringDecoder>

namespace zelvane {

namespace {

/// How many bytes a character has that begins with `byte`; 1 for what begins none.
qsizetype sequenceLength(unsigned char byte)
{
    if (byte >= 0xf0) {
        return 4;
    }
    if (byte >= 0xe0) {
        return 3;
    }
    return byte >= 0xc0 ? 2 : 1;
}

/// The number of bytes at the end of `bytes` that begin a character without finishing it.
qsizetype unfinishedBytes(const QByteArray& bytes)
{
    constexpr qsizetype longestBeginning = 3;
    for (qsizetype count = 1; count <= std::min(longestBeginning, bytes.size()); ++count) {
        const auto byte = static_cast<unsigned char>(bytes.at(bytes.size() - count));
        const bool isContinuation = (byte & 0xc0U) == 0x80U;
        if (!isContinuation) {
            return sequenceLength(byte) > count ? count : 0;
        }
    }
    return 0;
}

} // namespace

void ServerLog::begin(const QString& secret)
{
    m_secret = secret;
    m_unfinished.clear();
    m_text.clear();
}

void ServerLog::append(const QByteArray& bytes)
{
    QByteArray piece = m_unfinished + bytes;
    m_unfinished = piece.right(unfinishedBytes(piece));
    piece.chop(m_unfinished.size());

    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder.decode(piece);
    if (decoder.hasError()) {
        return;
    }
    m_text += decoded;
    constexpr qsizetype muchText = 8 * maximalCharacters;
    if (m_text.size() > muchText) {
        m_text = text();
    }
}

QString ServerLog::text() const
{
    QString shown = text::lastCharacters(m_text, maximalCharacters);
    return m_secret.isEmpty() ? shown : shown.replace(m_secret, QStringLiteral("***"));
}

} // namespace zelvane
