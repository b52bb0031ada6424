// The dictionaries of the demonstration.

#include "foundation/Text.h"
#include "glossary/GlossaryMatcher.h"
#include "glossary/GlossaryTerm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

struct Record
{
    QString term;
    QStringList translations;
    QString score;
};

QString pathOf(const QString& direction)
{
    return QStringLiteral(ZELVANE_STARTER_DICTIONARY "/%1.tsv").arg(direction);
}

QList<Record> recordsOf(const QString& direction)
{
    QList<Record> records;
    QFile file(pathOf(direction));
    if (!file.open(QIODevice::ReadOnly)) {
        return records;
    }
    QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
    EXPECT_EQ(lines.takeLast(), QString()) << "the last line must end";
    for (const QString& line : std::as_const(lines)) {
        const QStringList fields = line.split(u'\t');
        EXPECT_EQ(fields.size(), 3) << line.toStdString();
        records +=
            Record{fields.value(0), fields.value(1).split(QStringLiteral(" | ")), fields.value(2)};
    }
    return records;
}

std::shared_ptr<const GlossaryDictionary> dictionaryOf(const QString& direction)
{
    return std::make_shared<const GlossaryDictionary>(loadGlossary(pathOf(direction), {}));
}

class StarterDictionary : public ::testing::TestWithParam<const char*>
{
protected:
    [[nodiscard]] static QString direction() { return QString::fromLatin1(GetParam()); }
    [[nodiscard]] static QString reverse()
    {
        return direction().section(u'-', 1) + u'-' + direction().section(u'-', 0, 0);
    }
};

TEST_P(StarterDictionary, holdsAFewHundredTermsEachOnce)
{
    const QList<Record> records = recordsOf(direction());
    EXPECT_GE(records.size(), 500);
    EXPECT_EQ(dictionaryOf(direction())->size(), records.size());
}

TEST_P(StarterDictionary, isWrittenCleanly)
{
    const QRegularExpression score(QStringLiteral("^(30|12)\\.0$"));
    std::string before;
    for (const Record& record : recordsOf(direction())) {
        const std::string term = record.term.toStdString();
        EXPECT_TRUE(score.match(record.score).hasMatch()) << term;
        std::string key;
        writeGlossaryKey(QStringView(record.term), key);
        EXPECT_LT(before, key);
        before = key;
        for (const QString& text : QStringList(record.translations) << record.term) {
            EXPECT_EQ(text, text::trimmed(text::composed(text))) << term;
            EXPECT_FALSE(text.isEmpty() || text.contains(u'|')) << term;
        }
        for (const QString& translation : record.translations) {
            EXPECT_EQ(record.translations.count(translation), 1) << term;
            EXPECT_FALSE(text::equalIgnoringCase(translation, record.term)) << term;
        }
    }
}

TEST_P(StarterDictionary, leadsBackToEachTerm)
{
    const auto back = dictionaryOf(reverse());
    for (const Record& record : recordsOf(direction())) {
        for (const QString& translation : record.translations) {
            std::string key;
            writeGlossaryKey(QStringView(translation), key);
            const auto entry = back->find(key);
            ASSERT_TRUE(entry) << translation.toStdString();
            // One key may be that of a noun and of a verb, such as "Leben" and "leben".
            EXPECT_TRUE(entry->candidates().contains(record.term, Qt::CaseInsensitive))
                << translation.toStdString();
        }
    }
}

TEST_P(StarterDictionary, isCertainOfNothingThatAnotherOneSaysOtherwise)
{
    GlossaryDictionaries others;
    for (const char* other : {"de-en", "fr-en", "es-en"}) {
        const bool hasSameTarget = direction().endsWith(QStringLiteral("-en"));
        if (hasSameTarget && other != direction().toStdString()) {
            others.push_back(dictionaryOf(QString::fromLatin1(other)));
        }
    }
    for (const Record& record : recordsOf(direction())) {
        std::string key;
        writeGlossaryKey(QStringView(record.term), key);
        for (const auto& other : others) {
            const auto entry = other->find(key);
            EXPECT_TRUE(record.score != u"30.0" || !entry ||
                        entry->candidates() == record.translations)
                << record.term.toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Directions, StarterDictionary,
                         ::testing::Values("de-en", "en-de", "en-es", "en-fr", "es-en", "fr-en"),
                         [](const auto& info) {
                             std::string name = info.param;
                             name[2] = '_';
                             return name;
                         });

struct WordCase
{
    const char* direction;
    const char* line;
    const char* replacement; ///< empty if it isn't certain
};

TEST(StarterDictionaries, knowEverydayWords)
{
    for (const auto& [direction, line, replacement] :
         {WordCase{"en-de", "2. apple", "Apfel"}, WordCase{"en-de", "Thank you", "danke"},
          WordCase{"de-en", "Schmetterling", "butterfly"}, WordCase{"de-en", "MORGEN", ""},
          WordCase{"en-fr", "heart", "cœur"}, WordCase{"en-fr", "monday", "lundi"},
          WordCase{"fr-en", "e\u0301te\u0301", "summer"}, WordCase{"fr-en", "lundi", "Monday"},
          WordCase{"en-es", "the day after tomorrow", "pasado mañana"},
          WordCase{"es-en", "¿Qué hora es?", "What time is it?"},
          WordCase{"es-en", "mañana", ""}}) {
        const QString key = QString::fromLatin1(direction);
        const QString target = key.section(u'-', 1);
        GlossaryMatcher matcher({dictionaryOf(key)}, {target, target});
        const auto match = matcher.match(QString::fromUtf8(line));
        ASSERT_TRUE(match) << line;
        EXPECT_EQ(match->replacement.value_or(QString()), QString::fromUtf8(replacement)) << line;
    }
}

TEST(StarterDictionaries, areAllTheFilesThereAre)
{
    const QDir folder(QStringLiteral(ZELVANE_STARTER_DICTIONARY));
    EXPECT_THAT(folder.entryList(QDir::Files, QDir::Name),
                ElementsAre(QStringLiteral("README.md"), QStringLiteral("de-en.tsv"),
                            QStringLiteral("en-de.tsv"), QStringLiteral("en-es.tsv"),
                            QStringLiteral("en-fr.tsv"), QStringLiteral("es-en.tsv"),
                            QStringLiteral("fr-en.tsv")));
}

} // namespace
} // namespace zelvane::test
