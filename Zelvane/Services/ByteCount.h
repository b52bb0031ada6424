#pragma once

#include <QLocale>
#include <QString>

namespace zelvane {

/// A size for people, in MB or from a thousand of these on in GB, as disks and downloads count.
[[nodiscard]] QString byteCount(qint64 bytes, const QLocale& locale);

} // namespace zelvane
