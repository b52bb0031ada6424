#pragma once

#include <QString>
#include <QStringList>

namespace zelvane {

/// The file that starts this program, also if it has been replaced by a newer one meanwhile, or if
/// the program runs from an image that is mounted for this run.
///
/// To be called for the first time before anything can have been replaced.
[[nodiscard]] QString programFile();

/// Starts the program anew, apart from this process. `key` is the engine's key of this run, which
/// is handed on the way it came: in the environment, never as an argument.
void startProgramAgain(const QStringList& arguments, const QString& key);

} // namespace zelvane
