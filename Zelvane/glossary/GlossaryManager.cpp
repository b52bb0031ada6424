#include "glossary/GlossaryManager.h"

#include "foundation/ThreadPriority.h"
#include "glossary/DictionaryConversion.h"
#include "glossary/GlossaryError.h"
#include "pipeline/Endpoints.h"
#include "pipeline/TranslationError.h"
#include "settings/Localization.h"

#include <QFile>
#include <QPointer>
#include <QScopeGuard>

#include <algorithm>

namespace zelvane {

namespace {

QString packagesKey()
{
    return QStringLiteral("zv.glossaryPackages.") + glossaryEdition();
}

/// Anything unreadable counts as an empty list.
QList<GlossaryPackage> packagesIn(const std::optional<DefaultsValue>& stored)
{
    const auto* json = stored ? std::get_if<QByteArray>(&*stored) : nullptr;
    return decodePackages(json ? *json : QByteArray()).value_or(QList<GlossaryPackage>());
}

QList<GlossaryPackage> storedPackages(const UserDefaults& defaults)
{
    QList<GlossaryPackage> packages = packagesIn(defaults.value(packagesKey()));
    sortPackages(packages, interfaceLocale());
    return packages;
}

/// The list with the package, or without it.
DefaultsUpdate withPackage(const GlossaryPackage& package)
{
    return [package, locale = interfaceLocale()](const std::optional<DefaultsValue>& stored) {
        QList<GlossaryPackage> packages = packagesIn(stored);
        if (!packages.contains(package)) {
            packages += package;
            sortPackages(packages, locale);
        }
        return encodePackages(packages);
    };
}

DefaultsUpdate withoutPackage(const GlossaryPackage& package)
{
    return [package](const std::optional<DefaultsValue>& stored) {
        QList<GlossaryPackage> packages = packagesIn(stored);
        packages.removeAll(package);
        return encodePackages(packages);
    };
}

QString publishedPath(const QString& directionKey)
{
    return QStringLiteral("/dictionaries/sqlite/2_2026-06/%1.sqlite3").arg(directionKey);
}

/// `table` with another value for `key`, or none.
template <typename T>
QHash<QString, T> changed(QHash<QString, T> table, const QString& key,
                          const std::optional<T>& value)
{
    if (value) {
        table.insert(key, *value);
    } else {
        table.remove(key);
    }
    return table;
}

HttpRequest requestOf(const QString& url)
{
    HttpRequest request;
    request.url = QUrl(url, QUrl::StrictMode);
    request.timeout = std::chrono::seconds(60);
    request.totalTimeout = std::chrono::hours(6);         // slow lines shall get there too
    request.maximalBodySize = qint64(1024) * 1024 * 1024; // many times the largest dictionary
    return request;
}

} // namespace

GlossaryManager::GlossaryManager(const Needs& needs)
    : m_defaults(needs.defaults)
    , m_transport(needs.transport)
    , m_clock(needs.clock)
    , m_folder(needs.applicationSupport)
    , m_systemLanguage(needs.systemLanguage)
    , m_installedPackages(storedPackages(needs.defaults))
{
    tidy();
}

GlossaryManager::~GlossaryManager()
{
    const QHash<QString, Run> runs = std::exchange(m_runs, {});
    for (const Run& run : runs) {
        run->request_stop();
    }
}

QCoro::Task<void> GlossaryManager::tidy()
{
    try {
        co_await m_worker.run([folder = m_folder] { folder.tidy(); }, {});
        publish(co_await list());
    } catch (const CancellationError&) {
        co_return; // this object is going
    }
}

QCoro::Task<void> GlossaryManager::install(GlossaryPackage package, std::stop_token stop)
{
    const QString key = package.key();
    if (activities().contains(key)) {
        co_return;
    }
    for (const GlossaryLanguage& language : {package.source, package.target}) {
        if (!hasGlossaryData(language)) {
            setActivity(key, Failed{GlossaryError::noData(language.name).description()});
            co_return;
        }
    }
    const Run run = std::make_shared<std::stop_source>();
    m_runs.insert(key, run);
    setActivity(key, Downloading{package.target.code});
    const QPointer<GlossaryManager> self(this);
    const std::stop_callback onStop(stop, [run] { run->request_stop(); });
    std::exception_ptr failure;
    try {
        co_await installDirections(package, run->get_token());
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self) {
        co_return;
    }
    InstalledDictionaries found;
    try {
        found = co_await list();
    } catch (const CancellationError&) {
        co_return; // this object is going
    }
    if (m_runs.value(key) == run) {
        m_runs.remove(key);
        finish(package, failure, found);
    }
}

QCoro::Task<void> GlossaryManager::installDirections(GlossaryPackage package, std::stop_token stop)
{
    const Lock lock = co_await lockFolder(stop);
    const QString key = package.key();
    for (const GlossaryDirection& direction : package.directions()) {
        co_await fetch(key, direction, lock, stop);
    }
}

/// Another process may be at work here for a while: two would write to the same files.
QCoro::Task<GlossaryManager::Lock> GlossaryManager::lockFolder(std::stop_token stop)
{
    constexpr auto pause = std::chrono::milliseconds(250);
    const auto makeAndLock = [folder = m_folder] {
        folder.make();
        return folder.tryLock();
    };
    for (;;) {
        const Lock lock = co_await m_worker.run(makeAndLock, stop);
        if (lock) {
            m_lock = lock;
            co_return Lock(lock);
        }
        if (const Lock held = m_lock.lock()) {
            co_return Lock(held);
        }
        co_await m_clock.sleep(pause, stop);
    }
}

QCoro::Task<void> GlossaryManager::fetch(QString packageKey, GlossaryDirection direction, Lock lock,
                                         std::stop_token stop)
{
    const QString key = direction.key();
    const auto isThere = [folder = m_folder, key] { return folder.contains(key); };
    if (co_await m_worker.run(isThere, stop)) {
        co_return;
    }
    const QString url = dictionariesUrl(publishedPath(key), m_defaults);
    if (url.isEmpty()) {
        throw TranslationError(TranslationError::Code::invalidURL);
    }
    const QString database = m_folder.newDownload();
    const auto removal = qScopeGuard([self = QPointer(this), database] {
        if (self) {
            self->removeLater(database);
        }
    });
    const auto noProgress = qScopeGuard([self = QPointer(this), packageKey] {
        if (self) {
            self->setProgress(packageKey, std::nullopt);
        }
    });
    setActivity(packageKey, Downloading{direction.to.code});
    co_await download(packageKey, url, database, stop);
    setActivity(packageKey, Preparing{direction.to.code});
    setProgress(packageKey, std::nullopt);
    // The lock goes along: a stop ends only the wait for the conversion.
    const auto convert = [database, tsv = m_folder.file(key), lock, stop] {
        becomeUtilityThread();
        convertDictionary(database, tsv, stop);
    };
    co_await m_worker.run(convert, stop);
    Q_EMIT directionChanged(key);
}

QCoro::Task<void> GlossaryManager::download(QString packageKey, QString url, QString destination,
                                            std::stop_token stop)
{
    const QPointer<GlossaryManager> self(this);
    const auto onProgress = [self, packageKey](DownloadProgress progress) {
        if (self) {
            self->setProgress(packageKey, progress);
        }
    };
    const HttpResponse response =
        co_await m_transport.download(requestOf(url), destination, onProgress, stop);
    // It may have been complete before the stop, and this object gone after it.
    if (stop.stop_requested()) {
        throw CancellationError();
    }
    validateHTTPResponse(response.status, {});
}

void GlossaryManager::finish(const GlossaryPackage& package, const std::exception_ptr& failure,
                             const InstalledDictionaries& found)
{
    const QString key = package.key();
    publish(found);
    try {
        if (failure) {
            std::rethrow_exception(failure);
        }
        changeList(withPackage(package));
        setActivity(key, std::nullopt);
    } catch (const CancellationError&) {
        setActivity(key, std::nullopt);
    } catch (...) {
        setActivity(key, Failed{describe(std::current_exception())});
    }
}

QCoro::Task<void> GlossaryManager::deletePackage(GlossaryPackage package)
{
    const QString packageKey = package.key();
    changeList(withoutPackage(package));
    if (const Run run = m_runs.take(packageKey)) {
        run->request_stop();
    }
    setActivity(packageKey, std::nullopt);
    QStringList keys;
    QSet<QString> directions = m_installedDirections;
    for (const GlossaryDirection& direction : package.directions()) {
        keys += direction.key();
        directions.remove(direction.key());
    }
    m_installedDirections = directions;
    const auto removeFiles = [folder = m_folder, keys] {
        std::ranges::for_each(keys, [&](const QString& key) { folder.remove(key); });
    };
    try {
        co_await m_worker.run(removeFiles, {});
        for (const QString& key : std::as_const(keys)) {
            Q_EMIT directionChanged(key);
        }
        publish(co_await list());
    } catch (const CancellationError&) {
        co_return; // this object is going; the files go all the same
    }
}

bool GlossaryManager::isInstalled(const GlossaryPackage& package) const
{
    const QSet<QString> directions = m_installedDirections;
    return installedPackages().contains(package) &&
           std::ranges::all_of(package.directions(), [&](const GlossaryDirection& direction) {
               return directions.contains(direction.key());
           });
}

qint64 GlossaryManager::installedSize(const GlossaryPackage& package) const
{
    qint64 size = 0;
    for (const GlossaryDirection& direction : package.directions()) {
        size += m_dictionaries.value(direction.key());
    }
    return size;
}

QCoro::Task<void> GlossaryManager::refreshInstalledDirections()
{
    try {
        publish(co_await list());
    } catch (const CancellationError&) {
        co_return; // this object is going
    }
}

/// With the list of packages as other processes have left it.
QCoro::Task<InstalledDictionaries> GlossaryManager::list()
{
    const auto look = [folder = m_folder, &defaults = m_defaults] {
        defaults.reread();
        return folder.list();
    };
    return m_worker.run(look, {});
}

QCoro::Task<void> GlossaryManager::removeLater(QString path)
{
    try {
        co_await m_worker.run([file = std::move(path)] { QFile::remove(file); }, {});
    } catch (const CancellationError&) {
        co_return; // the file goes all the same
    }
}

void GlossaryManager::publish(const InstalledDictionaries& found)
{
    m_dictionaries = found;
    m_installedDirections = QSet<QString>(found.keyBegin(), found.keyEnd());
    m_installedPackages = storedPackages(m_defaults);
}

/// The list belongs to all processes: each applies its change to what the others have left.
void GlossaryManager::changeList(const DefaultsUpdate& change)
{
    m_defaults.update(packagesKey(), change);
    m_installedPackages = storedPackages(m_defaults);
}

void GlossaryManager::setActivity(const QString& packageKey,
                                  const std::optional<Activity>& activity)
{
    m_activities = changed(activities(), packageKey, activity);
}

void GlossaryManager::setProgress(const QString& packageKey,
                                  const std::optional<DownloadProgress>& progress)
{
    m_downloads = changed(downloads(), packageKey, progress);
}

} // namespace zelvane
