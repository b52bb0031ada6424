#include "ui/sheets/PromptEditSheet.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"

#include <QVBoxLayout>

#include <utility>

namespace zelvane {

namespace {

constexpr QSize smallestEditor{480, 220};

} // namespace

PromptEditSheet::PromptEditSheet(const Theme& theme, QWidget& over,
                                 std::unique_ptr<PromptEditModel> model)
    : Sheet(theme, over)
    , m_model(std::move(model))
    , m_editor(new TextWell(theme))
    , m_note(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
    , m_reset(addLeadingButton())
    , m_cancel(addButton())
    , m_save(addButton(ControlKind::prominent))
{
    m_editor->setMinimumSize(smallestEditor);
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(qRound(theme.tokens().spacing().sm));
    column->addWidget(m_editor, 1);
    column->addWidget(m_note);
    setContent(content);
    m_editor->editor().setPlainText(m_model->draft());
    m_editor->editor().moveCursor(QTextCursor::End);

    setDefaultButton(m_save);
    setCancelButton(m_cancel);
    connect(&m_editor->editor(), &QPlainTextEdit::textChanged, this, [this] {
        m_model->setDraft(m_editor->editor().toPlainText());
        m_save->setEnabled(m_model->canSave());
    });
    connect(m_reset, &QAbstractButton::clicked, this, [this] {
        m_model->resetToDefault();
        m_editor->editor().setPlainText(m_model->draft());
    });
    connect(m_cancel, &QAbstractButton::clicked, this, &Sheet::dismiss);
    connect(m_save, &QAbstractButton::clicked, this, [this] {
        Q_EMIT saved(m_model->draft());
        dismiss();
    });
    setFocusProxy(m_editor);
    keepTranslated(*this, [this] { retranslate(); });
}

void PromptEditSheet::retranslate()
{
    setTitle(localizedText(QStringLiteral("Custom prompt")));
    setSubtitle(m_model->pairLabel());
    m_editor->setLabel(localizedText(QStringLiteral("Custom prompt")));
    m_note->setText(localizedText(QStringLiteral("Placeholders: {{source}} {{target}}")));
    const auto name = [](TextButton& button, const QString& text) {
        button.setText(text);
        button.setAccessibleName(text);
    };
    name(*m_reset, localizedText(QStringLiteral("Reset to default")));
    name(*m_cancel, localizedText(QStringLiteral("Cancel")));
    name(*m_save, localizedText(QStringLiteral("Save")));
}

} // namespace zelvane
