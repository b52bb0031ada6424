#include "ui/settings/AboutPage.h"

#include "foundation/DescribedError.h"
#include "settings/Localization.h"
#include "ui/components/Styling.h"
#include "ui/licenses/ModelLicensesSheet.h"
#include "ui/style/Symbols.h"

#include <QGuiApplication>
#include <QHBoxLayout>

namespace zelvane {

namespace {

constexpr int iconSide = 48;

struct Page
{
    QString label;
    QUrl address;
};

/// The program's pages for its users.
const QList<Page>& pages()
{
    static const QString site = QStringLiteral("https://zelvane.example");
    static const QList<Page> pages{
        {LOCALIZATION_KEY("Website"), QUrl(site)},
        {LOCALIZATION_KEY("Privacy Policy"), QUrl(site + QStringLiteral("/privacy"))},
        {LOCALIZATION_KEY("Terms of Service"), QUrl(site + QStringLiteral("/terms"))},
    };
    return pages;
}

/// Such as "1.2.0 (34)".
QString versionText(const QString& buildNumber)
{
    const QString version = QCoreApplication::applicationVersion();
    return buildNumber.isEmpty() ? version : QStringLiteral("%1 (%2)").arg(version, buildNumber);
}

} // namespace

AboutPage::AboutPage(const Theme& theme, SettingsServices& services)
    : SettingsPage(theme, SettingsCategory::general)
    , m_services(services)
    , m_version(new FormRow(theme))
    , m_versionText(new ThemedLabel(theme, StyleFontRole::body, TextTone::secondary))
    , m_installId(new FormRow(theme))
    , m_installIdText(new ThemedLabel(theme, StyleFontRole::monospacedCaption, TextTone::secondary))
    , m_copy(new TextButton(theme, ControlKind::bordered))
    , m_licenses(new TextButton(theme, ControlKind::bordered))
{
    m_version->addControl(m_versionText);
    m_installIdText->setElides(true);
    m_installIdText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_installId->addControl(m_installIdText);
    m_installId->addControl(m_copy);
    m_copy->setEnabled(false);
    m_copy->setSymbol(QStringLiteral("doc.on.doc"));
    m_licenses->setSymbol(QStringLiteral("doc.text"));
    Section* facts = addSection();
    facts->card().addRow(makeHead());
    facts->card().addRow(m_version);
    facts->card().addRow(m_installId);

    auto* links = new QWidget;
    auto* row = new RowLayout(links);
    auto* pageLinks = new RowLayout;
    row->setContent(pageLinks);
    row->setSpacing(qRound(theme.tokens().spacing().lg));
    pageLinks->setSpacing(row->spacing());
    for (qsizetype i = 0; i < pages().size(); ++i) {
        m_links.append(new LinkLabel(theme));
        pageLinks->addWidget(m_links.last());
    }
    row->addWidget(m_licenses);
    addSection(links);

    connect(m_copy, &QAbstractButton::clicked, this,
            [this] { m_services.writeToClipboard(m_installIdText->text()); });
    connect(m_licenses, &QAbstractButton::clicked, this, [this] {
        auto* sheet = new ModelLicensesSheet(this->theme(), *window());
        sheet->present();
    });
    keepTranslated(*this, [this] { retranslate(); });
    m_tasks.start([this](std::stop_token stop) { return fetchInstallId(std::move(stop)); });
}

/// The program's icon and name.
QWidget* AboutPage::makeHead()
{
    auto* icon = new QLabel;
    auto* name = new ThemedLabel(theme(), StyleFontRole::title3, TextTone::primary);
    name->setText(QGuiApplication::applicationDisplayName());
    auto* head = new QWidget;
    auto* row = new QHBoxLayout(head);
    row->setSpacing(qRound(theme().tokens().spacing().md));
    row->addWidget(icon);
    row->addWidget(name, 1);
    keepStyled(*icon, theme(), [icon] {
        icon->setPixmap(
            picturePixmap(QStringLiteral("org.zelvane.desk"), iconSide, icon->devicePixelRatioF()));
    });
    return head;
}

QCoro::Task<void> AboutPage::fetchInstallId(std::stop_token stop)
{
    QString id;
    try {
        id = co_await m_services.installId(stop);
    } catch (const DescribedError&) {
        co_return; // there is nothing to show, and nothing to copy
    }
    if (!stop.stop_requested()) {
        m_installIdText->setText(id);
        m_copy->setEnabled(!id.isEmpty());
    }
}

void AboutPage::retranslate()
{
    m_version->setTitle(localizedText(QStringLiteral("Version")));
    m_versionText->setText(versionText(m_services.buildNumber));
    m_installId->setTitle(localizedText(QStringLiteral("Install ID")));
    setButtonText(*m_copy, localizedText(QStringLiteral("Copy")));
    setButtonText(*m_licenses, localizedText(QStringLiteral("Third-Party Licenses…")));
    for (qsizetype i = 0; i < m_links.size(); ++i) {
        m_links[i]->setLink(localizedText(pages()[i].label), pages()[i].address);
    }
}

} // namespace zelvane
