#pragma once

#include "support/LoopbackHttpServer.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>

#include <filesystem>

namespace zelvane::test {

/// Lays the program out below `folder` as packaging does, with an archive of a server that prints a
/// word and ends. Yields the path of the program.
inline QString layOutProgram(const QString& folder)
{
    namespace fs = std::filesystem;
    const fs::path prefix = folder.toStdString();
    const fs::path resources = prefix / "share/zelvane-desk/llama";
    fs::create_directories(prefix / "bin");
    fs::create_directories(resources);
    const fs::path program = prefix / "bin/zelvane-desk";
    std::error_code differentDisk;
    fs::create_hard_link(ZELVANE_PROGRAM, program, differentDisk);
    if (differentDisk) {
        fs::copy_file(ZELVANE_PROGRAM, program);
    }
    const fs::path runtime = prefix / "llama-b10437";
    fs::create_directories(runtime);
    QFile server(QString::fromStdString((runtime / "llama-server").string()));
    EXPECT_TRUE(server.open(QIODevice::WriteOnly));
    server.write("#!/bin/sh\necho served\n");
    server.close();
    fs::create_symlink("llama-server", runtime / "link");
#ifdef Q_PROCESSOR_ARM_64
    const char* const archive = "llama-b10437-bin-linux-arm64.tar.gz";
#else
    const char* const archive = "llama-b10437-bin-linux-x64.tar.gz";
#endif
    const QStringList arguments{QStringLiteral("-czf"),
                                QString::fromStdString((resources / archive).string()),
                                QStringLiteral("-C"), folder, QStringLiteral("llama-b10437")};
    EXPECT_EQ(QProcess::execute(QStringLiteral("/usr/bin/tar"), arguments), 0);
    return QString::fromStdString(program.string());
}

/// The files of the engine "fast" in a profile, and of whatever else there is of engines.
class FastEngineFiles
{
public:
    /// Tests serve none of the model, or a beginning.
    static constexpr qint64 modelSize = 2'716'068'544;

    /// `profile` is the folder of the option `--profile`.
    explicit FastEngineFiles(const QString& profile)
        : m_root(profile + QStringLiteral("/data/org.zelvane.desk"))
    {
    }

    [[nodiscard]] QString path(const char* inside = "") const
    {
        return m_root + QStringLiteral("/lmt60-4b/") + QString::fromUtf8(inside);
    }
    /// What there is of engines, whole or in parts.
    [[nodiscard]] QStringList engines() const
    {
        const QString glossaries = QStringLiteral("glossaries");
        QStringList found =
            QDir(m_root).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
        found.removeAll(glossaries);
        return found;
    }
    /// A model of the right size that takes no room on the disk.
    void putModel() const
    {
        QDir().mkpath(path("model"));
        QFile model(path("model/LMT-60-4B.Q4_K_M.gguf"));
        ASSERT_TRUE(model.open(QIODevice::WriteOnly));
        ASSERT_TRUE(model.resize(modelSize));
    }
    /// The bytes that a download has brought so far.
    [[nodiscard]] qint64 partialSize() const
    {
        return QFileInfo(path("model/LMT-60-4B.Q4_K_M.gguf.partial")).size();
    }

private:
    QString m_root;
};

/// The first 300,000 bytes of the model of the engine "fast", and then silence.
inline Answer beginningOfModel()
{
    return Answer()
        .send("HTTP/1.1 200 OK\r\nContent-Length: " +
              QByteArray::number(FastEngineFiles::modelSize) + "\r\n\r\n")
        .flood(300'000)
        .hold();
}

} // namespace zelvane::test
