#include "settings/FileUserDefaults.h"

#include "settings/Localization.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace zelvane {

namespace {

/// Far beyond any real file of settings; what is larger is not read into memory.
constexpr qint64 sizeLimit = 64LL * 1024 * 1024;

bool isStorable(const DefaultsValue& value)
{
    const double* number = std::get_if<double>(&value);
    return number == nullptr || std::isfinite(*number);
}

/// None for a value of a kind that this version doesn't know.
std::optional<DefaultsValue> known(const DefaultsContents& contents, const QString& key)
{
    const auto found = contents.constFind(key);
    const auto* value =
        found != contents.constEnd() ? std::get_if<DefaultsValue>(&*found) : nullptr;
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

void apply(DefaultsContents& contents, const QString& key, const DefaultsUpdate& update)
{
    const auto next = update(known(contents, key));
    if (!next) {
        contents.remove(key);
    } else if (isStorable(*next)) {
        contents.insert(key, *next);
    }
}

} // namespace

QString DefaultsNotice::description() const
{
    if (kind == Kind::damagedFileSetAside) {
        return localizedFormat(
            QStringLiteral("The settings file was damaged. It was set aside as %@."), {path});
    }
    return localizedFormat(QStringLiteral("The settings can't be saved (%1$@): %2$@"),
                           {path, reason});
}

FileUserDefaults::FileUserDefaults(const QString& directory, NoticeHandler onNotice,
                                   DefaultsTiming timing)
    : m_directory(directory)
    , m_path(directory + QStringLiteral("/defaults.json"))
    , m_onNotice(std::move(onNotice))
    , m_timing(timing)
{
    const auto bytes = readFile(m_path, sizeLimit);
    auto contents = bytes && *bytes ? decodeDefaults(**bytes) : std::nullopt;
    const bool isMissing = bytes && !*bytes;
    // What is broken is dealt with on the writing thread, under the lock.
    m_isAttemptWanted = !contents && !isMissing;
    m_values = std::move(contents).value_or(DefaultsContents());
    m_writer = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

FileUserDefaults::~FileUserDefaults()
{
    m_writer.request_stop();
    m_writer.join();
}

std::optional<DefaultsValue> FileUserDefaults::value(const QString& key) const
{
    const std::scoped_lock lock(m_lock);
    return known(m_values, key);
}

QStringList FileUserDefaults::keys() const
{
    const std::scoped_lock lock(m_lock);
    QStringList keys = m_values.keys();
    keys.sort();
    return keys;
}

void FileUserDefaults::setValue(const QString& key, const DefaultsValue& value)
{
    if (isStorable(value)) {
        const std::scoped_lock lock(m_lock);
        enqueue(key, [value](const auto&) { return value; });
    }
}

void FileUserDefaults::remove(const QString& key)
{
    const std::scoped_lock lock(m_lock);
    enqueue(key, [](const auto&) { return std::nullopt; });
}

void FileUserDefaults::update(const QString& key, const DefaultsUpdate& update)
{
    const std::scoped_lock lock(m_lock);
    if (const DefaultsUpdate pending = m_changes.value(key).update) {
        enqueue(key, [=](const auto& present) { return update(pending(present)); });
    } else {
        enqueue(key, update);
    }
}

/// Called with the lock held. Takes the place of what is still to be done about the key.
void FileUserDefaults::enqueue(const QString& key, const DefaultsUpdate& update)
{
    apply(m_values, key, update);
    m_changes.insert(key, {update, ++m_lastNumber});
    m_isAttemptWanted = true;
    m_workDue.notify_one();
}

bool FileUserDefaults::flush()
{
    std::unique_lock lock(m_lock);
    const quint64 number = m_lastNumber;
    const quint64 attempt = m_attemptsStarted + 1; // one under way may not have seen all changes
    const auto isAtRest = [this] {
        return m_changes.isEmpty() && !m_isAttemptWanted && m_attemptsEnded == m_attemptsStarted;
    };
    if (!isAtRest()) {
        m_isAttemptWanted = true;
        m_workDue.notify_one();
        m_attemptEnded.wait(lock, [&] { return isAtRest() || m_attemptsEnded >= attempt; });
    }
    return isStoredUpTo(number);
}

void FileUserDefaults::reread()
{
    std::unique_lock lock(m_lock);
    std::optional<DefaultsContents> stored;
    quint64 before = 0;
    do { // what was read is old if it has been written to meanwhile
        before = m_attemptsEnded;
        lock.unlock();
        const auto bytes = readFile(m_path, sizeLimit);
        stored = bytes && *bytes ? decodeDefaults(**bytes) : std::nullopt;
        lock.lock();
    } while (m_attemptsEnded != before);
    if (stored) {
        settle(*std::move(stored), {});
    }
}

bool FileUserDefaults::isStoredUpTo(quint64 number) const
{
    return std::ranges::none_of(m_changes,
                                [&](const Change& change) { return change.number <= number; });
}

void FileUserDefaults::run(const std::stop_token& stop)
{
    std::unique_lock lock(m_lock);
    while (!stop.stop_requested()) {
        const auto isWanted = [this] { return m_isAttemptWanted; };
        if (m_changes.isEmpty()) {
            m_workDue.wait(lock, stop, isWanted);
        } else {
            m_workDue.wait_for(lock, stop, m_timing.retryInterval, isWanted);
        }
        if (!stop.stop_requested()) {
            attempt(lock);
        }
    }
    if (m_isAttemptWanted || !m_changes.isEmpty()) {
        attempt(lock);
    }
}

/// Called and left with the lock held; the disk is used without it.
void FileUserDefaults::attempt(std::unique_lock<std::mutex>& lock)
{
    ++m_attemptsStarted;
    m_isAttemptWanted = false;
    const Changes changes = m_changes;
    lock.unlock();
    auto stored = store(changes);
    if (stored) {
        m_isFailureTold = false;
    } else {
        report(stored.error());
    }
    lock.lock();
    if (stored) {
        settle(*std::move(stored), changes);
    }
    ++m_attemptsEnded;
    m_attemptEnded.notify_all();
}

/// Merges the changes into what the disk has now, since other processes may have stored theirs.
std::expected<DefaultsContents, FileFailure> FileUserDefaults::store(const Changes& changes)
{
    if (const auto made = makePrivateDirectory(m_directory); !made) {
        return std::unexpected(made.error());
    }
    const auto fileLock = FileLock::acquire(m_path + QStringLiteral(".lock"), m_timing.lockLimit);
    if (!fileLock) {
        return std::unexpected(fileLock.error());
    }
    bool isInNeedOfWriting = false;
    auto contents = storedContents(isInNeedOfWriting);
    if (!contents) {
        return contents;
    }
    DefaultsContents merged = *contents;
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        apply(merged, change.key(), change->update);
    }
    if (isInNeedOfWriting || merged != *contents) {
        const auto replaced = replaceDurably(m_path, encodeDefaults(merged));
        if (!replaced) {
            return std::unexpected(replaced.error());
        }
    }
    return merged;
}

/// What the file holds. If it is gone or damaged, what this process knows takes its place.
std::expected<DefaultsContents, FileFailure>
FileUserDefaults::storedContents(bool& isInNeedOfWriting)
{
    const auto bytes = readFile(m_path, sizeLimit);
    if (!bytes) {
        return std::unexpected(bytes.error());
    }
    if (*bytes) {
        if (auto contents = decodeDefaults(**bytes)) {
            return *std::move(contents);
        }
        if (const auto done = setAside(); !done) {
            return std::unexpected(done.error());
        }
    }
    const std::scoped_lock lock(m_lock);
    isInNeedOfWriting = !m_values.isEmpty();
    return m_values;
}

std::expected<void, FileFailure> FileUserDefaults::setAside()
{
    QString aside = m_path + QStringLiteral(".damaged");
    for (int i = 2; QFileInfo::exists(aside); ++i) {
        aside = m_path + QStringLiteral(".damaged-") + QString::number(i);
    }
    QFile file(m_path);
    if (!file.rename(aside)) {
        return std::unexpected(FileFailure{m_path, file.errorString()});
    }
    if (m_onNotice) {
        m_onNotice({DefaultsNotice::Kind::damagedFileSetAside, aside, QString()});
    }
    return {};
}

/// Takes over what the disk has now, under the changes that came since.
void FileUserDefaults::settle(DefaultsContents stored, const Changes& done)
{
    m_changes.removeIf([&](const Changes::iterator& change) {
        const auto written = done.constFind(change.key());
        return written != done.constEnd() && written->number == change->number;
    });
    for (auto change = m_changes.cbegin(); change != m_changes.cend(); ++change) {
        apply(stored, change.key(), change->update);
    }
    m_values = std::move(stored);
}

void FileUserDefaults::report(const FileFailure& failure)
{
    if (!m_isFailureTold && m_onNotice) {
        m_onNotice({DefaultsNotice::Kind::notStored, failure.path, failure.reason});
    }
    m_isFailureTold = true;
}

} // namespace zelvane
