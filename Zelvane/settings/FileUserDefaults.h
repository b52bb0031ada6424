#pragma once

#include "settings/DefaultsFormat.h"
#include "settings/DurableFile.h"
#include "settings/UserDefaults.h"

#include <QHash>
#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace zelvane {

/// Something about the stored settings that the user should know.
struct DefaultsNotice
{
    enum class Kind {
        damagedFileSetAside, ///< `path` is its new name
        notStored,           ///< changes stay in memory and are tried again; `reason` tells why
    };

    Kind kind;
    QString path;
    QString reason;

    /// A sentence in the interface language.
    [[nodiscard]] QString description() const;
};

/// How long the writing thread waits.
struct DefaultsTiming
{
    std::chrono::milliseconds retryInterval = std::chrono::seconds(30); ///< after a failure
    std::chrono::milliseconds lockLimit = std::chrono::seconds(5);      ///< for other processes
};

/// The settings in one file, `defaults.json` in a directory of their own.
///
/// A thread of this object's own writes the changes, merging them key by key into what other
/// processes have stored since, and each write is whole or not at all. A file that can't be read as
/// settings is renamed and never overwritten. What can't be stored stays in memory and is tried
/// again, at each change and from time to time. Values of kinds that this version doesn't know are
/// kept, listed by `keys`, and read as none. A double that is not finite is not taken.
class FileUserDefaults final : public UserDefaults
{
public:
    /// Takes notices on the writing thread. A lasting failure is told once.
    using NoticeHandler = std::function<void(const DefaultsNotice&)>;

    /// Reads the file on the calling thread. The directory is made at the first write.
    explicit FileUserDefaults(const QString& directory, NoticeHandler onNotice = {},
                              DefaultsTiming timing = {});
    /// Stores what is still to be stored.
    ~FileUserDefaults() override;

    [[nodiscard]] std::optional<DefaultsValue> value(const QString& key) const override;
    void setValue(const QString& key, const DefaultsValue& value) override;
    void remove(const QString& key) override;
    void update(const QString& key, const DefaultsUpdate& update) override;
    [[nodiscard]] QStringList keys() const override;
    void reread() override;

    /// Waits until all changes made so far have reached the disk, or an attempt has failed. Whether
    /// they have. Blocks: for the command line and the end of the process.
    bool flush();

private:
    struct Change
    {
        DefaultsUpdate update;
        quint64 number = 0;
    };
    using Changes = QHash<QString, Change>;

    void enqueue(const QString& key, const DefaultsUpdate& update);
    void run(const std::stop_token& stop);
    void attempt(std::unique_lock<std::mutex>& lock);
    std::expected<DefaultsContents, FileFailure> store(const Changes& changes);
    std::expected<DefaultsContents, FileFailure> storedContents(bool& isInNeedOfWriting);
    std::expected<void, FileFailure> setAside();
    void settle(DefaultsContents stored, const Changes& done);
    void report(const FileFailure& failure);
    [[nodiscard]] bool isStoredUpTo(quint64 number) const;

    const QString m_directory;
    const QString m_path;
    const NoticeHandler m_onNotice;
    const DefaultsTiming m_timing;

    mutable std::mutex m_lock;
    std::condition_variable_any m_workDue;
    std::condition_variable m_attemptEnded;
    DefaultsContents m_values; ///< what reads see
    Changes m_changes;         ///< what the disk doesn't have yet
    quint64 m_lastNumber = 0;
    quint64 m_attemptsStarted = 0;
    quint64 m_attemptsEnded = 0;
    bool m_isAttemptWanted = false;
    bool m_isFailureTold = false; ///< of the writing thread
    std::jthread m_writer;        ///< the last member: it uses all others
};

} // namespace zelvane
