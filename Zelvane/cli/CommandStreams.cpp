#include "cli/CommandStreams.h"

namespace zelvane {

QByteArray onOneLine(const QByteArray& value)
{
    QByteArray line;
    for (const char c : value) {
        switch (c) {
        case '\n':
            line += "\\n";
            break;
        case '\r':
            line += "\\r";
            break;
        case '\t':
            line += "\\t";
            break;
        case '\\':
            line += "\\\\";
            break;
        default:
            line += c;
        }
    }
    return line;
}

} // namespace zelvane
