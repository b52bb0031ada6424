#pragma once

#include "ui/settings/LanguagePairRow.h"
#include "ui/settings/SettingsPage.h"

namespace zelvane {

/// The language pairs with their shortcuts, and the dictionaries for them.
class LanguagesPage final : public SettingsPage
{
    Q_OBJECT

public:
    /// Both must outlive the page.
    LanguagesPage(const Theme& theme, SettingsServices& services);

    [[nodiscard]] const QList<LanguagePairRow*>& rows() const { return m_rows; }
    [[nodiscard]] TextButton& addButton() const { return *m_add; }

private:
    void retranslate();
    void showPairs();

    SettingsServices& m_services;
    QList<LanguagePairRow*> m_rows;
    // All owned by Qt's tree.
    Section* m_pairs;
    TextButton* m_add;
    Section* m_glossaries;
};

} // namespace zelvane
