#pragma once

#include "support/Await.h"
#include "support/LoopbackHttpServer.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>

namespace zelvane::test {

/// What a process left behind.
struct Ended
{
    int status = -1;
    std::string output;
    std::string errors;
};

/// Runs the program's own binary in a profile of its own, without a display and a session bus.
class Commands : public ::testing::Test
{
protected:
    Commands()
    {
        // Nothing of the desktop that the tests may run on.
        environment.insert(QStringLiteral("HOME"), home.path());
        environment.insert(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin"));
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        environment.insert(QStringLiteral("ZELVANE_API_KEY"), QStringLiteral("command-key"));
        run({"defaults", "write", "zv.provider", "Mistral"});
        run({"defaults", "write", "zv.endpoint.Mistral",
             provider.url().toString().toUtf8().constData()});
    }

    std::unique_ptr<QProcess> start(std::initializer_list<const char*> arguments)
    {
        QStringList words{QStringLiteral("--profile"), home.filePath(QStringLiteral("profile"))};
        for (const char* argument : arguments) {
            words << QString::fromUtf8(argument);
        }
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(environment);
        process->start(program, words);
        return process;
    }

    static Ended end(QProcess& process)
    {
        EXPECT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }));
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    Ended run(std::initializer_list<const char*> arguments, const QByteArray& input = {})
    {
        const auto process = start(arguments);
        process->write(input);
        process->closeWriteChannel();
        return end(*process);
    }

    void answer(const QByteArray& content)
    {
        provider.enqueue(
            Answer::json(200, R"({"choices":[{"message":{"content":")" + content + R"("}}]})"));
    }

    QString program = QStringLiteral(ZELVANE_PROGRAM);
    QTemporaryDir home;
    QProcessEnvironment environment;
    LoopbackHttpServer provider;
};

} // namespace zelvane::test
