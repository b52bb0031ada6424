#pragma once

#include "settings/DurableFile.h"

#include <QHash>
#include <QString>

#include <memory>

namespace zelvane {

/// The dictionaries that are there: from the direction's key to the size of its file in bytes.
using InstalledDictionaries = QHash<QString, qint64>;

/// The folder of this edition's dictionaries, with a hidden one for what is on its way.
///
/// A small value that belongs to no thread; all but `file` and `newDownload` blocks, for a worker.
class GlossaryFolder
{
public:
    /// `applicationSupport` is the folder of the program's data.
    explicit GlossaryFolder(QString applicationSupport);

    [[nodiscard]] QString file(const QString& directionKey) const;
    /// A path for a file that no other one has, in the hidden folder.
    [[nodiscard]] QString newDownload() const;

    /// Makes the folder, and removes other editions and what earlier runs of the program have left
    /// unfinished, unless another one is at work. Whatever fails is left as it is.
    void tidy() const;
    /// Throws `FileError`.
    void make() const;

    /// Keeps other processes from installing dictionaries here for as long as it lives. Null if one
    /// of them does that now; throws `FileError` if the folder can't be used.
    [[nodiscard]] std::shared_ptr<FileLock> tryLock() const;

    [[nodiscard]] InstalledDictionaries list() const;
    [[nodiscard]] bool contains(const QString& directionKey) const;
    /// A file that can't be removed is left.
    void remove(const QString& directionKey) const;

private:
    void removeOtherEditions() const;
    void removeLeftovers() const;

    QString m_edition;
    QString m_downloads;
    QString m_support;
};

} // namespace zelvane
