#include "ui/settings/LanguagesPage.h"

#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"
#include "ui/components/TabOrder.h"
#include "ui/glossary/GlossaryDownloadsView.h"

#include <QHBoxLayout>

#include <utility>

namespace zelvane {

LanguagesPage::LanguagesPage(const Theme& theme, SettingsServices& services)
    : SettingsPage(theme, SettingsCategory::languages)
    , m_services(services)
    , m_pairs(addSection())
    , m_add(new TextButton(theme, ControlKind::bordered))
{
    auto* row = new QWidget;
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(m_add);
    line->addStretch(1);
    addSection(row);
    m_add->setSymbol(QStringLiteral("plus.circle"));
    connect(m_add, &QAbstractButton::clicked, &services.settings, &AppSettings::addPair);
    m_glossaries = addSection();
    m_glossaries->card().addRow(
        new GlossaryDownloadsView(theme, services.settings, services.glossaries));
    keepTranslated(*this, [this] { retranslate(); });
    observe(this, services.settings.bindablePairs(),
            [this](const QList<LanguagePair>&) { showPairs(); });
}

void LanguagesPage::retranslate()
{
    m_pairs->setTitle(localizedFormat(QStringLiteral("Language pairs & hotkeys (up to %lld)"),
                                      {qlonglong(maximalPairCount)}));
    m_pairs->setNote(localizedText(
        QStringLiteral("Add or remove pairs as needed. Bind Keys → press your shortcut → Save. "
                       "Hotkeys work globally (select text first). Needs Accessibility for "
                       "replace.")));
    setButtonText(*m_add, localizedText(QStringLiteral("Add pair")));
    m_glossaries->setTitle(localizedText(QStringLiteral("Translation glossaries")));
    m_glossaries->setNote(localizedText(
        QStringLiteral("We also recommend downloading dictionaries for your language pairs. They "
                       "help offline engines translate terms more accurately and consistently.")));
}

void LanguagesPage::showPairs()
{
    const QList<LanguagePair> pairs = m_services.settings.pairs();
    QList<LanguagePairRow*> before = std::exchange(m_rows, {});
    for (const LanguagePair& pair : pairs) {
        const auto present = std::ranges::find(before, pair.id, &LanguagePairRow::pairID);
        LanguagePairRow* row = nullptr;
        if (present != before.end()) {
            row = *present;
            before.erase(present);
        } else {
            row = new LanguagePairRow(theme(), m_services, pair.id);
            m_pairs->card().insertRow(int(m_rows.size()), row);
        }
        m_rows.append(row);
    }
    for (LanguagePairRow* gone : before) {
        // Its button may be the one that is being pressed.
        gone->hide();
        gone->deleteLater();
    }
    m_pairs->card().setVisible(!m_rows.isEmpty());
    m_add->setEnabled(pairs.size() < maximalPairCount);
    tabInReadingOrder(*this);
}

} // namespace zelvane
