#include "desktop/ProgramControl.h"

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

QString direction(const LanguagePair& pair)
{
    return pair.source + QStringLiteral(" → ") + pair.target;
}

std::expected<LanguagePair, QString> findPair(const QList<LanguagePair>& pairs,
                                              const QString& which)
{
    bool isNumber = false;
    const qlonglong position = which.toLongLong(&isNumber);
    if (isNumber) {
        if (position < 1 || position > pairs.size()) {
            return std::unexpected(
                QStringLiteral("Language pair slot %1 is not configured.").arg(position));
        }
        return pairs[position - 1];
    }
    const QUuid id = QUuid::fromString(which);
    const auto pair = std::ranges::find(pairs, id, &LanguagePair::id);
    if (id.isNull() || pair == pairs.end()) {
        return std::unexpected(QStringLiteral("There is no language pair \"%1\".").arg(which));
    }
    return *pair;
}

} // namespace

ProgramControl::ProgramControl(const Parts& parts, Actions actions)
    : m_parts(parts)
    , m_actions(std::move(actions))
{
}

void ProgramControl::activate()
{
    m_actions.reopen();
    if (!m_actions.anyWindowIsVisible() && !m_actions.hasTrayIcon()) {
        m_actions.openPanel();
    }
}

std::expected<void, QString> ProgramControl::triggerPair(const QString& which)
{
    const auto pair = findPair(m_parts.settings.pairs(), which.trimmed());
    if (!pair) {
        return std::unexpected(pair.error());
    }
    if (!pair->enabled) {
        return std::unexpected(
            QStringLiteral("Language pair %1 is disabled in Settings.").arg(direction(*pair)));
    }
    m_parts.model.handleHotKey(pair->id);
    return {};
}

void ProgramControl::showTranslationWindow()
{
    m_parts.windows.showManualTranslationWindow();
}

void ProgramControl::showSettings()
{
    m_actions.showSettings();
}

ProgramControl::Status ProgramControl::status() const
{
    Status status{m_parts.model.status(),
                  m_parts.model.isBusy(),
                  m_parts.model.lastError().value_or(QString()),
                  {},
                  {}};
    const QList<LanguagePair> pairs = m_parts.settings.pairs();
    for (const LanguagePair& pair : pairs) {
        status.pairs += direction(pair);
        status.pairIDs += pair.id.toString(QUuid::WithoutBraces);
    }
    return status;
}

} // namespace zelvane
