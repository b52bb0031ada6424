#include "ui/menubar/MenuBarModel.h"

#include "settings/LanguageNames.h"
#include "settings/Localization.h"

namespace zelvane {

MenuBarModel::MenuBarModel(const AppSettings& settings, QBindable<QString> status,
                           QBindable<bool> isBusy)
    : m_settings(settings)
    , m_status(status)
    , m_isBusy(isBusy)
{
}

QString MenuBarModel::title() const
{
    return localizedText(QStringLiteral("Zelvane Desk"));
}

QList<MenuBarRow> MenuBarModel::rows() const
{
    QList<MenuBarRow> rows;
    for (const LanguagePair& pair : m_settings.enabledPairs()) {
        rows.append({localizedLanguageName(pair.source) + QStringLiteral(" → ") +
                         localizedLanguageName(pair.target),
                     pair.hotKey ? displayText(*pair.hotKey) : QStringLiteral("—"),
                     pair.hotKey.has_value()});
    }
    return rows;
}

QBindable<QList<LanguagePair>> MenuBarModel::bindablePairs() const
{
    return m_settings.bindablePairs();
}

} // namespace zelvane
