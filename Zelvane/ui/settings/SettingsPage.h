#pragma once

#include "ui/components/Form.h"
#include "ui/components/ThemedLabel.h"
#include "ui/settings/SettingsCategory.h"

#include <QWidget>

class QVBoxLayout;

namespace zelvane {

/// A page of the settings: what it is about, and its sections below. It scrolls as a whole.
class SettingsPage : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the page.
    SettingsPage(const Theme& theme, SettingsCategory category);

    [[nodiscard]] SettingsCategory category() const { return m_category; }

protected:
    /// Adds a section below the others, and takes it over.
    void addSection(QWidget* section);
    /// Adds a section and yields it.
    [[nodiscard]] Section* addSection();
    [[nodiscard]] const Theme& theme() const { return m_theme; }

private:
    const Theme& m_theme;
    SettingsCategory m_category;
    // All owned by Qt's tree.
    QVBoxLayout* m_layout;
    ThemedLabel* m_title;
    ThemedLabel* m_subtitle;
};

/// A button's text, which is also what a screen reader says of it.
void setButtonText(QAbstractButton& button, const QString& text);

} // namespace zelvane
