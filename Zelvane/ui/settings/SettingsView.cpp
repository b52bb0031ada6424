#include "ui/settings/SettingsView.h"

#include "desktop/SettingsWindow.h"
#include "settings/Localization.h"
#include "ui/components/FocusRing.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"
#include "ui/settings/AboutPage.h"
#include "ui/settings/AccessibilityPage.h"
#include "ui/settings/BehaviorPage.h"
#include "ui/settings/LanguagesPage.h"
#include "ui/settings/TranslationPage.h"

#include <QAccessibleWidget>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace zelvane {

namespace {

/// Long words and large letters make it wider.
constexpr int leastSidebarWidth = 210;
/// What a desktop draws above a window, at most.
constexpr int titleBarHeight = 40;

/// Qt takes a window of its own for a mere container.
QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* view = qobject_cast<SettingsView*>(object);
    return view ? new QAccessibleWidget(view, QAccessible::Window) : nullptr;
}

} // namespace

SettingsView::SettingsView(const Theme& theme, SettingsServices& services, Clock& clock)
    : m_theme(theme)
    , m_services(services)
    , m_clock(clock)
    , m_sidebar(nullptr)
    , m_languageLabel(new ThemedLabel(theme, StyleFontRole::caption, TextTone::secondary))
    , m_language(new Picker(theme))
    , m_banner(new Banner(theme))
    , m_bannerButton(new TextButton(theme, ControlKind::bordered))
    , m_stack(new QStackedWidget)
{
    [[maybe_unused]] static const bool installed =
        (QAccessible::installFactory(makeAccessible), true);
    setObjectName(SettingsWindow::identifier());
    setAttribute(Qt::WA_QuitOnClose, false);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(makeSidebar());
    row->addWidget(makeContent(), 1);
    new FocusRing(theme, *this);

    keepStyled(*this, theme, [this] {
        setMinimumSize(
            leastSize(m_theme.tokens().settings(), screen()->availableGeometry().height()));
        update();
    });
    keepTranslated(*this, [this] { retranslate(); });
    observe(this, services.permissionState,
            [this](AccessibilityPermission::State) { showBanner(); });
    select(SettingsCategory::translation);
}

SettingsView::~SettingsView() = default;

QSize SettingsView::leastSize(const SettingsLayoutTokens& tokens, int screenHeight)
{
    return {qRound(tokens.minWidth),
            std::min(qRound(tokens.minHeight), screenHeight - titleBarHeight)};
}

QWidget* SettingsView::makeSidebar()
{
    m_sidebar = new QWidget;
    m_sidebar->setMinimumWidth(leastSidebarWidth);
    m_sidebar->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    auto* column = new QVBoxLayout(m_sidebar);
    auto* group = new QButtonGroup(this);
    for (const SettingsCategory category : allSettingsCategories) {
        auto* entry = new ListRow(m_theme, title(category));
        entry->setCheckable(true);
        entry->setAutoExclusive(true); // what screen readers take for a choice of one
        entry->setSymbol(sidebarSymbol(category));
        group->addButton(entry);
        column->addWidget(entry);
        connect(entry, &QAbstractButton::clicked, this, [this, category] { select(category); });
        m_rows.at(std::size_t(category)) = entry;
    }
    column->addStretch(1);
    column->addWidget(m_languageLabel);
    column->addWidget(m_language);
    connect(m_language, &Picker::activated, this, [this](int index) {
        m_services.settings.setAppLanguage(allAppLanguages.at(std::size_t(index)));
        m_services.languageChosen();
    });
    observe(m_language, m_services.settings.bindableAppLanguage(),
            [this](AppLanguage language) { m_language->setCurrentIndex(int(language)); });
    keepStyled(*m_sidebar, m_theme, [this, column] {
        const int margin = qRound(m_theme.tokens().spacing().md);
        column->setContentsMargins(margin, margin + 4, margin, margin);
        column->setSpacing(2);
        m_languageLabel->setContentsMargins(2, 0, 0, 2);
    });
    return m_sidebar;
}

QWidget* SettingsView::makeContent()
{
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    auto* frame = new QWidget;
    auto* inset = new QVBoxLayout(frame);
    inset->addWidget(m_banner);
    m_banner->addButton(m_bannerButton);
    connect(m_bannerButton, &QAbstractButton::clicked, this,
            [this] { select(SettingsCategory::accessibility); });
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(frame);
    column->addWidget(m_stack, 1);
    keepStyled(*frame, m_theme, [this, inset] {
        const int margin = qRound(m_theme.tokens().spacing().xxl);
        inset->setContentsMargins(margin, margin, margin, 0);
    });
    return content;
}

SettingsPage* SettingsView::makePage(SettingsCategory category)
{
    switch (category) {
    case SettingsCategory::translation: {
        auto* page = new TranslationPage(m_theme, m_services);
        connect(this, &SettingsView::appeared, page, &TranslationPage::appeared);
        return page;
    }
    case SettingsCategory::languages:
        return new LanguagesPage(m_theme, m_services);
    case SettingsCategory::behavior:
        return new BehaviorPage(m_theme, m_services, m_clock);
    case SettingsCategory::accessibility:
        return new AccessibilityPage(m_theme, m_services);
    case SettingsCategory::general:
        return new AboutPage(m_theme, m_services);
    }
    Q_UNREACHABLE();
}

void SettingsView::select(SettingsCategory category)
{
    Shown& shown = m_pages[category];
    if (!shown.page) {
        shown.page = makePage(category);
        shown.area = new ScrollArea(m_theme);
        shown.area->setContent(shown.page);
        m_stack->addWidget(shown.area);
    }
    m_selected = category;
    m_stack->setCurrentWidget(shown.area);
    rowOf(category).setChecked(true);
    showBanner();
}

void SettingsView::retranslate()
{
    for (const SettingsCategory category : allSettingsCategories) {
        ListRow& entry = rowOf(category);
        entry.setText(title(category));
        entry.setAccessibleName(title(category));
    }
    m_languageLabel->setText(localizedText(QStringLiteral("App Language")));
    m_language->setAccessibleName(m_languageLabel->text());
    QStringList names;
    for (const AppLanguage language : allAppLanguages) {
        names += language == AppLanguage::system ? localizedText(QStringLiteral("System"))
                                                 : displayName(language);
    }
    m_language->setItems(names);
    m_language->setCurrentIndex(int(m_services.settings.appLanguage()));
    m_banner->setTexts(
        localizedText(QStringLiteral("Accessibility permission required")),
        localizedText(QStringLiteral("Hotkeys and in-place translation need Accessibility before "
                                     "they can read selected text.")));
    setButtonText(*m_bannerButton, localizedText(QStringLiteral("Accessibility")));
    window()->setWindowTitle(localizedText(QStringLiteral("Settings")));
}

void SettingsView::showBanner()
{
    const bool missing =
        m_services.permissionState.value() != AccessibilityPermission::State::granted;
    m_banner->parentWidget()->setVisible(missing && m_selected != SettingsCategory::accessibility);
}

void SettingsView::showEvent(QShowEvent* event)
{
    if (!event->spontaneous()) {
        Q_EMIT appeared();
    }
    QWidget::showEvent(event);
}

void SettingsView::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous()) {
        Q_EMIT disappeared();
    }
}

void SettingsView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape || event->matches(QKeySequence::Close)) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void SettingsView::paintEvent(QPaintEvent*)
{
    const ThemeColors& colors = m_theme.colors();
    QPainter painter(this);
    painter.fillRect(rect(), colors.window);
    const QRect side = m_sidebar->geometry();
    painter.fillRect(side, colors.card);
    const int edge = layoutDirection() == Qt::RightToLeft ? side.left() : side.right();
    painter.fillRect(edge, 0, 1, height(), colors.hairline);
}

} // namespace zelvane
