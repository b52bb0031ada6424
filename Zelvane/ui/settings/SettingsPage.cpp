#include "ui/settings/SettingsPage.h"

#include "ui/components/Styling.h"

#include <QVBoxLayout>

namespace zelvane {

SettingsPage::SettingsPage(const Theme& theme, SettingsCategory category)
    : m_theme(theme)
    , m_category(category)
    , m_layout(new QVBoxLayout(this))
    , m_title(new ThemedLabel(theme, &TypographyTokens::sheetTitle, TextTone::primary))
    , m_subtitle(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
{
    m_title->setWordWrap(true);
    m_subtitle->setWordWrap(true);
    auto* head = new QVBoxLayout;
    head->setSpacing(2);
    head->addWidget(m_title);
    head->addWidget(m_subtitle);
    m_layout->addLayout(head);
    m_layout->addStretch(1);
    keepStyled(*this, theme, [this] {
        const SpacingTokens spacing = m_theme.tokens().spacing();
        const int margin = qRound(spacing.xxl);
        m_layout->setContentsMargins(margin, margin, margin, margin);
        m_layout->setSpacing(qRound(spacing.xl));
    });
    keepTranslated(*this, [this] {
        m_title->setText(title(m_category));
        m_subtitle->setText(subtitle(m_category));
        setAccessibleName(title(m_category));
    });
}

void SettingsPage::addSection(QWidget* section)
{
    m_layout->insertWidget(m_layout->count() - 1, section);
}

Section* SettingsPage::addSection()
{
    auto* section = new Section(m_theme);
    addSection(section);
    return section;
}

void setButtonText(QAbstractButton& button, const QString& text)
{
    button.setText(text);
    button.setAccessibleName(text);
}

} // namespace zelvane
