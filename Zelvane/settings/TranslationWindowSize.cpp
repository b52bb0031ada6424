#include "settings/TranslationWindowSize.h"

#include "settings/Localization.h"

#include <algorithm>

namespace zelvane {

QString rawValue(TranslationWindowSize size)
{
    switch (size) {
    case TranslationWindowSize::extraSmall:
        return QStringLiteral("extraSmall");
    case TranslationWindowSize::small:
        return QStringLiteral("small");
    case TranslationWindowSize::medium:
        return QStringLiteral("medium");
    case TranslationWindowSize::large:
        return QStringLiteral("large");
    case TranslationWindowSize::extraLarge:
        return QStringLiteral("extraLarge");
    }
    Q_UNREACHABLE();
}

TranslationWindowSize windowSizeFromStoredName(const QString& name)
{
    const auto* found =
        std::ranges::find_if(allTranslationWindowSizes,
                             [&](TranslationWindowSize size) { return rawValue(size) == name; });
    return found != allTranslationWindowSizes.end() ? *found : TranslationWindowSize::medium;
}

QString title(TranslationWindowSize size)
{
    switch (size) {
    case TranslationWindowSize::extraSmall:
        return localizedText(QStringLiteral("Extra Small"));
    case TranslationWindowSize::small:
        return localizedText(QStringLiteral("Small"));
    case TranslationWindowSize::medium:
        return localizedText(QStringLiteral("Medium"));
    case TranslationWindowSize::large:
        return localizedText(QStringLiteral("Large"));
    case TranslationWindowSize::extraLarge:
        return localizedText(QStringLiteral("Extra Large"));
    }
    Q_UNREACHABLE();
}

} // namespace zelvane
