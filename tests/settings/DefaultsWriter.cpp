// Stores values until it is ended. Arguments: a directory, a prefix for the keys, how many rounds
// (0 for no end), how many bytes each value has. Round N sets PREFIX.N (or PREFIX alone, if there
// is no end) to N, a colon and filling, waits for the disk and prints N.

#include "settings/FileUserDefaults.h"

#include <QByteArray>
#include <QString>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 5) {
        return 2;
    }
    const QString prefix = QString::fromLocal8Bit(argv[2]);
    const int rounds = QByteArray(argv[3]).toInt();
    const QString filling(QByteArray(argv[4]).toInt(), u'x');
    zelvane::FileUserDefaults defaults(QString::fromLocal8Bit(argv[1]));
    const QString last = defaults.string(prefix).value_or(QStringLiteral("0"));
    int round = last.section(u':', 0, 0).toInt();
    for (int done = 0; rounds == 0 || done < rounds; ++done) {
        ++round;
        const QString key = rounds == 0 ? prefix : prefix + u'.' + QString::number(round);
        defaults.setValue(key, QString::number(round) + u':' + filling);
        if (!defaults.flush()) {
            return 1;
        }
        std::printf("%d\n", round);
        std::fflush(stdout);
    }
    return 0;
}
