#pragma once

#include "Services/SmartOfflineVariant.h"
#include "settings/DurableFile.h"
#include "settings/FileSystemLocations.h"

#include <QString>

#include <expected>

namespace zelvane {

/// The folder that holds one folder for each engine. It may not exist yet. Folders of earlier
/// versions have been moved there by `locations`.
[[nodiscard]] QString engineRootDirectory(const FileSystemLocations& locations);

/// The sizes of all regular files below `folder`, in bytes; links count nothing, and so does what
/// can't be read. Quick for an engine, whose files are few.
[[nodiscard]] qint64 folderSize(const QString& folder);

/// Where the files of one engine lie, and what they tell. A plain value; safe on any thread. Calls
/// that look at the disk look at a handful of files.
class EngineFiles
{
public:
    /// `root` is the `engineRootDirectory`. The size and names of the model are those of `facts`.
    EngineFiles(QString root, SmartOfflineVariantFacts facts);

    [[nodiscard]] const SmartOfflineVariantFacts& facts() const { return m_facts; }
    [[nodiscard]] const QString& root() const { return m_root; }
    /// Everything below is in this folder.
    [[nodiscard]] QString folder() const;
    [[nodiscard]] QString record() const;
    [[nodiscard]] QString modelFolder() const;
    [[nodiscard]] QString model() const;
    /// The model while it is downloaded.
    [[nodiscard]] QString partialModel() const;
    /// What the archive of the runtime is unpacked into.
    [[nodiscard]] QString runtime() const;
    /// Of the server, with its libraries.
    [[nodiscard]] QString serverFolder() const;
    [[nodiscard]] QString server() const;
    /// Stands as long as the runtime is being unpacked: a server may be there before its libraries.
    [[nodiscard]] QString unpackingMark() const;

    /// Whether the server can be started, as far as its file tells.
    [[nodiscard]] bool hasServer() const;
    [[nodiscard]] bool hasWholeModel() const;
    /// A finished installation of the present revision.
    [[nodiscard]] bool isComplete() const;

    /// The proof that all is there. Blocks until it is on the disk.
    [[nodiscard]] std::expected<void, FileFailure> writeReadyRecord() const;

private:
    QString m_root;
    SmartOfflineVariantFacts m_facts;
};

} // namespace zelvane
