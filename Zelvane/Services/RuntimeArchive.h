#pragma once

#include <QString>
#include <QStringList>

namespace zelvane {

/// The file name of the runtime's archive for the processor that this program was built for.
[[nodiscard]] QString runtimeArchiveName();

/// The folders that may hold it: that of the installed program, then that of the source tree, for
/// runs out of the build folder.
[[nodiscard]] QStringList runtimeArchiveFolders();

/// The path of the archive in the first of `folders` that has it. Throws `EngineError` if none has.
[[nodiscard]] QString findRuntimeArchive(const QStringList& folders);

} // namespace zelvane
