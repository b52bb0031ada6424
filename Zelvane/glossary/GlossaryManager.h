#pragma once

#include "foundation/Clock.h"
#include "foundation/Worker.h"
#include "glossary/GlossaryFolder.h"
#include "glossary/GlossaryPackage.h"
#include "http/HttpTransport.h"
#include "settings/UserDefaults.h"

#include <QHash>
#include <QObject>
#include <QProperty>
#include <QSet>

#include <memory>
#include <optional>
#include <variant>

namespace zelvane {

/// Which dictionaries are installed, and what is being done about others.
///
/// Main thread only, which never waits here: files are looked at, converted and removed on a thread
/// of this object's own, at low priority.
class GlossaryManager final : public QObject
{
    Q_OBJECT

public:
    /// What is going on with a package. The codes are those of the language that the dictionary
    /// being worked on leads to.
    struct Downloading
    {
        QString languageCode;
        friend bool operator==(const Downloading&, const Downloading&) = default;
    };
    struct Preparing
    {
        QString languageCode;
        friend bool operator==(const Preparing&, const Preparing&) = default;
    };
    struct Failed
    {
        QString message; ///< for the user, finished
        friend bool operator==(const Failed&, const Failed&) = default;
    };
    using Activity = std::variant<Downloading, Preparing, Failed>;
    /// By the package's key.
    using Activities = QHash<QString, Activity>;
    using Downloads = QHash<QString, DownloadProgress>;

    /// What it takes to make one. All must outlive the manager.
    struct Needs
    {
        UserDefaults& defaults;
        HttpTransport& transport;
        Clock& clock;
        QString applicationSupport; ///< the folder of the program's data
        GlossaryLanguage systemLanguage;
    };

    /// Reads the list of packages at once. The folder is made, tidied up and looked at in the
    /// background: `installedDirections` follows in a later turn of the event loop.
    explicit GlossaryManager(const Needs& needs);
    /// Gives up the installations under way, and waits for their files to be removed.
    ~GlossaryManager() override;

    /// In the order of their names. One may be without its files.
    [[nodiscard]] QList<GlossaryPackage> installedPackages() const { return m_installedPackages; }
    [[nodiscard]] QBindable<QList<GlossaryPackage>> bindableInstalledPackages() const
    {
        return &m_installedPackages;
    }

    /// The keys of the directions whose files are there.
    [[nodiscard]] QSet<QString> installedDirections() const { return m_installedDirections; }
    [[nodiscard]] QBindable<QSet<QString>> bindableInstalledDirections() const
    {
        return &m_installedDirections;
    }

    [[nodiscard]] Activities activities() const { return m_activities; }
    [[nodiscard]] QBindable<Activities> bindableActivities() const { return &m_activities; }

    /// How far the download of each package's present direction has come, while there is one.
    [[nodiscard]] Downloads downloads() const { return m_downloads; }
    [[nodiscard]] QBindable<Downloads> bindableDownloads() const { return &m_downloads; }

    [[nodiscard]] const GlossaryLanguage& systemLanguage() const { return m_systemLanguage; }

    /// Downloads and converts what is missing of the package. Does nothing if there is an activity
    /// for it, a failure included: `deletePackage` clears that. Never throws: a failure becomes the
    /// activity. Once `stop` is asked for, the package is as if nothing had been begun, but for a
    /// direction that is complete.
    QCoro::Task<void> install(GlossaryPackage package, std::stop_token stop = {});

    /// Removes the package from the list, stops its installation and clears its failure at once.
    /// The task ends when the files are gone; a file that can't be removed stays.
    QCoro::Task<void> deletePackage(GlossaryPackage package);

    /// Whether the package is on the list and both its directions are there.
    [[nodiscard]] bool isInstalled(const GlossaryPackage& package) const;

    /// The bytes of the package's files, as they were when `installedDirections` was last read.
    [[nodiscard]] qint64 installedSize(const GlossaryPackage& package) const;

    /// Looks at the folder and the list anew: other processes install and delete as well. Ends when
    /// the result is published.
    QCoro::Task<void> refreshInstalledDirections();

Q_SIGNALS:
    /// A direction's file has been written or removed: what is known of it has to be forgotten.
    void directionChanged(const QString& directionKey);

private:
    using Lock = std::shared_ptr<FileLock>;
    using Run = std::shared_ptr<std::stop_source>;

    QCoro::Task<void> tidy();
    QCoro::Task<void> installDirections(GlossaryPackage package, std::stop_token stop);
    [[nodiscard]] QCoro::Task<Lock> lockFolder(std::stop_token stop);
    QCoro::Task<void> fetch(QString packageKey, GlossaryDirection direction, Lock lock,
                            std::stop_token stop);
    QCoro::Task<void> download(QString packageKey, QString url, QString destination,
                               std::stop_token stop);
    /// Ends an installation with `failure`, or well if there is none.
    void finish(const GlossaryPackage& package, const std::exception_ptr& failure,
                const InstalledDictionaries& found);
    [[nodiscard]] QCoro::Task<InstalledDictionaries> list();
    /// Removes a file, after all that has been handed to the worker before.
    QCoro::Task<void> removeLater(QString path);

    void publish(const InstalledDictionaries& found);
    void changeList(const DefaultsUpdate& change);
    void setActivity(const QString& packageKey, const std::optional<Activity>& activity);
    void setProgress(const QString& packageKey, const std::optional<DownloadProgress>& progress);

    UserDefaults& m_defaults;
    HttpTransport& m_transport;
    Clock& m_clock;
    const GlossaryFolder m_folder;
    const GlossaryLanguage m_systemLanguage;
    /// The installations under way, by the package's key.
    QHash<QString, Run> m_runs;
    /// Held by all installations together.
    std::weak_ptr<FileLock> m_lock;
    InstalledDictionaries m_dictionaries;

    Q_OBJECT_BINDABLE_PROPERTY(GlossaryManager, QList<GlossaryPackage>, m_installedPackages)
    Q_OBJECT_BINDABLE_PROPERTY(GlossaryManager, QSet<QString>, m_installedDirections)
    Q_OBJECT_BINDABLE_PROPERTY(GlossaryManager, Activities, m_activities)
    Q_OBJECT_BINDABLE_PROPERTY(GlossaryManager, Downloads, m_downloads)

    Worker m_worker; // last: it ends first
};

} // namespace zelvane
