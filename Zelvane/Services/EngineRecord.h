#pragma once

#include "Services/SmartOfflineVariant.h"

#include <QByteArray>
#include <QString>

#include <expected>
#include <optional>

namespace zelvane {

/// The proof of a finished installation: the file READY of an engine, which is written last.
/// Raising the revision retires the installations of earlier versions.
inline constexpr qint64 engineRevision = 1;

/// The build of llama.cpp that belongs to this version of the program, and the name of its folder.
[[nodiscard]] QString llamaBuild();

/// The record of a model that has been installed: a JSON object with its keys in order.
[[nodiscard]] QByteArray encodeEngineRecord(const SmartOfflineVariantFacts& facts);

/// The revision of a record, none if the bytes are no record. Never throws, whatever they are.
[[nodiscard]] std::optional<qint64> decodeEngineRevision(const QByteArray& record);

/// Why a record yields no revision. Both count as no installation.
enum class NoEngineRecord { missing, broken };

/// The revision in the record at `path`. Reads a few hundred bytes.
[[nodiscard]] std::expected<qint64, NoEngineRecord> readEngineRevision(const QString& path);

} // namespace zelvane
