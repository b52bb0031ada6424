#pragma once

#include "Services/EngineFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zelvane::test {

/// A model of six bytes.
inline SmartOfflineVariantFacts tinyModel()
{
    SmartOfflineVariantFacts facts = factsOf(SmartOfflineVariant::lmt60_4b);
    facts.expectedModelBytes = 6;
    return facts;
}

inline void writeFile(const QString& path, const QByteArray& bytes,
                      QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
    file.close();
    ASSERT_TRUE(file.setPermissions(permissions));
}

inline QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Puts a server and a model of the right size in their places, without a record.
inline void writeEngine(const EngineFiles& files)
{
    writeFile(files.server(), "#!/bin/sh\n",
              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    writeFile(files.model(), "GGUF:)");
}

} // namespace zelvane::test
