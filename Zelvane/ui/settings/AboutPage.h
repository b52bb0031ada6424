#pragma once

#include "foundation/TaskScope.h"
#include "ui/components/LinkLabel.h"
#include "ui/settings/SettingsPage.h"
#include "ui/settings/SettingsServices.h"

namespace zelvane {

/// Version, the installation's name with the hosted service, and legal texts.
class AboutPage final : public SettingsPage
{
    Q_OBJECT

public:
    /// Both must outlive the page.
    AboutPage(const Theme& theme, SettingsServices& services);

private:
    [[nodiscard]] QWidget* makeHead();
    void retranslate();
    [[nodiscard]] QCoro::Task<void> fetchInstallId(std::stop_token stop);

    SettingsServices& m_services;
    TaskScope m_tasks;
    // All owned by Qt's tree.
    FormRow* m_version;
    ThemedLabel* m_versionText;
    FormRow* m_installId;
    ThemedLabel* m_installIdText;
    TextButton* m_copy;
    QList<LinkLabel*> m_links;
    TextButton* m_licenses;
};

} // namespace zelvane
