#include "ui/settings/SettingsCategory.h"

#include "settings/Localization.h"

namespace zelvane {

namespace {

struct Row
{
    QString raw;
    QString title;
    QString subtitle;
    QString symbol;
};

const Row& rowOf(SettingsCategory category)
{
    static const std::array<Row, allSettingsCategories.size()> rows{{
        {QStringLiteral("translation"), LOCALIZATION_KEY("Translation"),
         LOCALIZATION_KEY("Choose AI engines and models."), QStringLiteral("sparkles")},
        {QStringLiteral("languages"), LOCALIZATION_KEY("Languages"),
         LOCALIZATION_KEY("Language pairs, hotkeys, and glossary downloads."),
         QStringLiteral("globe")},
        {QStringLiteral("behavior"), LOCALIZATION_KEY("Behavior"),
         LOCALIZATION_KEY("Hotkeys, windows, and how translation is applied."),
         QStringLiteral("keyboard")},
        {QStringLiteral("accessibility"), LOCALIZATION_KEY("Accessibility"),
         LOCALIZATION_KEY("Permissions needed to read and replace selected text."),
         QStringLiteral("hand.raised")},
        {QStringLiteral("general"), LOCALIZATION_KEY("About"),
         LOCALIZATION_KEY("Version, legal links, and this Mac's install ID."),
         QStringLiteral("info.circle")},
    }};
    return rows.at(static_cast<std::size_t>(category));
}

} // namespace

QString rawValue(SettingsCategory category)
{
    return rowOf(category).raw;
}

QString title(SettingsCategory category)
{
    return localizedText(rowOf(category).title);
}

QString subtitle(SettingsCategory category)
{
    return localizedText(rowOf(category).subtitle);
}

QString sidebarSymbol(SettingsCategory category)
{
    return rowOf(category).symbol;
}

} // namespace zelvane
