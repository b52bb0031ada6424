#include "support/llama/EngineFolder.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace zelvane::test {

namespace {

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("%s can't be written", qPrintable(path));
    }
}

} // namespace

EngineFolder::EngineFolder(const QString& root, const QString& name, const QString& modelFile,
                           qint64 modelSize)
    : m_path(root + u'/' + name)
    , m_modelFile(modelFile)
{
    QDir().mkpath(runtime());
    QDir().mkpath(path(QStringLiteral("model")));
    QFile::link(QStringLiteral(ZELVANE_FAKE_LLAMA_SERVER), server());
    write(model(), "GGUF");
    QFile::resize(model(), modelSize);
    script("{}");
}

QString EngineFolder::path(const QString& inside) const
{
    return inside.isEmpty() ? m_path : m_path + u'/' + inside;
}

QString EngineFolder::runtime() const
{
    return path(QStringLiteral("runtime/llama-b10437"));
}

QString EngineFolder::server() const
{
    return runtime() + QStringLiteral("/llama-server");
}

QString EngineFolder::model() const
{
    return path(QStringLiteral("model/")) + m_modelFile;
}

void EngineFolder::writeReady(int revision) const
{
    write(path(QStringLiteral("READY")),
          "{\"engine_revision\": " + QByteArray::number(revision) + "}");
}

void EngineFolder::script(const QByteArray& json) const
{
    QJsonObject script = QJsonDocument::fromJson(json).object();
    script.insert(QStringLiteral("record"), runtime() + QStringLiteral("/record"));
    write(runtime() + QStringLiteral("/llama-script.json"), QJsonDocument(script).toJson());
}

QList<QByteArray> EngineFolder::recorded(const QByteArray& event) const
{
    QList<QByteArray> found;
    QFile record(runtime() + QStringLiteral("/record"));
    if (record.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : record.readAll().split('\n')) {
            if (line.contains("\"event\":\"" + event + '"')) {
                found += line;
            }
        }
    }
    return found;
}

} // namespace zelvane::test
