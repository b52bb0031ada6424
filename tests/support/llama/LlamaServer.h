#pragma once

#include "support/llama/LlamaModel.h"
#include "support/llama/LlamaScript.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <QTcpServer>

#include <deque>
#include <expected>
#include <memory>
#include <vector>

namespace zelvane::test {

/// The options that the server knows, with its own defaults.
struct LlamaOptions
{
    QString model;
    QString host = QStringLiteral("127.0.0.1");
    quint16 port = 8080;
    int gpuLayers = 0;
    int context = 4096;
    int slots = 1;
    bool jinja = false;
    QString key;

    /// `arguments` without the program's name. Or a sentence, as the server words it.
    [[nodiscard]] static std::expected<LlamaOptions, QString> parse(const QStringList& arguments);
};

/// One request that was read completely.
struct LlamaRequest
{
    QByteArray method;
    QByteArray target;
    QList<QPair<QByteArray, QByteArray>> headers; ///< names in lower case
    QByteArray body;

    [[nodiscard]] QByteArray header(const QByteArray& lowerCaseName) const;
};

class LlamaConnection;

/// Behaves on the wire and towards signals as the real server was seen to.
class LlamaServer final : public QObject
{
    Q_OBJECT

public:
    LlamaServer(LlamaOptions options, LlamaScript script, QStringList arguments);
    ~LlamaServer() override;

    /// Loads, serves, and ends the event loop with the status of the process.
    void start();
    /// What the first SIGTERM or SIGINT does.
    void askToEnd();

Q_SIGNALS:
    /// The model is there.
    void loaded();

private:
    friend class LlamaConnection;
    /// A translation that is being made or waits for its turn.
    struct Job
    {
        LlamaConnection* connection;
        QJsonObject request;
        ModelMood mood;
    };

    void listen();
    void load();
    [[nodiscard]] bool modelIsUsable() const;
    void accept();
    void handle(LlamaConnection& connection, const LlamaRequest& request);
    void handleChat(LlamaConnection& connection, const LlamaRequest& request);
    [[nodiscard]] bool isAllowed(const LlamaRequest& request) const;
    void startJobs();
    void finishJob(const std::shared_ptr<Job>& job);
    void left(LlamaConnection* connection);
    void endIfIdle();
    void record(const QString& event, QJsonObject entry) const;
    void log(const QByteArray& line) const;
    [[noreturn]] void refuseModel() const;

    LlamaOptions m_options;
    LlamaScript m_script;
    QStringList m_arguments;
    QTcpServer m_listener;
    bool m_isReady = false;
    bool m_isEnding = false;
    bool m_hadToWait = false;
    QElapsedTimer m_cancelled; ///< since a client left without its answer
    qsizetype m_asked = 0;
    std::vector<std::unique_ptr<LlamaConnection>> m_connections;
    std::deque<std::shared_ptr<Job>> m_waiting;
    std::vector<std::shared_ptr<Job>> m_running;
};

} // namespace zelvane::test
