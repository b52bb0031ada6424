#include "Services/EngineRecord.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

TEST(EngineRecord, isAnObjectWithItsKeysInOrder)
{
    EXPECT_EQ(encodeEngineRecord(factsOf(SmartOfflineVariant::hyMT2_7b)),
              R"({
    "engine": "hymt2-7b-q4-k-m",
    "engine_revision": 1,
    "license": "Apache-2.0",
    "model_bytes": 4624648896,
    "repo": "tencent/Hy-MT2-7B-GGUF",
    "runtime": "llama.cpp-b10437"
}
)");
}

TEST(EngineRecord, yieldsItsRevision)
{
    for (const auto variant : smartOfflineVariants()) {
        EXPECT_EQ(decodeEngineRevision(encodeEngineRecord(factsOf(variant))), 1);
    }
    EXPECT_EQ(decodeEngineRevision(R"({"engine_revision":3})"), 3);
    EXPECT_EQ(decodeEngineRevision(R"({"engine_revision":-2,"engine":7})"), -2);
    EXPECT_EQ(decodeEngineRevision(R"({"engine_revision":1.0})"), 1);
}

TEST(EngineRecord, countsAsNoneIfItIsNotWhole)
{
    const QByteArray whole = encodeEngineRecord(factsOf(SmartOfflineVariant::lmt60_4b));
    for (qsizetype size = 0; size < whole.size() - 2; ++size) {
        ASSERT_EQ(decodeEngineRevision(whole.first(size)), std::nullopt) << size;
    }
}

TEST(EngineRecord, countsAsNoneIfItTellsNoWholeNumber)
{
    for (const char* record :
         {"{}", "[]", "1", "null", R"({"engine_revision":"1"})", R"({"engine_revision":null})",
          R"({"engine_revision":true})", R"({"engine_revision":1.5})",
          R"({"engine_revision":1e300})", R"({"engine_revision":-1e999})",
          R"({"engine_revision":[1]})", R"({"engine_revision":{"a":1}})",
          R"([{"engine_revision":1}])", R"({"Engine_Revision":1})", "\xff\xfe{}",
          R"({"engine_revision":1} trailing)"}) {
        EXPECT_EQ(decodeEngineRevision(record), std::nullopt) << record;
    }
    EXPECT_EQ(decodeEngineRevision(QByteArray(100'000, '[')), std::nullopt);
    EXPECT_EQ(decodeEngineRevision(QByteArray(100'000, ' ') + R"({"engine_revision":1})"),
              std::nullopt);
}

TEST(EngineRecord, onTheDiskIsMissingOrBrokenOrYieldsItsRevision)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("READY"));
    EXPECT_EQ(readEngineRevision(path).error(), NoEngineRecord::missing);

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(readEngineRevision(path).error(), NoEngineRecord::broken);
    file.write(R"({"engine_revision":2})");
    file.close();
    EXPECT_EQ(readEngineRevision(path), 2);

    // A folder in its place.
    EXPECT_EQ(readEngineRevision(folder.path()).error(), NoEngineRecord::broken);
}

} // namespace
} // namespace zelvane::test
