#pragma once

#include "settings/DurableFile.h"

#include <QString>

#include <expected>

namespace zelvane {

// What an installation does to the disk. All of it may block for long and belongs on a worker.

/// Makes the folder with all above it, for the user alone. Throws `EngineError`.
void makeFolder(const QString& path);

/// Removes a file, or a folder with all that is in it, as far as it can be.
void removeAll(const QString& path);

/// Takes the folder `name` out of `root` at once, whatever its size, and returns where its remains
/// are, for `removeAll`. Empty if there is no such folder, or if it can't be moved. Quick.
[[nodiscard]] QString takeAway(const QString& root, const QString& name);

/// The remains of `takeAway` whose removal was interrupted. Quick.
[[nodiscard]] QStringList remainsOf(const QString& root, const QString& name);

/// Returns when the files below `folder` are on the disk. Throws `EngineError`.
void syncAll(const QString& folder);

/// Gives a file another name in its folder, durably. Throws `EngineError`.
void renameDurably(const QString& from, const QString& to);

/// Lets the owner write and everyone run the file. Throws `EngineError`.
void makeExecutable(const QString& path);

/// Writes a small file. Throws `EngineError`.
void writeMark(const QString& path);

/// The bytes that this user may still write where `path` is; a huge number if that can't be told.
[[nodiscard]] qint64 freeBytes(const QString& path);

/// Throws what is wrong with a file as an `EngineError`.
void throwIfFailed(const std::expected<void, FileFailure>& result);

} // namespace zelvane
