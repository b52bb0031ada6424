// Dictionaries: loading beside a plain reader, the memory that they keep, and looking up lines.

#include "glossary/GlossaryDictionary.h"
#include "glossary/GlossaryMatcher.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <unordered_map>

namespace zelvane {
namespace {

constexpr int records = 200'000;

enum Script { latin, cyrillic };

/// Words as long as those of a real dictionary, in one letter case or with a capital.
class Words
{
public:
    explicit Words(Script script)
        : m_letters(script == latin ? QStringLiteral("enisratdhulcgmobwfkzpv")
                                    : QStringLiteral("оеаинтсрвлкмдпуяыьгзбч"))
        , m_rare(script == latin ? QStringLiteral("äöüß") : QStringLiteral("щэюё"))
    {
    }

    QString word(bool isCapital)
    {
        QString word;
        for (auto left = 4 + below(9); left > 0; --left) {
            const QString& from = below(60) == 0 ? m_rare : m_letters;
            word += from[qsizetype(below(size_t(from.size())))];
        }
        return isCapital ? word.left(1).toUpper() + word.sliced(1) : word;
    }
    QString term() { return below(5) == 0 ? word(true) + u' ' + word(false) : word(below(2) == 0); }
    QString record()
    {
        QString translations = word(false);
        for (auto more = below(4); more > 0; --more) {
            translations += QStringLiteral(" | ") + word(false);
        }
        return QStringLiteral("%1\t%2\t%3.%4\n")
            .arg(term(), translations)
            .arg(2 + below(90))
            .arg(below(10));
    }
    size_t below(size_t limit) { return m_random() % limit; }

private:
    QString m_letters;
    QString m_rare;
    std::mt19937 m_random{7}; // NOLINT: the same words in each run
};

/// A dictionary of 200,000 lines on the disk, one for each script, made once.
const QString& fileIn(Script script)
{
    static const QTemporaryDir folder;
    static const auto write = [](Script which) {
        Words words(which);
        QFile file(folder.filePath(QString::number(which)));
        if (file.open(QIODevice::WriteOnly)) {
            for (int record = 0; record < records; ++record) {
                file.write(words.record().toUtf8());
            }
        }
        return file.fileName();
    };
    static const QString files[] = {write(latin), write(cyrillic)};
    return files[script];
}

void loadOurs(benchmark::State& state)
{
    const QString path = fileIn(Script(state.range(0)));
    for (auto _ : state) {
        const GlossaryDictionary dictionary = loadGlossary(path, {});
        benchmark::DoNotOptimize(dictionary.size());
    }
    state.counters["fileBytes"] = double(QFile(path).size());
}
BENCHMARK(loadOurs)->ArgName("cyrillic")->Arg(latin)->Arg(cyrillic)->Unit(benchmark::kMillisecond);

/// What reads, splits and inserts, and no more: terms as they are written, no rules of Unicode.
class PlainDictionary
{
public:
    struct Entry
    {
        std::vector<std::string> candidates;
        double score = 0;
    };

    explicit PlainDictionary(const std::string& path)
    {
        std::ifstream file(path);
        std::string line;
        while (std::getline(file, line)) {
            const std::vector<std::string> fields = split(line, '\t');
            if (fields.size() == 3) {
                m_entries[fields[0]] = {split(fields[1], '|'), std::stod(fields[2])};
            }
        }
    }

    [[nodiscard]] size_t size() const { return m_entries.size(); }

private:
    static std::vector<std::string> split(const std::string& text, char mark)
    {
        std::vector<std::string> pieces;
        size_t start = 0;
        for (size_t end = 0; end != std::string::npos; start = end + 1) {
            end = text.find(mark, start);
            pieces.push_back(text.substr(start, end - start));
        }
        return pieces;
    }

    std::unordered_map<std::string, Entry> m_entries;
};

void loadPlain(benchmark::State& state)
{
    const std::string path = fileIn(Script(state.range(0))).toStdString();
    for (auto _ : state) {
        const PlainDictionary dictionary(path);
        benchmark::DoNotOptimize(dictionary.size());
    }
}
BENCHMARK(loadPlain)->ArgName("cyrillic")->Arg(latin)->Arg(cyrillic)->Unit(benchmark::kMillisecond);

qint64 residentBytes()
{
    malloc_trim(0);
    std::ifstream statm("/proc/self/statm");
    qint64 all = 0;
    qint64 resident = 0;
    statm >> all >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

/// What a dictionary adds to the resident memory, as a multiple of its file.
template <typename Load>
void measureMemory(benchmark::State& state, const Load& load)
{
    // Large blocks go back to the system when they are freed, also the second time.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    const QString path = fileIn(Script(state.range(0)));
    double multiple = 0;
    for (auto _ : state) {
        const qint64 before = residentBytes();
        const auto dictionary = load(path);
        benchmark::DoNotOptimize(dictionary.size());
        multiple = double(residentBytes() - before) / double(QFile(path).size());
    }
    state.counters["perFileByte"] = multiple;
}

void memoryOfOurs(benchmark::State& state)
{
    measureMemory(state, [](const QString& path) { return loadGlossary(path, {}); });
}
BENCHMARK(memoryOfOurs)->ArgName("cyrillic")->Arg(latin)->Arg(cyrillic)->Iterations(1);

void memoryOfPlain(benchmark::State& state)
{
    measureMemory(state, [](const QString& path) { return PlainDictionary(path.toStdString()); });
}
BENCHMARK(memoryOfPlain)->ArgName("cyrillic")->Arg(latin)->Arg(cyrillic)->Iterations(1);

/// A text of 10,000 lines, of which so many in a hundred are terms of the dictionary.
QStringList text(const QString& path, int hitsInHundred, bool isNumbered)
{
    QStringList text;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        const QStringList rows = QString::fromUtf8(file.readAll()).split(u'\n');
        for (int i = 0; i < 10'000; ++i) {
            const QString term = rows[i * 17].section(u'\t', 0, 0);
            const QString known = i % 100 < hitsInHundred ? term : term + QStringLiteral(" no");
            text += isNumbered ? QStringLiteral("%1. %2").arg(i + 1).arg(known) : known;
        }
    }
    return text;
}

void lookUp(benchmark::State& state)
{
    const QString& path = fileIn(Script(state.range(0)));
    const QStringList lines = text(path, int(state.range(1)), state.range(2) != 0);
    GlossaryMatcher matcher({std::make_shared<const GlossaryDictionary>(loadGlossary(path, {}))},
                            {QStringLiteral("en-US"), QString()});
    for (auto _ : state) {
        for (const QString& line : lines) {
            benchmark::DoNotOptimize(matcher.match(line));
        }
    }
    state.SetItemsProcessed(state.iterations() * lines.size());
}
BENCHMARK(lookUp)
    ->ArgNames({"cyrillic", "hits", "numbered"})
    ->ArgsProduct({{latin, cyrillic}, {0, 50, 100}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace zelvane
