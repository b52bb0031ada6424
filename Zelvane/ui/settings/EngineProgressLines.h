#pragma once

#include "Services/EngineStatus.h"
#include "ui/components/SymbolLines.h"

#include <QList>
#include <QString>

namespace zelvane {

/// What a window shows of a download that is under way, in the interface language.
[[nodiscard]] QList<SymbolLine> engineProgressLines(const EngineDownloadProgress& progress);

/// The share that has been downloaded, such as "42%"; empty while the size is unknown.
[[nodiscard]] QString engineProgressPercentage(const EngineDownloadProgress& progress);

/// A number of bytes for readers, in the interface language: "4.6 GB", powers of ten.
[[nodiscard]] QString byteCountText(qint64 bytes);

/// A span of whole seconds for readers: "1:05" or "2:03:09".
[[nodiscard]] QString durationText(qint64 seconds);

} // namespace zelvane
