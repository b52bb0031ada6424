#pragma once

#include "glossary/GlossaryManager.h"
#include "settings/AppSettings.h"

#include <QObject>
#include <QPropertyNotifier>

#include <optional>
#include <vector>

namespace zelvane {

/// A row of the list of glossaries.
struct GlossaryRow
{
    enum class Control {
        none,
        download,
        remove,
        retry,
    };

    GlossaryPackage package;
    QString label;
    /// What is going on, the size on the disk, or that there is nothing to download.
    QString detail;
    bool isBusy = false;
    bool isFailure = false;
    Control control = Control::none;
};

/// Which glossaries the settings propose, and what can be done about each. Needs no display.
class GlossaryDownloadsModel final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive the model. The model only reads the manager: downloads go on without it.
    GlossaryDownloadsModel(const AppSettings& settings, GlossaryManager& manager);

    /// The languages of the row for any other pair.
    [[nodiscard]] static const QStringList& glossaryLanguageOptions();

    /// What the enabled pairs need, what the user's language needs, what was asked for here, and
    /// what is installed, without duplicates.
    [[nodiscard]] QList<GlossaryPackage> shownPackages() const;
    [[nodiscard]] QList<GlossaryRow> rows() const;

    [[nodiscard]] QString manualSource() const { return m_manualSource; }
    void setManualSource(const QString& language);
    [[nodiscard]] QString manualTarget() const { return m_manualTarget; }
    void setManualTarget(const QString& language);
    /// None if the two are no pair of languages.
    [[nodiscard]] std::optional<GlossaryPackage> manualPackage() const;
    [[nodiscard]] bool canDownloadManual() const;
    /// Empty while nothing is wrong with the manual row.
    [[nodiscard]] QString manualProblem() const;

    /// Looks for what other processes have installed or deleted.
    void refresh();
    void install(const GlossaryPackage& package);
    void remove(const GlossaryPackage& package);
    void installManual();

Q_SIGNALS:
    /// Something of the above has changed.
    void changed();

private:
    [[nodiscard]] GlossaryRow rowOf(const GlossaryPackage& package) const;

    const AppSettings& m_settings;
    GlossaryManager& m_manager;
    QString m_manualSource;
    QString m_manualTarget;
    std::optional<GlossaryPackage> m_requestedPackage;
    std::vector<QPropertyNotifier> m_changes;
};

} // namespace zelvane
