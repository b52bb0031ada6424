#pragma once

#include "http/NetworkFailure.h"

#include <QByteArrayView>
#include <QString>

#include <expected>

namespace zelvane {

/// The file of a download while it grows. Destroying this object removes the file, unless it is
/// kept.
///
/// All calls block on the disk.
class DownloadFile
{
public:
    /// Makes the file, for its owner only. An earlier one of this name is emptied; what is no
    /// regular file is left alone, and fails.
    [[nodiscard]] static std::expected<DownloadFile, NetworkFailure> create(const QString& path);

    DownloadFile(DownloadFile&& other) noexcept;
    DownloadFile& operator=(DownloadFile&&) = delete;
    ~DownloadFile();

    [[nodiscard]] std::expected<void, NetworkFailure> append(QByteArrayView bytes);

    /// Returns when all is on the disk. The file stays from then on.
    [[nodiscard]] std::expected<void, NetworkFailure> keep();

private:
    DownloadFile(int descriptor, QString path);

    int m_descriptor;
    QString m_path;
};

} // namespace zelvane
