#include "ui/sheets/APIKeyEditSheet.h"

#include "settings/Localization.h"
#include "ui/components/Styling.h"

#include <utility>

namespace zelvane {

APIKeyEditSheet::APIKeyEditSheet(const Theme& theme, QWidget& over, APIKeyEditModel model)
    : Sheet(theme, over)
    , m_model(std::move(model))
    , m_field(new TextField(theme))
    , m_cancel(addButton())
    , m_save(addButton(ControlKind::prominent))
{
    m_field->setEchoMode(QLineEdit::Password);
    m_field->setMonospaced(true);
    m_field->setText(m_model.draft());
    setContent(m_field);
    setDefaultButton(m_save);
    setCancelButton(m_cancel);
    setFocusProxy(m_field);
    connect(m_field, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_model.setDraft(text); });
    connect(m_field, &QLineEdit::returnPressed, m_save, &QAbstractButton::click);
    connect(m_cancel, &QAbstractButton::clicked, this, &Sheet::dismiss);
    connect(m_save, &QAbstractButton::clicked, this, [this] {
        Q_EMIT saved(m_model.keyToSave());
        dismiss();
    });
    keepTranslated(*this, [this] { retranslate(); });
}

void APIKeyEditSheet::retranslate()
{
    const QString title = localizedText(QStringLiteral("API Key"));
    setTitle(title);
    setSubtitle(m_model.providerName());
    m_field->setAccessibleName(title);
    m_field->setPlaceholderText(localizedText(QStringLiteral("Paste API key")));
    m_cancel->setText(localizedText(QStringLiteral("Cancel")));
    m_cancel->setAccessibleName(m_cancel->text());
    m_save->setText(localizedText(QStringLiteral("Save")));
    m_save->setAccessibleName(m_save->text());
}

} // namespace zelvane
