#include "ui/onboarding/OnboardingView.h"

#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"

#include <QGraphicsOpacityEffect>
#include <QGridLayout>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace zelvane {

namespace {

/// Large letters take room from the drawing, down to the least.
constexpr int heroHeight = 312;
constexpr int leastHeroHeight = 60;
constexpr int fadeMilliseconds = 220;

int heightIn(int width, const ThemedLabel& label, const QString& text)
{
    return label.fontMetrics()
        .boundingRect(QRect(0, 0, width, QWIDGETSIZE_MAX), Qt::TextWordWrap | Qt::AlignHCenter,
                      text)
        .height();
}

/// Makes the lines of `label`, which stands in `width`, about equally long: a last line of one word
/// looks forgotten.
void balance(ThemedLabel& label, int width)
{
    const int height = heightIn(width, label, label.text());
    int least = width / 2;
    int most = width;
    while (most - least > 1) {
        const int middle = (least + most) / 2;
        (heightIn(middle, label, label.text()) > height ? least : most) = middle;
    }
    const int side = std::max(0, (width - most) / 2 - 1);
    label.setContentsMargins(side, 0, side, 0);
}

} // namespace

OnboardingView::OnboardingView(OnboardingModel& model, const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_model(model)
    , m_theme(theme)
    , m_hero(new OnboardingHero(theme))
    , m_texts(new QWidget)
    , m_title(new ThemedLabel(theme, StyleFontRole::title2, TextTone::primary))
    , m_body(new ThemedLabel(theme, StyleFontRole::body, TextTone::secondary))
    , m_dots(new PageDots(theme, int(onboardingSlides().size())))
    , m_back(new ChevronButton(theme, QStringLiteral("chevron.left")))
    , m_forward(new ChevronButton(theme, QStringLiteral("chevron.right")))
    , m_gotIt(new TextButton(theme, ControlKind::prominent))
    , m_textLayout(new QVBoxLayout(m_texts))
    , m_navigation(new QGridLayout)
    , m_veil(new QGraphicsOpacityEffect(m_texts))
{
    layOut();
    m_texts->setGraphicsEffect(m_veil);
    m_veil->setEnabled(false);
    m_fade.setDuration(fadeMilliseconds);
    m_fade.setStartValue(0.0);
    m_fade.setEndValue(1.0);
    connect(&m_fade, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { m_veil->setOpacity(value.toDouble()); });
    connect(&m_fade, &QVariantAnimation::finished, this, [this] { m_veil->setEnabled(false); });

    connect(m_back, &QAbstractButton::clicked, &model, &OnboardingModel::stepBack);
    connect(m_forward, &QAbstractButton::clicked, &model, &OnboardingModel::stepForward);
    connect(m_gotIt, &QAbstractButton::clicked, &model, &OnboardingModel::finish);
    // Left and Right would move the keyboard between the buttons.
    for (QWidget* button : {static_cast<QWidget*>(m_back), static_cast<QWidget*>(m_forward),
                            static_cast<QWidget*>(m_gotIt)}) {
        button->installEventFilter(this);
    }

    keepStyled(*this, theme, [this] { restyle(); });
    keepTranslated(*this, [this] { showTexts(); });
    observe(this, model.bindableIndex(), [this](int) { showSlide(); });
}

void OnboardingView::layOut()
{
    for (ThemedLabel* label : {m_title, m_body}) {
        label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        label->setWordWrap(true);
        m_textLayout->addWidget(label);
    }
    m_textLayout->addStretch(1);

    // The sides are equally wide, so that the dots stay in the middle.
    m_navigation->setColumnStretch(0, 1);
    m_navigation->setColumnStretch(2, 1);
    m_navigation->addWidget(m_back, 0, 0, Qt::AlignLeft | Qt::AlignVCenter);
    m_navigation->addWidget(m_dots, 0, 1, Qt::AlignCenter);
    m_navigation->addWidget(m_forward, 0, 2, Qt::AlignRight | Qt::AlignVCenter);
    m_navigation->addWidget(m_gotIt, 0, 2, Qt::AlignRight | Qt::AlignVCenter);

    auto* layout = new QVBoxLayout(this);
    // The panel's hairline stays in view around the drawing.
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    layout->addWidget(m_hero);
    layout->addWidget(m_texts, 1);
    layout->addLayout(m_navigation);
}

void OnboardingView::restyle()
{
    const SpacingTokens spacing = m_theme.tokens().spacing();
    m_textLayout->setSpacing(qRound(spacing.md));
    const int edge = qRound(spacing.lg);
    m_navigation->setContentsMargins(edge, edge, edge, edge);
    // As high with the button as with the chevron.
    m_navigation->setRowMinimumHeight(
        0, std::max(m_forward->sizeHint().height(), m_gotIt->sizeHint().height()));
    fitHero();
}

int OnboardingView::textHeight(const OnboardingSlide& slide, int width) const
{
    const QMargins margins = m_textLayout->contentsMargins();
    const int room = width - margins.left() - margins.right();
    return margins.top() + heightIn(room, *m_title, localizedText(slide.titleKey)) +
           m_textLayout->spacing() + heightIn(room, *m_body, localizedText(slide.bodyKey));
}

void OnboardingView::fitHero()
{
    const SpacingTokens spacing = m_theme.tokens().spacing();
    const QMargins frame = layout()->contentsMargins();
    const int inner = width() - frame.left() - frame.right();
    int left = 0;
    // Lines of a comfortable length, or longer ones if the letters are large.
    for (const double side : {spacing.xxl + spacing.lg, spacing.xxl, spacing.md}) {
        m_textLayout->setContentsMargins(qRound(side), qRound(spacing.xxl), qRound(side), 0);
        int texts = 0;
        for (const OnboardingSlide& slide : onboardingSlides()) {
            texts = std::max(texts, textHeight(slide, inner));
        }
        // The same for all slides, so that nothing jumps.
        left = height() - texts - m_navigation->sizeHint().height() - frame.top() - frame.bottom();
        if (left >= leastHeroHeight) {
            break;
        }
    }
    m_hero->setFixedHeight(std::clamp(left, 0, heroHeight));
    const QMargins margins = m_textLayout->contentsMargins();
    for (ThemedLabel* label : {m_title, m_body}) {
        balance(*label, inner - margins.left() - margins.right());
    }
}

void OnboardingView::resizeEvent(QResizeEvent* event)
{
    fitHero();
    QWidget::resizeEvent(event);
}

void OnboardingView::focusForward()
{
    QWidget* target = m_model.isOnLastSlide() ? static_cast<QWidget*>(m_gotIt) : m_forward;
    target->setFocus(Qt::OtherFocusReason);
}

void OnboardingView::showSlide()
{
    m_hero->setIllustration(m_model.slide().illustration);
    m_dots->setIndex(m_model.index());
    const QString id = QString::number(m_model.slide().id);
    m_title->setObjectName(QStringLiteral("title-") + id);
    m_body->setObjectName(QStringLiteral("body-") + id);
    showTexts();
    updateNavigation();
    fadeTextsIn();
}

void OnboardingView::showTexts()
{
    m_title->setText(localizedText(m_model.slide().titleKey));
    m_body->setText(localizedText(m_model.slide().bodyKey));
    const auto name = [](QAbstractButton& button, const QString& label) {
        button.setAccessibleName(label);
        button.setToolTip(label);
    };
    name(*m_back, localizedText(QStringLiteral("Previous page")));
    name(*m_forward, localizedText(QStringLiteral("Next page")));
    m_gotIt->setText(localizedText(QStringLiteral("Got It")));
    fitHero();
    Q_EMIT titleChanged(m_title->text());
}

void OnboardingView::updateNavigation()
{
    const bool hadKeyboard = m_back->hasFocus() || m_forward->hasFocus() || m_gotIt->hasFocus();
    const bool backKeepsKeyboard = m_back->hasFocus() && m_model.canStepBack();
    m_back->setEnabled(m_model.canStepBack());
    m_forward->setEnabled(m_model.canStepForward());
    m_forward->setVisible(!m_model.isOnLastSlide());
    m_gotIt->setVisible(m_model.isOnLastSlide());
    if (hadKeyboard && !backKeepsKeyboard) {
        focusForward();
    }
}

void OnboardingView::fadeTextsIn()
{
    m_fade.stop();
    const bool moves = isVisible() && !m_theme.appearance().reducedMotion();
    m_veil->setEnabled(moves);
    if (moves) {
        m_veil->setOpacity(0);
        m_fade.start();
    }
}

bool OnboardingView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && handleKey(*static_cast<QKeyEvent*>(event))) {
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void OnboardingView::keyPressEvent(QKeyEvent* event)
{
    if (!handleKey(*event)) {
        QWidget::keyPressEvent(event);
    }
}

bool OnboardingView::handleKey(const QKeyEvent& event)
{
    if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) {
        return false;
    }
    switch (event.key()) {
    case Qt::Key_Left:
        m_model.stepBack();
        return true;
    case Qt::Key_Right:
        m_model.stepForward();
        return true;
    case Qt::Key_Escape:
        m_model.finish();
        return true;
    default:
        return false;
    }
}

} // namespace zelvane
