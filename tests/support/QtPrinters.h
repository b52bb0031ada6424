#pragma once

#include <QByteArray>
#include <QString>

#include <ostream>

// GoogleTest prints a value with the PrintTo that it finds in the value's namespace; Qt's is the
// global one. Without these a failed comparison of texts shows nothing but code units.

inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* stream)
{
    *stream << '"' << bytes.toStdString() << '"';
}
