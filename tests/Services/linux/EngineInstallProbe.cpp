// Installs an engine, with a model of a size that tests can serve, and may be killed at any moment.
//
// Arguments: the folder of the engines, the folder of the archive, the address of the models, the
// size of the model. Exit status 0 when the engine is ready.

#include "Services/SmartEngineInstaller.h"
#include "Services/linux/LinuxChildProcesses.h"
#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"

#include <QCoreApplication>

namespace zelvane {
namespace {

QCoro::Task<void> install(SmartEngineInstaller& installer, const EngineState& state)
{
    co_await installer.install();
    QCoreApplication::exit(state.is<engine_status::Ready>() ? 0 : 1);
}

} // namespace
} // namespace zelvane

int main(int argc, char** argv)
{
    using namespace zelvane;
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    SmartOfflineVariantFacts facts = factsOf(SmartOfflineVariant::lmt60_4b);
    facts.expectedModelBytes = arguments.at(4).toLongLong();
    OverlayUserDefaults defaults;
    defaults.setValue(QStringLiteral("zv.endpoint.modelFiles"), arguments.at(3));
    SystemClock clock;
    NetworkHttpTransport transport(clock);
    LinuxChildProcesses children;
    EngineState state;
    SmartEngineInstaller installer(
        EngineFiles(arguments.at(1), facts),
        {state, transport, children, clock, defaults, {arguments.at(2)}, [] {}, [] {}});
    const auto begin = [&] { install(installer, state); };
    QMetaObject::invokeMethod(qApp, begin, Qt::QueuedConnection);
    return QCoreApplication::exec();
}
