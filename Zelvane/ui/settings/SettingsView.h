#pragma once

#include "foundation/Clock.h"
#include "ui/components/Form.h"
#include "ui/components/ListRow.h"
#include "ui/components/Picker.h"
#include "ui/components/ScrollArea.h"
#include "ui/settings/SettingsPage.h"
#include "ui/settings/SettingsServices.h"

#include <QHash>
#include <QWidget>

class QStackedWidget;

namespace zelvane {

/// The settings: a sidebar of categories, and the page of the one that is chosen. Pages are made
/// when they are first shown. Every control writes through at once.
class SettingsView final : public QWidget
{
    Q_OBJECT

public:
    /// All must outlive the view.
    SettingsView(const Theme& theme, SettingsServices& services, Clock& clock);
    ~SettingsView() override;

    /// How small the window may be made: as the tokens say, but no higher than a low screen, whose
    /// `screenHeight` is what panels leave of it.
    [[nodiscard]] static QSize leastSize(const SettingsLayoutTokens& tokens, int screenHeight);

    [[nodiscard]] SettingsCategory selectedCategory() const { return m_selected; }
    void select(SettingsCategory category);

    [[nodiscard]] ListRow& rowOf(SettingsCategory category) const
    {
        return *m_rows.at(std::size_t(category));
    }
    [[nodiscard]] Picker& languagePicker() const { return *m_language; }
    /// The page of a category; null until it is first shown.
    [[nodiscard]] SettingsPage* pageOf(SettingsCategory category) const
    {
        return m_pages.value(category).page;
    }
    [[nodiscard]] Banner& banner() const { return *m_banner; }

Q_SIGNALS:
    /// The window is about to be on the screen, and has gone from it.
    void appeared();
    void disappeared();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Shown
    {
        SettingsPage* page = nullptr;
        ScrollArea* area = nullptr;
    };

    [[nodiscard]] QWidget* makeSidebar();
    [[nodiscard]] QWidget* makeContent();
    [[nodiscard]] SettingsPage* makePage(SettingsCategory category);
    void retranslate();
    void showBanner();

    const Theme& m_theme;
    SettingsServices& m_services;
    Clock& m_clock;
    SettingsCategory m_selected = SettingsCategory::translation;
    QHash<SettingsCategory, Shown> m_pages;
    // All owned by Qt's tree.
    QWidget* m_sidebar;
    std::array<ListRow*, allSettingsCategories.size()> m_rows{};
    ThemedLabel* m_languageLabel;
    Picker* m_language;
    Banner* m_banner;
    TextButton* m_bannerButton;
    QStackedWidget* m_stack;
};

} // namespace zelvane
