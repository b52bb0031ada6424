#pragma once

#include <QString>
#include <QStringList>

namespace zelvane {

/// The folders of models that older versions of the program downloaded, some of many gigabytes.
[[nodiscard]] QStringList retiredModelFolders();

/// Deletes them below `applicationSupport`. What can't be deleted stays. Blocks; any thread.
void deleteRetiredModelFolders(const QString& applicationSupport);

} // namespace zelvane
