#include "cli/DefaultsCommand.h"

#include <gtest/gtest.h>

#include <QBuffer>

namespace zelvane::test {
namespace {

class DefaultsVerb : public ::testing::Test
{
protected:
    DefaultsVerb()
    {
        input.open(QIODevice::ReadWrite);
        output.open(QIODevice::ReadWrite);
        error.open(QIODevice::ReadWrite);
    }

    ExitStatus run(const QStringList& arguments)
    {
        output.buffer().clear();
        output.seek(0);
        return runDefaultsCommand(arguments, defaults, {input, output, error});
    }

    /// The words of a command line without quotation marks.
    ExitStatus run(const char* words) { return run(QString::fromUtf8(words).split(u' ')); }

    OverlayUserDefaults defaults;
    QBuffer input;
    QBuffer output;
    QBuffer error;
};

TEST_F(DefaultsVerb, writesAndReadsEachType)
{
    EXPECT_EQ(run("write zv.a text"), ExitStatus::success);
    EXPECT_EQ(run("write zv.b --bool true"), ExitStatus::success);
    EXPECT_EQ(run("write zv.i --int -9223372036854775808"), ExitStatus::success);
    EXPECT_EQ(run("write zv.d --double 0.1"), ExitStatus::success);
    EXPECT_EQ(run("write --data zv.x [1,2]"), ExitStatus::success);
    EXPECT_EQ(defaults.value(QStringLiteral("zv.a")), DefaultsValue(QStringLiteral("text")));
    EXPECT_EQ(defaults.value(QStringLiteral("zv.b")), DefaultsValue(true));
    EXPECT_EQ(defaults.value(QStringLiteral("zv.i")),
              DefaultsValue(std::numeric_limits<qint64>::min()));
    EXPECT_EQ(defaults.value(QStringLiteral("zv.d")), DefaultsValue(0.1));
    EXPECT_EQ(defaults.value(QStringLiteral("zv.x")), DefaultsValue(QByteArray("[1,2]")));
    EXPECT_EQ(run("read zv.b"), ExitStatus::success);
    EXPECT_EQ(output.data(), "true\n");
    run("read zv.i");
    EXPECT_EQ(output.data(), "-9223372036854775808\n");
    run("read zv.d");
    EXPECT_EQ(output.data(), "0.1\n");
    run("read zv.x");
    EXPECT_EQ(output.data(), "[1,2]\n");
}

TEST_F(DefaultsVerb, aTextMayLookLikeAnything)
{
    EXPECT_EQ(run({QStringLiteral("write"), QStringLiteral("zv.a"), QStringLiteral("--int")}),
              ExitStatus::wrongUsage);
    EXPECT_EQ(run({QStringLiteral("write"), QStringLiteral("zv.a"), QString()}),
              ExitStatus::success);
    run("read zv.a");
    EXPECT_EQ(output.data(), "\n");
}

TEST_F(DefaultsVerb, readsBytesFromStandardInput)
{
    input.buffer() = QByteArray("\0\xff\n", 3);
    EXPECT_EQ(run("write zv.x --data -"), ExitStatus::success);
    EXPECT_EQ(defaults.data(QStringLiteral("zv.x")), QByteArray("\0\xff\n", 3));
}

TEST_F(DefaultsVerb, aMissingKeyIsStatusOneAndASentence)
{
    EXPECT_EQ(run("read zv.none"), ExitStatus::failure);
    EXPECT_EQ(output.data(), "");
    EXPECT_EQ(error.data(), "zelvane-desk: there is no setting \"zv.none\"\n");
    EXPECT_EQ(run("delete zv.none"), ExitStatus::failure);
}

TEST_F(DefaultsVerb, deletesAKey)
{
    run("write zv.a text");
    EXPECT_EQ(run("delete zv.a"), ExitStatus::success);
    EXPECT_EQ(run("read zv.a"), ExitStatus::failure);
}

TEST_F(DefaultsVerb, listsKeysWithTypeAndValueOnOneLineEach)
{
    defaults.setValue(QStringLiteral("zv.b"), QStringLiteral("two\nlines\tand \\"));
    defaults.setValue(QStringLiteral("zv.a"), true);
    defaults.setValue(QStringLiteral("other"), qint64(1));
    EXPECT_EQ(run("list"), ExitStatus::success);
    EXPECT_EQ(output.data(), "other\tint\t1\n"
                             "zv.a\tbool\ttrue\n"
                             "zv.b\tstring\ttwo\\nlines\\tand \\\\\n");
    EXPECT_EQ(run("list zv."), ExitStatus::success);
    EXPECT_EQ(output.data(), "zv.a\tbool\ttrue\nzv.b\tstring\ttwo\\nlines\\tand \\\\\n");
}

class WrongDefaults : public DefaultsVerb, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(WrongDefaults, isStatusTwoAndStoresNothing)
{
    EXPECT_EQ(run(GetParam()), ExitStatus::wrongUsage);
    EXPECT_TRUE(defaults.keys().isEmpty());
    EXPECT_TRUE(error.data().startsWith("zelvane-desk: "));
}

INSTANTIATE_TEST_SUITE_P(Usages, WrongDefaults,
                         ::testing::Values("nonsense", "read", "read a b", "write", "write a",
                                           "write a b c", "write a --bool maybe",
                                           "write a --int 1.5", "write a --int 9223372036854775808",
                                           "write a --double nan", "write a --double x", "delete",
                                           "list a b"));

} // namespace
} // namespace zelvane::test
