#include "ui/menubar/MenuBarTrayContent.h"

#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QVBoxLayout>

namespace zelvane {

namespace {

/// No panel is narrower, whatever the tokens say.
constexpr double leastWidth = 260;
constexpr int rowPadding = 7;
/// Between a pair and its shortcut.
constexpr int rowGap = 12;

QString keyName(QKeyCombination key)
{
    return QKeySequence(key).toString(QKeySequence::NativeText);
}

} // namespace

MenuBarTrayContent::MenuBarTrayContent(MenuBarModel& model, const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_model(model)
    , m_theme(theme)
    , m_layout(new QVBoxLayout(this))
    , m_title(new ThemedLabel(theme, &TypographyTokens::panelTitle, TextTone::primary))
    , m_status(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
    , m_spinner(new Spinner(theme))
    , m_pairs(new QWidget)
    , m_translation(new TextButton(theme, ControlKind::prominent))
    , m_settings(new TextButton(theme, ControlKind::bordered))
    , m_quit(new TextButton(theme, ControlKind::bordered))
{
    m_layout->addLayout(makeHeader());
    m_layout->addWidget(m_pairs);
    m_layout->addWidget(m_translation);
    m_layout->addLayout(makeFooter());
    connect(m_translation, &QAbstractButton::clicked, this,
            &MenuBarTrayContent::manualTranslationRequested);
    connect(m_settings, &QAbstractButton::clicked, this, &MenuBarTrayContent::settingsRequested);
    connect(m_quit, &QAbstractButton::clicked, this, &MenuBarTrayContent::quitRequested);

    keepStyled(*this, theme, [this] { restyle(); });
    keepTranslated(*this, [this] { retranslate(); });
    observe(this, model.bindableStatus(), [this](const QString&) { showStatus(); });
    observe(this, model.bindableIsBusy(), [this](bool busy) { m_spinner->setVisible(busy); });
    observe(this, model.bindablePairs(), [this](const QList<LanguagePair>&) { fillPairs(); });
}

QLayout* MenuBarTrayContent::makeHeader()
{
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    words->addWidget(m_title);
    words->addWidget(m_status);
    m_status->setWordWrap(true);
    auto* header = new QHBoxLayout;
    header->addLayout(words, 1);
    header->addWidget(m_spinner, 0, Qt::AlignVCenter);
    return header;
}

QLayout* MenuBarTrayContent::makeFooter()
{
    auto* footer = new QHBoxLayout;
    for (TextButton* button : {m_settings, m_quit}) {
        button->setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Fixed);
        footer->addWidget(button, 1);
    }
    return footer;
}

QWidget* MenuBarTrayContent::makeRow(const MenuBarRow& row)
{
    auto* line = new QWidget;
    auto* layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, rowPadding, 0, rowPadding);
    layout->setSpacing(rowGap);
    auto* direction = new ThemedLabel(m_theme, &TypographyTokens::pairDirection, TextTone::primary);
    direction->setText(row.direction);
    direction->setElides(true);
    auto* shortcut = new ThemedLabel(m_theme, &TypographyTokens::hotKeyLabel,
                                     row.hasShortcut ? TextTone::secondary : TextTone::tertiary);
    shortcut->setText(row.shortcut);
    layout->addWidget(direction, 1);
    layout->addWidget(shortcut);
    return line;
}

void MenuBarTrayContent::fillPairs()
{
    delete m_pairs->layout();
    qDeleteAll(m_pairs->findChildren<QWidget*>(Qt::FindDirectChildrenOnly));
    auto* list = new QVBoxLayout(m_pairs);
    list->setContentsMargins(0, 0, 0, 0);
    list->setSpacing(0);
    const QList<MenuBarRow> rows = m_model.rows();
    for (const MenuBarRow& row : rows) {
        if (list->count() > 0) {
            list->addWidget(new Divider(m_theme));
        }
        list->addWidget(makeRow(row));
    }
    if (rows.isEmpty()) {
        auto* nothing = new ThemedLabel(m_theme, StyleFontRole::body, TextTone::secondary);
        nothing->setText(localizedText(QStringLiteral("No language pairs enabled")));
        nothing->setWordWrap(true);
        list->addWidget(nothing);
    }
}

void MenuBarTrayContent::showStatus()
{
    m_status->setText(m_model.status());
}

void MenuBarTrayContent::restyle()
{
    const TrayLayoutTokens tray = m_theme.tokens().tray();
    const int padding = qRound(tray.padding);
    m_layout->setContentsMargins(padding, padding, padding, padding);
    m_layout->setSpacing(qRound(tray.contentSpacing));
    m_layout->itemAt(3)->layout()->setSpacing(qRound(m_theme.tokens().spacing().footerSpacing));
    Q_EMIT fittingSizeChanged();
}

void MenuBarTrayContent::retranslate()
{
    m_title->setText(m_model.title());
    m_translation->setText(localizedText(QStringLiteral("Translation Window")));
    m_settings->setText(localizedText(QStringLiteral("Settings")));
    m_settings->setToolTip(keyName(Qt::CTRL | Qt::Key_Comma));
    m_quit->setText(localizedText(QStringLiteral("Quit")));
    m_quit->setToolTip(keyName(Qt::CTRL | Qt::Key_Q));
    fillPairs();
    showStatus();
}

bool MenuBarTrayContent::event(QEvent* event)
{
    const bool done = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest) {
        Q_EMIT fittingSizeChanged();
    }
    return done;
}

QSize MenuBarTrayContent::fittingSize() const
{
    const int width = qRound(std::max(m_theme.tokens().tray().width, leastWidth));
    return {width, fittingHeight(*this, width)};
}

} // namespace zelvane
