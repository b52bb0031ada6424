#include "ui/result/TranslationResultView.h"

#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"
#include "ui/components/WindowDragHandle.h"
#include "ui/style/Symbols.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace zelvane {

namespace {

constexpr int statusSymbolSize = 16;

} // namespace

TranslationResultView::TranslationResultView(TranslationResultModel& model, const Theme& theme)
    : m_model(model)
    , m_theme(theme)
    , m_layout(new QVBoxLayout(this))
    , m_title(new ThemedLabel(theme, &TypographyTokens::resultTitle, TextTone::primary))
    , m_hint(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
    , m_close(new IconButton(theme, QStringLiteral("xmark")))
    , m_originalLabel(new ThemedLabel(theme, &TypographyTokens::sectionLabel, TextTone::secondary))
    , m_original(new TextWell(theme))
    , m_translatedLabel(
          new ThemedLabel(theme, &TypographyTokens::sectionLabel, TextTone::secondary))
    , m_translated(new TextWell(theme))
    , m_statusSymbol(new QLabel)
    , m_status(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::success))
    , m_copy(new TextButton(theme, ControlKind::prominent))
{
    m_layout->addWidget(makeHeader());
    m_layout->addWidget(m_originalLabel);
    m_layout->addWidget(m_original, 1);
    m_layout->addWidget(m_translatedLabel);
    m_layout->addWidget(m_translated, 1);
    m_layout->addWidget(makeFooter());

    m_original->setReadOnlyText(model.result().original);
    m_translated->setReadOnlyText(model.result().translated);
    m_originalLabel->setBuddy(&m_original->editor());
    m_translatedLabel->setBuddy(&m_translated->editor());
    m_original->editor().installEventFilter(this);
    m_translated->editor().installEventFilter(this);

    connect(m_close, &QAbstractButton::clicked, this, &TranslationResultView::closeRequested);
    connect(m_copy, &QAbstractButton::clicked, &model, &TranslationResultModel::copy);
    retranslate();
    keepStyled(*this, theme, [this] { restyle(); });
    observe(this, model.bindableCopied(), [this](bool) { showCopied(); });
}

QWidget* TranslationResultView::makeHeader()
{
    auto* handle = new WindowDragHandle;
    auto* words = new QHBoxLayout(handle);
    words->setContentsMargins(0, 0, 0, 0);
    words->addWidget(m_title, 0, Qt::AlignVCenter);
    words->addWidget(m_hint, 1, Qt::AlignVCenter);
    m_hint->setElides(true);

    auto* header = new QWidget;
    auto* row = new QHBoxLayout(header);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(handle, 1);
    row->addWidget(m_close);
    return header;
}

QWidget* TranslationResultView::makeFooter()
{
    auto* footer = new QWidget;
    auto* row = new QHBoxLayout(footer);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_statusSymbol);
    row->addWidget(m_status, 1);
    row->addWidget(m_copy);
    m_status->setElides(true);
    QSizePolicy room = m_status->sizePolicy();
    room.setRetainSizeWhenHidden(true);
    m_status->setSizePolicy(room);
    m_copy->setSymbol(QStringLiteral("doc.on.doc"));
    return footer;
}

void TranslationResultView::setSectionHeight(int height)
{
    m_original->setMaximumSectionHeight(height);
    m_translated->setMaximumSectionHeight(height);
}

void TranslationResultView::focusTranslation()
{
    m_translated->editor().setFocus(Qt::OtherFocusReason);
}

bool TranslationResultView::eventFilter(QObject* watched, QEvent* event)
{
    // With nothing selected, the copy keys mean the whole translation.
    if (event->type() == QEvent::KeyPress) {
        const auto* editor = qobject_cast<QPlainTextEdit*>(watched);
        if (editor && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy) &&
            !editor->textCursor().hasSelection()) {
            m_model.copy();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void TranslationResultView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
        window()->setWindowTitle(m_title->text());
    }
}

void TranslationResultView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
        event->matches(QKeySequence::Copy)) {
        m_model.copy();
        return;
    }
    QWidget::keyPressEvent(event);
}

void TranslationResultView::restyle()
{
    const SpacingTokens spacing = m_theme.tokens().spacing();
    const int padding = qRound(m_theme.tokens().sheets().resultPadding);
    m_layout->setContentsMargins(padding, padding, padding, padding);
    m_layout->setSpacing(0);
    // A label belongs to the text below it, so it stands nearer to that than to the one above.
    for (ThemedLabel* label : {m_originalLabel, m_translatedLabel}) {
        label->setContentsMargins(0, qRound(spacing.md), 0, qRound(spacing.xs));
    }
    for (QWidget* line : {m_title->parentWidget(), m_close->parentWidget()}) {
        line->layout()->setSpacing(qRound(spacing.sm));
    }
    m_copy->parentWidget()->setContentsMargins(0, qRound(spacing.lg), 0, 0);
    m_copy->parentWidget()->layout()->setSpacing(qRound(spacing.footerSpacing));
    showCopied();
}

void TranslationResultView::retranslate()
{
    const QString translation = localizedText(QStringLiteral("Translation"));
    const QString original = localizedText(QStringLiteral("Original"));
    m_title->setText(translation);
    m_hint->setText(localizedText(QStringLiteral("Esc to close")));
    m_close->setLabel(localizedText(QStringLiteral("Close")), QStringLiteral(" (Esc)"));
    m_originalLabel->setText(original);
    m_original->setLabel(original);
    m_translatedLabel->setText(translation);
    m_translated->setLabel(translation);
    showCopied();
}

void TranslationResultView::showCopied()
{
    const bool copied = m_model.copied();
    m_copy->setAlternativeText(localizedText(QStringLiteral("Copied")));
    m_copy->setText(m_model.copyLabel());
    m_copy->setAccessibleName(m_model.copyLabel());
    m_status->setText(m_model.statusText());
    m_status->setVisible(copied);
    m_statusSymbol->setVisible(copied);
    if (copied) {
        m_statusSymbol->setPixmap(symbolPixmap(QStringLiteral("checkmark.circle.fill"),
                                               m_theme.colors().success, statusSymbolSize,
                                               devicePixelRatioF()));
    }
}

} // namespace zelvane
