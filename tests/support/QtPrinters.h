#pragma once

#include <QByteArray>
#include <QPoint>
#include <QRect>
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

inline void PrintTo(QPoint point, std::ostream* stream)
{
    *stream << point.x() << ',' << point.y();
}

inline void PrintTo(const QRect& rectangle, std::ostream* stream)
{
    PrintTo(rectangle.topLeft(), stream);
    *stream << ' ' << rectangle.width() << 'x' << rectangle.height();
}
