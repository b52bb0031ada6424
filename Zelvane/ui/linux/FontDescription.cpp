#include "ui/linux/FontDescription.h"

#include <QHash>
#include <QStringList>

namespace zelvane {

namespace {

const QHash<QString, QFont::Weight>& weights()
{
    static const QHash<QString, QFont::Weight> table{
        {QStringLiteral("thin"), QFont::Thin},
        {QStringLiteral("ultra-light"), QFont::ExtraLight},
        {QStringLiteral("extra-light"), QFont::ExtraLight},
        {QStringLiteral("light"), QFont::Light},
        {QStringLiteral("book"), QFont::Normal},
        {QStringLiteral("regular"), QFont::Normal},
        {QStringLiteral("normal"), QFont::Normal},
        {QStringLiteral("medium"), QFont::Medium},
        {QStringLiteral("semi-bold"), QFont::DemiBold},
        {QStringLiteral("demi-bold"), QFont::DemiBold},
        {QStringLiteral("bold"), QFont::Bold},
        {QStringLiteral("ultra-bold"), QFont::ExtraBold},
        {QStringLiteral("extra-bold"), QFont::ExtraBold},
        {QStringLiteral("heavy"), QFont::Black},
        {QStringLiteral("black"), QFont::Black},
    };
    return table;
}

/// Takes the style in `word` over into `font`. False if the word is no style.
bool applyStyle(const QString& word, QFont& font)
{
    const QString style = word.toLower();
    if (const auto weight = weights().constFind(style); weight != weights().constEnd()) {
        font.setWeight(*weight);
        return true;
    }
    if (style == QStringLiteral("italic") || style == QStringLiteral("oblique")) {
        font.setItalic(true);
        return true;
    }
    return false;
}

} // namespace

std::optional<QFont> fontFromDescription(const QString& description)
{
    QStringList words = description.split(u' ', Qt::SkipEmptyParts);
    if (words.size() < 2) {
        return std::nullopt;
    }
    bool isNumber = false;
    const double size = words.takeLast().toDouble(&isNumber);
    if (!isNumber || !(size >= 4 && size <= 96)) {
        return std::nullopt;
    }
    QFont font;
    font.setPointSizeF(size);
    while (words.size() > 1 && applyStyle(words.constLast(), font)) {
        words.removeLast();
    }
    QStringList families;
    for (const QString& family : words.join(u' ').split(u',', Qt::SkipEmptyParts)) {
        families += family.trimmed();
    }
    font.setFamilies(families);
    return font;
}

bool keepsFontInDescription(const QString& currentDesktop)
{
    const QStringList desktops = currentDesktop.split(u':');
    for (const char* name : {"GNOME", "Unity", "Budgie", "X-Cinnamon", "Pantheon"}) {
        if (desktops.contains(QLatin1String(name), Qt::CaseInsensitive)) {
            return true;
        }
    }
    return false;
}

} // namespace zelvane
