#include "glossary/GlossaryPackage.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

namespace zelvane::test {
namespace {

GlossaryPackage package(const char* source, const char* target)
{
    return {*resolveGlossaryLanguage(QString::fromUtf8(source)),
            *resolveGlossaryLanguage(QString::fromUtf8(target))};
}

TEST(GlossaryPackageTest, HasOneKeyForBothDirectionsAndAllVariants)
{
    EXPECT_EQ(package("de", "en-US").key(), QStringLiteral("de-en"));
    EXPECT_EQ(package("en-GB", "de").key(), QStringLiteral("de-en"));
    EXPECT_EQ(package("zh", "ja").key(), QStringLiteral("ja-zh"));
    EXPECT_EQ(package("de", "en-US"), package("en-GB", "de"));
    EXPECT_NE(package("de", "en-US"), package("fr", "en-US"));
}

TEST(GlossaryPackageTest, LeadsFromItsSourceToItsTargetAndBack)
{
    const auto directions = package("en-GB", "de").directions();
    EXPECT_EQ(directions[0].key(), QStringLiteral("en-de"));
    EXPECT_EQ(directions[0].to.code, QStringLiteral("de"));
    EXPECT_EQ(directions[1].key(), QStringLiteral("de-en"));
    EXPECT_EQ(directions[1].to.code, QStringLiteral("en-GB"));
}

TEST(GlossaryPackageTest, DictionariesArePublishedForTwentySixLanguages)
{
    EXPECT_EQ(glossarySupportedCodes().join(u' '),
              QStringLiteral("bg ca cs da de el en es fi fr ga id it ja ku la lt mg nl no pl pt ru "
                             "sv tr zh"));
    EXPECT_EQ(glossarySupportedCodes().size(), 26);
    EXPECT_TRUE(hasGlossaryData(*resolveGlossaryLanguage(QStringLiteral("en-GB"))));
    EXPECT_FALSE(hasGlossaryData(*resolveGlossaryLanguage(QStringLiteral("Ukrainian"))));
}

TEST(GlossaryPackageTest, EveryPublishedLanguageHasAName)
{
    for (const QString& code : glossarySupportedCodes()) {
        ASSERT_TRUE(resolveGlossaryLanguage(code)) << code.toStdString();
        EXPECT_EQ(languageBase(resolveGlossaryLanguage(code)->code), code);
    }
}

TEST(GlossaryPackageTest, SortsByTheNamesOfTheLanguages)
{
    QList<GlossaryPackage> packages{package("sv", "de"), package("en-US", "fr"),
                                    package("en-GB", "zh"), package("en-US", "bg"),
                                    package("bg", "pl")};
    sortPackages(packages, QLocale(QLocale::English));
    QStringList names;
    for (const GlossaryPackage& one : packages) {
        names += one.source.name + u'>' + one.target.name;
    }
    EXPECT_EQ(names.join(u' ').toStdString(),
              "Bulgarian>Polish English (UK)>Chinese (Simplified) English (US)>Bulgarian "
              "English (US)>French Swedish>German");
}

TEST(StoredPackages, AreAListOfCodes)
{
    EXPECT_EQ(encodePackages({package("de", "en-GB"), package("fr", "es")}),
              R"([{"sourceCode":"de","targetCode":"en-GB"},)"
              R"({"sourceCode":"fr","targetCode":"es"}])");
    EXPECT_EQ(encodePackages({}), "[]");
}

TEST(StoredPackages, ComeBackAsTheyWere)
{
    const auto packages = decodePackages(
        R"([{"sourceCode":"de","targetCode":"en-GB"},{"sourceCode":"french","targetCode":"es_MX"}])");
    ASSERT_TRUE(packages);
    ASSERT_EQ(packages->size(), 2);
    EXPECT_EQ(packages->at(0).source,
              (GlossaryLanguage{QStringLiteral("de"), QStringLiteral("German")}));
    EXPECT_EQ(packages->at(0).target.code, QStringLiteral("en-GB"));
    EXPECT_EQ(packages->at(1).key(), QStringLiteral("es-fr"));
}

TEST(StoredPackages, OneThatIsNoneSpoilsTheWholeList)
{
    const QString invalid = QStringLiteral("Invalid glossary package");
    EXPECT_EQ(decodePackages(R"([{"sourceCode":"de","targetCode":"fr"},)"
                             R"({"sourceCode":"en-US","targetCode":"en-GB"}])")
                  .error(),
              invalid);
    EXPECT_EQ(decodePackages(R"([{"sourceCode":"tlh","targetCode":"fr"}])").error(), invalid);
    EXPECT_EQ(decodePackages(R"([{"sourceCode":"de"}])").error(), invalid);
    EXPECT_EQ(decodePackages(R"([{"sourceCode":7,"targetCode":"fr"}])").error(), invalid);
    EXPECT_EQ(decodePackages(R"([7])").error(), invalid);
}

TEST(StoredPackages, AnythingButAListIsAnError)
{
    EXPECT_FALSE(decodePackages("{}"));
    EXPECT_FALSE(decodePackages(""));
    EXPECT_FALSE(decodePackages("[{"));
    EXPECT_TRUE(decodePackages("[]"));
}

} // namespace
} // namespace zelvane::test
