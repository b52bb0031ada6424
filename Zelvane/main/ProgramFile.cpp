#include "main/ProgramFile.h"

#include <QFileInfo>
#include <QProcess>

namespace zelvane {

namespace {

const QString ownImage = QStringLiteral("/proc/self/exe");

} // namespace

QString programFile()
{
    static const QString file = [] {
        // Images set it; what they contain is mounted under another path at each start.
        const QString image = qEnvironmentVariable("APPIMAGE");
        return image.isEmpty() ? QFileInfo(ownImage).symLinkTarget() : image;
    }();
    return file;
}

void startProgramAgain(const QStringList& arguments, const QString& key)
{
    QProcess process;
    // A program whose file was deleted can still start itself once more.
    process.setProgram(QFileInfo(programFile()).isExecutable() ? programFile() : ownImage);
    process.setArguments(arguments);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!key.isEmpty()) {
        environment.insert(QStringLiteral("ZELVANE_API_KEY"), key);
    }
    process.setProcessEnvironment(environment);
    process.startDetached();
}

} // namespace zelvane
