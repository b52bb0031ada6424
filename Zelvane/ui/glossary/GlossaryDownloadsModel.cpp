#include "ui/glossary/GlossaryDownloadsModel.h"

#include "foundation/Text.h"
#include "glossary/GlossaryNames.h"
#include "settings/LanguageNames.h"
#include "settings/Localization.h"
#include "ui/settings/EngineProgressLines.h"

#include <algorithm>

namespace zelvane {

namespace {

QString nameOf(const GlossaryLanguage& language)
{
    return glossaryDisplayName(language, interfaceLocale());
}

QString nameOfCode(const QString& code)
{
    const auto language = resolveGlossaryLanguage(code);
    return language ? nameOf(*language) : code;
}

QString labelOf(const GlossaryPackage& package)
{
    return nameOf(package.source) + QStringLiteral(" → ") + nameOf(package.target);
}

/// The packages with their labels, in the order in which a reader looks for them.
QList<std::pair<QString, GlossaryPackage>> inReadingOrder(const QList<GlossaryPackage>& packages)
{
    QList<std::pair<QString, GlossaryPackage>> labelled;
    for (const GlossaryPackage& package : packages) {
        labelled.append({labelOf(package), package});
    }
    std::ranges::sort(labelled, [locale = interfaceLocale()](const auto& left, const auto& right) {
        return text::naturalOrder(left.first, right.first, locale) < 0;
    });
    return labelled;
}

bool hasData(const GlossaryPackage& package)
{
    return hasGlossaryData(package.source) && hasGlossaryData(package.target);
}

std::optional<GlossaryPackage> packageOf(const std::optional<GlossaryLanguage>& source,
                                         const std::optional<GlossaryLanguage>& target)
{
    if (!source || !target || languageBase(source->code) == languageBase(target->code)) {
        return std::nullopt;
    }
    return GlossaryPackage{*source, *target};
}

} // namespace

GlossaryDownloadsModel::GlossaryDownloadsModel(const AppSettings& settings,
                                               GlossaryManager& manager)
    : m_settings(settings)
    , m_manager(manager)
    , m_manualSource(QStringLiteral("English (US)"))
    , m_manualTarget(QStringLiteral("Polish"))
{
    const auto tell = [this] { Q_EMIT changed(); };
    m_changes.push_back(settings.bindablePairs().addNotifier(tell));
    m_changes.push_back(manager.bindableInstalledPackages().addNotifier(tell));
    m_changes.push_back(manager.bindableInstalledDirections().addNotifier(tell));
    m_changes.push_back(manager.bindableActivities().addNotifier(tell));
    m_changes.push_back(manager.bindableDownloads().addNotifier(tell));
}

const QStringList& GlossaryDownloadsModel::glossaryLanguageOptions()
{
    static const QStringList options = [] {
        QStringList names;
        for (const GlossaryLanguage& language : glossaryLanguages()) {
            if (hasGlossaryData(language)) {
                names += language.name;
            }
        }
        names.sort();
        return names;
    }();
    return options;
}

QList<GlossaryPackage> GlossaryDownloadsModel::shownPackages() const
{
    QList<GlossaryPackage> shown;
    const auto add = [&shown](const std::optional<GlossaryPackage>& package) {
        if (package && !shown.contains(*package)) {
            shown.append(*package);
        }
    };
    const GlossaryLanguage system = m_manager.systemLanguage();
    for (const LanguagePair& pair : m_settings.enabledPairs()) {
        const auto source = isAutoSource(pair.source) ? std::optional(system)
                                                      : resolveGlossaryLanguage(pair.source);
        add(packageOf(source, resolveGlossaryLanguage(pair.target)));
    }
    add(packageOf(system, resolveGlossaryLanguage(QStringLiteral("en-US"))));
    add(m_requestedPackage);
    for (const auto& [label, package] : inReadingOrder(m_manager.installedPackages())) {
        add(package);
    }
    return shown;
}

QList<GlossaryRow> GlossaryDownloadsModel::rows() const
{
    QList<GlossaryRow> rows;
    for (const GlossaryPackage& package : shownPackages()) {
        rows.append(rowOf(package));
    }
    return rows;
}

GlossaryRow GlossaryDownloadsModel::rowOf(const GlossaryPackage& package) const
{
    GlossaryRow row{.package = package, .label = labelOf(package), .detail = {}};
    const auto activities = m_manager.activities();
    if (const auto found = activities.constFind(package.key()); found != activities.cend()) {
        if (const auto* loading = std::get_if<GlossaryManager::Downloading>(&*found)) {
            row.detail = localizedFormat(QStringLiteral("Downloading %@ glossary…"),
                                         {nameOfCode(loading->languageCode)});
            row.isBusy = true;
        } else if (const auto* preparing = std::get_if<GlossaryManager::Preparing>(&*found)) {
            row.detail = localizedFormat(QStringLiteral("Preparing %@ glossary…"),
                                         {nameOfCode(preparing->languageCode)});
            row.isBusy = true;
        } else if (const auto* failed = std::get_if<GlossaryManager::Failed>(&*found)) {
            row.detail = failed->message;
            row.isFailure = true;
            row.control = GlossaryRow::Control::retry;
        }
    } else if (m_manager.isInstalled(package)) {
        row.detail = byteCountText(m_manager.installedSize(package));
        row.control = GlossaryRow::Control::remove;
    } else if (!hasData(package)) {
        row.detail = localizedText(QStringLiteral("No data"));
    } else {
        row.control = GlossaryRow::Control::download;
    }
    return row;
}

void GlossaryDownloadsModel::setManualSource(const QString& language)
{
    m_manualSource = language;
    Q_EMIT changed();
}

void GlossaryDownloadsModel::setManualTarget(const QString& language)
{
    m_manualTarget = language;
    Q_EMIT changed();
}

std::optional<GlossaryPackage> GlossaryDownloadsModel::manualPackage() const
{
    return packageOf(resolveGlossaryLanguage(m_manualSource),
                     resolveGlossaryLanguage(m_manualTarget));
}

bool GlossaryDownloadsModel::canDownloadManual() const
{
    const auto package = manualPackage();
    return package && hasData(*package) && !m_manager.isInstalled(*package) &&
           !m_manager.activities().contains(package->key());
}

QString GlossaryDownloadsModel::manualProblem() const
{
    for (const QString& chosen : {m_manualSource, m_manualTarget}) {
        const auto language = resolveGlossaryLanguage(chosen);
        if (language && !hasGlossaryData(*language)) {
            return localizedFormat(QStringLiteral("No glossary data is published for %@."),
                                   {nameOf(*language)});
        }
    }
    return {};
}

void GlossaryDownloadsModel::refresh()
{
    m_manager.refreshInstalledDirections();
}

void GlossaryDownloadsModel::install(const GlossaryPackage& package)
{
    // The manager owns the installation, which goes on when the settings are closed.
    m_manager.install(package);
}

void GlossaryDownloadsModel::remove(const GlossaryPackage& package)
{
    m_manager.deletePackage(package);
}

void GlossaryDownloadsModel::installManual()
{
    const auto package = manualPackage();
    if (package && canDownloadManual()) {
        m_requestedPackage = package;
        Q_EMIT changed();
        install(*package);
    }
}

} // namespace zelvane
