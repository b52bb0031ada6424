#include "Services/ByteCount.h"

namespace zelvane {

namespace {

constexpr double megabyte = 1e6;
constexpr double gigabyte = 1e9;

QString number(double value, int decimals, const QLocale& locale)
{
    // Zeros behind the point promise a precision that is of no use here.
    const QString digits = QString::number(value, 'f', decimals);
    QLocale ungrouped = locale;
    ungrouped.setNumberOptions(QLocale::OmitGroupSeparator);
    return ungrouped.toString(digits.toDouble(), 'g', 12);
}

} // namespace

QString byteCount(qint64 bytes, const QLocale& locale)
{
    const auto value = double(bytes);
    // What would be rounded to a thousand megabytes is a gigabyte.
    if (value < gigabyte - megabyte / 20) {
        return number(value / megabyte, 1, locale) + QStringLiteral(" MB");
    }
    return number(value / gigabyte, 2, locale) + QStringLiteral(" GB");
}

} // namespace zelvane
