#include "ui/manual/ManualTranslationView.h"

#include "settings/LanguageNames.h"
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

constexpr int symbolSide = 16;
/// The pickers grow with the window; this is what they have at least.
constexpr int narrowestPicker = 110;

const QKeySequence& translateKey()
{
    static const QKeySequence key(Qt::CTRL | Qt::Key_Return);
    return key;
}

QHBoxLayout* rowIn(QWidget* owner)
{
    auto* row = new QHBoxLayout(owner);
    row->setContentsMargins(0, 0, 0, 0);
    return row;
}

/// A choice of these languages, or of any that the user types.
LanguagePickerChoice anyOf(const QStringList& languages)
{
    return {.options = languages, .localizesLanguageNames = true, .allowsCustom = true};
}

} // namespace

ManualTranslationView::ManualTranslationView(ManualTranslationModel& model, const Theme& theme)
    : m_model(model)
    , m_theme(theme)
    , m_layout(new QVBoxLayout(this))
    , m_title(new ThemedLabel(theme, &TypographyTokens::resultTitle, TextTone::primary))
    , m_pin(new IconButton(theme, QStringLiteral("pin")))
    , m_close(new IconButton(theme, QStringLiteral("xmark")))
    , m_sourceLanguageLabel(
          new ThemedLabel(theme, &TypographyTokens::sectionLabel, TextTone::secondary))
    , m_sourcePicker(
          new SearchableLanguagePicker(theme, anyOf(offeredLanguages()), narrowestPicker))
    , m_arrow(new QLabel)
    , m_targetLanguageLabel(
          new ThemedLabel(theme, &TypographyTokens::sectionLabel, TextTone::secondary))
    , m_targetPicker(new SearchableLanguagePicker(theme, anyOf(targetLanguages()), narrowestPicker))
    , m_sourceLabel(new ThemedLabel(theme, &TypographyTokens::sectionLabel, TextTone::secondary))
    , m_source(new TextWell(theme, WellHeight::fill))
    , m_translationLabel(
          new ThemedLabel(theme, &TypographyTokens::sectionLabel, TextTone::secondary))
    , m_translation(new TextWell(theme, WellHeight::fill))
    , m_errorSymbol(new QLabel)
    , m_error(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::danger))
    , m_spinner(new Spinner(theme))
    , m_status(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
    , m_copy(new TextButton(theme, ControlKind::bordered))
    , m_translate(new TextButton(theme, ControlKind::prominent))
{
    m_layout->addWidget(makeHeader());
    m_layout->addWidget(makeLanguageRow());
    m_layout->addWidget(m_sourceLabel);
    m_layout->addWidget(m_source, 1);
    m_layout->addWidget(m_translationLabel);
    m_layout->addWidget(m_translation, 1);
    m_layout->addWidget(makeErrorLine());
    m_layout->addWidget(makeFooter());

    m_sourceLabel->setBuddy(&m_source->editor());
    m_translationLabel->setBuddy(&m_translation->editor());
    m_sourceLanguageLabel->setBuddy(m_sourcePicker);
    m_targetLanguageLabel->setBuddy(m_targetPicker);
    m_translation->setReadOnlyText({});
    m_source->editor().installEventFilter(this);
    m_translation->editor().installEventFilter(this);

    connect(m_close, &QAbstractButton::clicked, this, &ManualTranslationView::closeRequested);
    connect(m_copy, &QAbstractButton::clicked, &model, &ManualTranslationModel::copy);
    connect(m_translate, &QAbstractButton::clicked, this, &ManualTranslationView::translate);
    connect(m_source, &TextWell::textChanged, this,
            [this] { m_model.setSourceBlank(m_source->isBlank()); });
    connectPickers();
    keepStyled(*this, theme, [this] { restyle(); });
    keepTranslated(*this, [this] { retranslate(); });
    connectModel();
}

ManualTranslationView::~ManualTranslationView() = default;

QWidget* ManualTranslationView::makeHeader()
{
    auto* handle = new WindowDragHandle;
    rowIn(handle)->addWidget(m_title, 1, Qt::AlignVCenter);
    m_title->setElides(true);
    m_pin->setCheckable(true);

    auto* header = new QWidget;
    QHBoxLayout* row = rowIn(header);
    row->addWidget(handle, 1);
    row->addWidget(m_pin);
    row->addWidget(m_close);
    return header;
}

QWidget* ManualTranslationView::makeLanguageRow()
{
    auto* languages = new QWidget;
    QHBoxLayout* row = rowIn(languages);
    for (PickerButton* picker : {m_sourcePicker, m_targetPicker}) {
        picker->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }
    row->addWidget(m_sourceLanguageLabel);
    row->addWidget(m_sourcePicker, 1);
    row->addWidget(m_arrow);
    row->addWidget(m_targetLanguageLabel);
    row->addWidget(m_targetPicker, 1);
    return languages;
}

QWidget* ManualTranslationView::makeErrorLine()
{
    auto* line = new QWidget;
    QHBoxLayout* row = rowIn(line);
    row->addWidget(m_errorSymbol, 0, Qt::AlignTop);
    row->addWidget(m_error, 1);
    m_error->setWordWrap(true);
    m_error->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return line;
}

QWidget* ManualTranslationView::makeFooter()
{
    auto* footer = new QWidget;
    QHBoxLayout* row = rowIn(footer);
    row->addWidget(m_spinner);
    row->addWidget(m_status, 1);
    row->addWidget(m_copy);
    row->addWidget(m_translate);
    m_status->setElides(true);
    m_copy->setSymbol(QStringLiteral("doc.on.doc"));
    return footer;
}

void ManualTranslationView::connectPickers()
{
    observe(this, m_model.bindableSourceLanguage(),
            [this](const QString& language) { m_sourcePicker->setSelection(language); });
    observe(this, m_model.bindableTargetLanguage(),
            [this](const QString& language) { m_targetPicker->setSelection(language); });
    connect(m_sourcePicker, &SearchableLanguagePicker::selectionChosen, &m_model,
            &ManualTranslationModel::setSourceLanguage);
    connect(m_targetPicker, &SearchableLanguagePicker::selectionChosen, &m_model,
            &ManualTranslationModel::setTargetLanguage);
}

void ManualTranslationView::connectModel()
{
    connect(m_pin, &QAbstractButton::toggled, &m_model, &ManualTranslationModel::setPinned);
    observe(this, m_model.bindableIsPinned(), [this](bool) { showPin(); });
    observe(this, m_model.bindableTranslatedText(), [this](const QString& translated) {
        m_translation->setReadOnlyText(translated);
        showProgress();
    });
    observe(this, m_model.bindableErrorText(), [this](const QString&) { showError(); });
    observe(this, m_model.bindableIsTranslating(), [this](bool) { showProgress(); });
    observe(this, m_model.bindableIsSourceBlank(), [this](bool) { showProgress(); });
    observe(this, m_model.bindableCopied(), [this](bool) { showProgress(); });
}

void ManualTranslationView::focusEditor()
{
    m_source->editor().setFocus(Qt::OtherFocusReason);
}

void ManualTranslationView::translate()
{
    if (m_model.canTranslate()) {
        m_model.translate(m_source->text());
    }
}

bool ManualTranslationView::handleKey(const QKeyEvent& event)
{
    if (event.key() == Qt::Key_Escape) {
        Q_EMIT closeRequested();
        return true;
    }
    const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    if (isReturn && event.modifiers().testFlag(Qt::ControlModifier)) {
        translate();
        return true;
    }
    if (event.matches(QKeySequence::Copy) && m_model.canCopy()) {
        m_model.copy();
        return true;
    }
    return false;
}

bool ManualTranslationView::eventFilter(QObject* watched, QEvent* event)
{
    const auto* editor = qobject_cast<QPlainTextEdit*>(watched);
    if (editor && event->type() == QEvent::KeyPress) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        // What is selected is what the copy keys mean there.
        const bool copiesSelection =
            key.matches(QKeySequence::Copy) && editor->textCursor().hasSelection();
        if (!copiesSelection && handleKey(key)) {
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void ManualTranslationView::keyPressEvent(QKeyEvent* event)
{
    if (!handleKey(*event)) {
        QWidget::keyPressEvent(event);
    }
}

void ManualTranslationView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fitKeyHints();
}

void ManualTranslationView::restyle()
{
    const SpacingTokens spacing = m_theme.tokens().spacing();
    const int padding = qRound(spacing.xl);
    m_layout->setContentsMargins(padding, padding, padding, padding);
    m_layout->setSpacing(0);
    for (QWidget* line : {m_close->parentWidget(), m_sourcePicker->parentWidget(),
                          m_error->parentWidget(), m_copy->parentWidget()}) {
        line->layout()->setSpacing(qRound(spacing.sm));
    }
    m_sourcePicker->parentWidget()->setContentsMargins(0, qRound(spacing.md), 0, 0);
    // A label belongs to the text below it, so it stands nearer to that than to the one above.
    for (ThemedLabel* label : {m_sourceLabel, m_translationLabel}) {
        label->setContentsMargins(0, qRound(spacing.md), 0, qRound(spacing.xs));
    }
    m_error->parentWidget()->setContentsMargins(0, qRound(spacing.sm), 0, 0);
    m_copy->parentWidget()->setContentsMargins(0, qRound(spacing.md), 0, 0);
    const ThemeColors& colors = m_theme.colors();
    const double ratio = devicePixelRatioF();
    m_arrow->setPixmap(
        symbolPixmap(QStringLiteral("arrow.right"), colors.secondaryText, symbolSide, ratio));
    m_errorSymbol->setPixmap(symbolPixmap(QStringLiteral("exclamationmark.triangle.fill"),
                                          toneColor(colors, TextTone::danger), symbolSide, ratio));
    fitKeyHints();
}

void ManualTranslationView::retranslate()
{
    const auto label = [](ThemedLabel* shown, TextWell* well, const QString& text) {
        shown->setText(text);
        well->setLabel(text);
    };
    const QString title = localizedText(QStringLiteral("Translation Window"));
    m_title->setText(title);
    setWindowTitle(title);
    window()->setWindowTitle(title);
    m_close->setLabel(localizedText(QStringLiteral("Close")), QStringLiteral(" (Esc)"));
    const QString source = localizedText(QStringLiteral("Source"));
    const QString target = localizedText(QStringLiteral("Target"));
    m_sourceLanguageLabel->setText(source);
    m_sourcePicker->setAccessibleName(source);
    m_targetLanguageLabel->setText(target);
    m_targetPicker->setAccessibleName(target);
    label(m_sourceLabel, m_source, localizedText(QStringLiteral("Text to translate")));
    label(m_translationLabel, m_translation, localizedText(QStringLiteral("Translation")));
    m_source->editor().setPlaceholderText(localizedText(QStringLiteral("Enter or paste text…")));
    m_translation->editor().setPlaceholderText(
        localizedText(QStringLiteral("The translation will appear here.")));
    const QString copy = localizedText(QStringLiteral("Copy"));
    m_copy->setText(copy);
    m_copy->setAccessibleName(copy);
    const QString translate = localizedText(QStringLiteral("Translate"));
    m_translate->setText(translate);
    m_translate->setAccessibleName(translate);
    showPin();
    showProgress();
    fitKeyHints();
}

void ManualTranslationView::showKeyHints(bool shown)
{
    const auto show = [shown](TextButton* button, const QKeySequence& key) {
        const QString name = key.toString(QKeySequence::NativeText);
        button->setKeyHint(shown ? name : QString());
        button->setToolTip(shown ? QString() : name);
    };
    show(m_copy, QKeySequence::Copy);
    show(m_translate, translateKey());
}

void ManualTranslationView::fitKeyHints()
{
    showKeyHints(true);
    const QMargins margins = m_layout->contentsMargins();
    const int room = width() - margins.left() - margins.right();
    showKeyHints(footerWidth() <= room);
}

int ManualTranslationView::footerWidth() const
{
    const QFontMetrics metrics(m_status->font());
    const int gap = m_copy->parentWidget()->layout()->spacing();
    const int busy = m_spinner->sizeHint().width() + gap +
                     metrics.horizontalAdvance(localizedText(QStringLiteral("Translating…")));
    const int idle = metrics.horizontalAdvance(localizedText(QStringLiteral("Esc to close")));
    return std::max(busy, idle) + gap + m_copy->sizeHint().width() + gap +
           m_translate->sizeHint().width();
}

void ManualTranslationView::showPin()
{
    const bool pinned = m_model.isPinned();
    m_pin->setChecked(pinned);
    m_pin->setSymbol(pinned ? QStringLiteral("pin.fill") : QStringLiteral("pin"));
    m_pin->setLabel(localizedText(pinned ? QStringLiteral("Stop keeping window on top")
                                         : QStringLiteral("Keep window on top")));
}

void ManualTranslationView::showError()
{
    const QString error = m_model.errorText();
    m_error->setText(error);
    m_error->parentWidget()->setVisible(!error.isEmpty());
}

void ManualTranslationView::showProgress()
{
    const bool busy = m_model.isTranslating();
    m_spinner->setVisible(busy);
    m_status->setText(m_model.statusText());
    m_status->setTone(m_model.copied() && !busy ? TextTone::success : TextTone::secondary);
    m_copy->setEnabled(m_model.canCopy());
    m_translate->setEnabled(m_model.canTranslate());
}

} // namespace zelvane
