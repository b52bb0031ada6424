#include "ui/sheets/HotKeyBindSheet.h"

#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/components/Styling.h"
#include "ui/sheets/KeyCapture.h"
#include "ui/style/ViewStyles.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <utility>

namespace zelvane {

namespace {

constexpr int boxHeight = 64;

/// The ground on which the chord stands.
class ChordBox final : public QWidget
{
public:
    explicit ChordBox(const Theme& theme)
        : m_theme(theme)
    {
        setMinimumHeight(boxHeight);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        TranslatorContentWellModifier{m_theme.tokens()}.paint(painter, rect(), m_theme.colors());
    }

private:
    const Theme& m_theme;
};

/// A key with which users without a pointer reach the buttons. None of them makes a chord alone.
bool worksTheSheet(const QKeyEvent& key)
{
    switch (key.key()) {
    case Qt::Key_Tab:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        return (key.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    default:
        return false;
    }
}

} // namespace

HotKeyBindSheet::HotKeyBindSheet(const Theme& theme, QWidget& over,
                                 std::unique_ptr<HotKeyBindModel> model)
    : Sheet(theme, over)
    , m_model(std::move(model))
    , m_box(new ChordBox(theme))
    , m_chord(new ThemedLabel(theme, StyleFontRole::title2, TextTone::primary))
    , m_hint(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
    , m_clear(addLeadingButton())
    , m_cancel(addButton())
    , m_save(addButton(ControlKind::prominent))
{
    m_chord->setAlignment(Qt::AlignCenter);
    m_hint->setWordWrap(true);
    m_hint->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    auto* boxLayout = new QVBoxLayout(m_box);
    boxLayout->addWidget(m_chord);
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(qRound(theme.tokens().spacing().sm));
    column->addWidget(m_box);
    column->addWidget(m_hint);
    setContent(content);

    setDefaultButton(m_save);
    setCancelButton(m_cancel);
    setFocusProxy(m_save);
    connect(m_clear, &QAbstractButton::clicked, m_model.get(), &HotKeyBindModel::clear);
    connect(m_cancel, &QAbstractButton::clicked, this, &Sheet::dismiss);
    connect(m_save, &QAbstractButton::clicked, this, [this] {
        Q_EMIT saved(m_model->draft());
        dismiss();
    });
    keepStyled(*m_hint, theme, [this] {
        // The buttons stay where they are when a hint takes two lines.
        m_hint->setMinimumHeight(2 * m_hint->fontMetrics().lineSpacing());
    });
    keepTranslated(*this, [this] { retranslate(); });
    observe(this, m_model->bindableRevision(), [this](int) { showState(); });
    qApp->installEventFilter(this);
}

HotKeyBindSheet::~HotKeyBindSheet()
{
    qApp->removeEventFilter(this);
}

bool HotKeyBindSheet::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::ShortcutOverride && isVisible()) {
        event->accept(); // a key press follows, and no shortcut fires
        return true;
    }
    if (type == QEvent::KeyPress && isVisible() && watched->isWidgetType()) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (worksTheSheet(key)) {
            return false;
        }
        const auto pressed = capturedKey(key);
        if (pressed.code == HotKeyBindModel::escapeKeyCode) {
            if (static_cast<QWidget*>(watched)->window() != window()) {
                return false; // meant for another window
            }
            m_cancel->click();
            return true;
        }
        if (pressed.isModifier) {
            return true;
        }
        m_model->keyPressed(pressed.code, pressed.eventFlags);
        return true;
    }
    return watched == window() && Sheet::eventFilter(watched, event);
}

void HotKeyBindSheet::retranslate()
{
    setTitle(localizedText(QStringLiteral("Bind keys")));
    setSubtitle(m_model->pairLabel());
    const auto name = [](TextButton& button, const QString& text) {
        button.setText(text);
        button.setAccessibleName(text);
    };
    name(*m_clear, localizedText(QStringLiteral("Clear")));
    name(*m_cancel, localizedText(QStringLiteral("Cancel")));
    name(*m_save, localizedText(QStringLiteral("Save")));
    showState();
}

void HotKeyBindSheet::showState()
{
    m_chord->setText(m_model->chordText());
    m_chord->setTone(m_model->draft() ? TextTone::primary : TextTone::tertiary);
    m_hint->setText(m_model->hint());
    m_hint->setTone(m_model->canSave() ? TextTone::secondary : TextTone::danger);
    m_save->setEnabled(m_model->canSave());
}

} // namespace zelvane
