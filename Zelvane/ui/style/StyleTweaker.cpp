#include "ui/style/StyleTweaker.h"

namespace zelvane {

QString rawValue(StyleFontRole role)
{
    switch (role) {
    case StyleFontRole::headline:
        return QStringLiteral("headline");
    case StyleFontRole::title2:
        return QStringLiteral("title2");
    case StyleFontRole::title3:
        return QStringLiteral("title3");
    case StyleFontRole::body:
        return QStringLiteral("body");
    case StyleFontRole::callout:
        return QStringLiteral("callout");
    case StyleFontRole::calloutSemibold:
        return QStringLiteral("calloutSemibold");
    case StyleFontRole::caption:
        return QStringLiteral("caption");
    case StyleFontRole::captionSemibold:
        return QStringLiteral("captionSemibold");
    case StyleFontRole::bodySemibold:
        return QStringLiteral("bodySemibold");
    case StyleFontRole::monospacedCaption:
        return QStringLiteral("monospacedCaption");
    case StyleFontRole::monospacedBody:
        return QStringLiteral("monospacedBody");
    }
    Q_UNREACHABLE();
}

StyleTweaker::StyleTweaker(QObject* parent)
    : QObject(parent)
{
}

} // namespace zelvane
