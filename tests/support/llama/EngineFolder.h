#pragma once

#include <QByteArray>
#include <QString>

namespace zelvane::test {

/// The folder of an engine whose server is the stand-in, laid out as an installation leaves it.
class EngineFolder
{
public:
    /// Makes the folder below `root`. The model is `modelSize` bytes that take no room on the disk.
    EngineFolder(const QString& root, const QString& name, const QString& modelFile,
                 qint64 modelSize);

    [[nodiscard]] QString path(const QString& inside = {}) const;
    [[nodiscard]] QString runtime() const;
    [[nodiscard]] QString server() const;
    [[nodiscard]] QString model() const;

    /// Writes the record of a finished installation.
    void writeReady(int revision = 1) const;
    /// What the server is to do from its next start on; see LlamaScript. Entries are added to those
    /// that let it record its starts, requests and ends.
    void script(const QByteArray& json) const;
    /// What it has recorded of `event`: one line of JSON each.
    [[nodiscard]] QList<QByteArray> recorded(const QByteArray& event) const;

private:
    QString m_path;
    QString m_modelFile;
};

} // namespace zelvane::test
