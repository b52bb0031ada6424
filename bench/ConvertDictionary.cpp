// Converts one published dictionary: what bench/dictionary-conversion measures from outside.

#include "foundation/DescribedError.h"
#include "glossary/DictionaryConversion.h"

#include <QDir>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("Usage: bench_convert_dictionary DATABASE TSV\n", stderr);
        return 2;
    }
    try {
        const QDir here = QDir::current();
        zelvane::convertDictionary(here.absoluteFilePath(QString::fromLocal8Bit(argv[1])),
                                   here.absoluteFilePath(QString::fromLocal8Bit(argv[2])), {});
        return 0;
    } catch (const zelvane::DescribedError& error) {
        std::fprintf(stderr, "%s\n", error.description().toUtf8().constData());
        return 1;
    }
}
