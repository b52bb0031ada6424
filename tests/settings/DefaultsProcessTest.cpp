#include "settings/FileUserDefaults.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace zelvane::test {
namespace {

class Writer
{
public:
    Writer(const QString& directory, const char* prefix, int rounds, int bytes)
    {
        m_process.start(QStringLiteral(DEFAULTS_WRITER),
                        {directory, QString::fromUtf8(prefix), QString::number(rounds),
                         QString::number(bytes)});
    }
    ~Writer() { kill(); }
    Q_DISABLE_COPY_MOVE(Writer)

    bool waitForFirstRound() { return m_process.waitForReadyRead(5000); }
    bool waitForEnd() { return m_process.waitForFinished(8000) && m_process.exitCode() == 0; }
    void kill()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }
    /// The last round of which the process said that it had reached the disk.
    int lastRound()
    {
        const QByteArrayList lines = m_process.readAllStandardOutput().trimmed().split('\n');
        return lines.last().toInt();
    }

private:
    QProcess m_process;
};

class KilledWriter : public ::testing::TestWithParam<unsigned>
{
};

TEST_P(KilledWriter, leavesTheLastStateOrTheOneBefore)
{
    constexpr int kills = 20;
    constexpr int bytes = 150000;
    const QTemporaryDir root;
    const QString directory = root.path() + QStringLiteral("/config");
    QDir().mkpath(directory);
    QFile file(directory + QStringLiteral("/defaults.json"));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(R"({"zv.future":[1.50]})");
    file.close();

    int interrupted = 0;
    std::minstd_rand random(GetParam());
    std::uniform_int_distribution<unsigned long> microseconds(0, 12000);
    for (int i = 0; i < kills; ++i) {
        Writer writer(directory, "state", 0, bytes);
        ASSERT_TRUE(writer.waitForFirstRound());
        QThread::usleep(microseconds(random));
        writer.kill();
        const int promised = writer.lastRound();

        interrupted += QFile::exists(directory + QStringLiteral("/defaults.json.new")) ? 1 : 0;
        ASSERT_TRUE(file.open(QFile::ReadOnly));
        const auto contents = decodeDefaults(file.readAll());
        file.close();
        ASSERT_TRUE(contents) << "a half-written file after kill " << i;
        EXPECT_EQ(contents->value(QStringLiteral("zv.future")),
                  StoredValue(ForeignValue{"[1.50]"}));
        const auto value = std::get<DefaultsValue>(contents->value(QStringLiteral("state")));
        const QString state = std::get<QString>(value);
        const int found = state.section(u':', 0, 0).toInt();
        EXPECT_GE(found, promised);
        EXPECT_LE(found, promised + 1);
        EXPECT_EQ(state.section(u':', 1).size(), bytes);
    }
    RecordProperty("killedInMidWrite", interrupted);
    const QStringList left = QDir(directory).entryList({QStringLiteral("*.damaged*")});
    EXPECT_EQ(left, QStringList());
}

INSTANTIATE_TEST_SUITE_P(Runs, KilledWriter, ::testing::Range(1U, 16U));

TEST(Writers, thatWriteAtOnceLoseNothingOfEachOther)
{
    const QTemporaryDir root;
    std::vector<std::unique_ptr<Writer>> writers;
    for (const char* prefix : {"a", "b", "c", "d"}) {
        writers.push_back(std::make_unique<Writer>(root.path(), prefix, 40, 10));
    }
    for (const auto& writer : writers) {
        EXPECT_TRUE(writer->waitForEnd());
    }
    const FileUserDefaults defaults(root.path());
    EXPECT_EQ(defaults.keys().size(), 160);
    EXPECT_EQ(defaults.string(QStringLiteral("c.40")), QStringLiteral("40:xxxxxxxxxx"));
}

} // namespace
} // namespace zelvane::test
