#include "end_to_end/ZelvaneSession.h"

#include "support/Await.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace zelvane::test {

namespace {

using namespace std::chrono_literals;

/// Less than a test may take, so that what is missing gets a name.
constexpr auto patience = 8s;

/// A part of the program's name on the accessibility bus.
const QString accessibleName = QStringLiteral("elvane");

const char* const reader = R"(
import sys, gi
gi.require_version("Gtk", "3.0")
from gi.repository import Gtk
window = Gtk.Window(title="Reader")
window.set_default_size(480, 160)
view = Gtk.TextView(editable=False)
view.get_buffer().set_text(sys.argv[1])
window.add(view)
window.connect("destroy", Gtk.main_quit)
window.show_all()
view.grab_focus()
Gtk.main()
)";

/// Waits for what only another program can tell. To ask it without a pause would keep a processor
/// busy that the programs under test need.
bool keepAsking(const std::function<bool()>& condition, std::chrono::milliseconds limit = patience)
{
    QDeadlineTimer pause(0);
    return waitUntil(
        [&] {
            if (!pause.hasExpired()) {
                return false;
            }
            const bool holds = condition();
            pause.setRemainingTime(40ms);
            return holds;
        },
        limit);
}

[[noreturn]] void giveUp(const QString& what)
{
    throw std::runtime_error("end to end: " + what.toStdString());
}

QJsonObject pair(const QString& target, int keyCode)
{
    return {{QStringLiteral("id"),
             QStringLiteral("00000000-0000-4000-8000-%1").arg(keyCode, 12, 10, QLatin1Char('0'))},
            {QStringLiteral("enabled"), true},
            {QStringLiteral("source"), QStringLiteral("Any Language")},
            {QStringLiteral("target"), target},
            {QStringLiteral("hotKey"), QJsonObject{{QStringLiteral("keyCode"), keyCode},
                                                   {QStringLiteral("carbonModifiers"), 0x1800}}}};
}

} // namespace

DesktopSession::Options ZelvaneSession::wholeDesktop()
{
    DesktopSession::Options options;
    options.sessionBus = true;
    options.accessibilityBus = true;
    return options;
}

ZelvaneSession::ZelvaneSession(const DesktopSession::Options& options, Profile profile)
    : desktop(options)
{
    if (options.accessibilityBus) {
        desktop.setVariable(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"),
                            QStringLiteral("1"));
    }
    writeEndpoints();
    if (profile == Profile::prepared) {
        prepareProfile();
    }
    answerWith("Hallo Welt");
}

void ZelvaneSession::writeEndpoints()
{
    m_hostedServer.setHandler(
        [this](const RecordedRequest& request) { return hosted.answerTo(request); });
    setDefault(QStringLiteral("zv.endpoint.Mistral"), provider.url().toString());
    setDefault(QStringLiteral("zv.endpoint.Zelvane"), m_hostedServer.url().toString());
}

void ZelvaneSession::prepareProfile()
{
    desktop.setVariable(QStringLiteral("ZELVANE_API_KEY"), QStringLiteral("end-to-end-key"));
    setDefault(QStringLiteral("zv.provider"), QStringLiteral("Mistral"));
    const QJsonArray pairs{pair(QStringLiteral("German"), 5),
                           pair(QStringLiteral("English (US)"), 14)};
    zelvane({QStringLiteral("defaults"), QStringLiteral("write"), QStringLiteral("zv.pairs"),
             QStringLiteral("--data"),
             QString::fromUtf8(QJsonDocument(pairs).toJson(QJsonDocument::Compact))});
    setDefault(QStringLiteral("zv.hasSeenOnboarding"), true);
    setDefault(QStringLiteral("zv.doubleHotKeyWindow"), false);
}

QStringList ZelvaneSession::withProfile(const QStringList& arguments) const
{
    return QStringList{QStringLiteral("--profile"), desktop.home() + QStringLiteral("/profile")} +
           arguments;
}

QByteArray ZelvaneSession::zelvane(const QStringList& arguments)
{
    const auto outcome = desktop.run(program, withProfile(arguments));
    if (outcome.exitCode != 0) {
        giveUp(QString::fromUtf8(outcome.errors));
    }
    return outcome.output;
}

bool ZelvaneSession::answers()
{
    try {
        return desktop.run(program, withProfile({QStringLiteral("status")}), {}, 2s).exitCode == 0;
    } catch (const std::runtime_error&) {
        return false;
    }
}

void ZelvaneSession::setDefault(const QString& key, bool value)
{
    zelvane({QStringLiteral("defaults"), QStringLiteral("write"), key, QStringLiteral("--bool"),
             value ? QStringLiteral("true") : QStringLiteral("false")});
}

void ZelvaneSession::setDefault(const QString& key, const QString& value)
{
    zelvane({QStringLiteral("defaults"), QStringLiteral("write"), key, value});
}

void ZelvaneSession::start(const QStringList& options)
{
    m_printed.clear();
    m_process =
        &desktop.start(program, withProfile(QStringList{QStringLiteral("--report")} + options));
    if (!waitUntil([this] { return printed().startsWith("ready\n"); }, patience)) {
        giveUp(QStringLiteral("the program did not get ready; it printed: ") +
               QString::fromUtf8(m_printed));
    }
}

QByteArray ZelvaneSession::printed()
{
    if (m_process) {
        m_printed += m_process->readAllStandardOutput();
    }
    return m_printed;
}

void ZelvaneSession::quit()
{
    m_process->terminate();
    if (!waitUntil([this] { return m_process->state() == QProcess::NotRunning; }, patience)) {
        giveUp(QStringLiteral("the program did not quit"));
    }
    if (m_process->exitStatus() != QProcess::NormalExit || m_process->exitCode() != 0) {
        giveUp(QStringLiteral("the program did not end well: ") +
               QString::fromUtf8(m_process->readAllStandardError()));
    }
}

QByteArray ZelvaneSession::waitForReport(int run)
{
    const auto reports = [this] { return printed().count("\nverdict: "); };
    if (!waitUntil([&] { return reports() >= run; }, patience)) {
        giveUp(QStringLiteral("the run did not end; printed: ") + QString::fromUtf8(m_printed));
    }
    QByteArray rest = m_printed;
    for (int i = 1; i < run; ++i) {
        rest = rest.mid(rest.indexOf("\nverdict: ") + 1);
    }
    return rest;
}

void ZelvaneSession::answerWith(const QByteArray& translation)
{
    const QJsonObject message{{QStringLiteral("role"), QStringLiteral("assistant")},
                              {QStringLiteral("content"), QString::fromUtf8(translation)}};
    const QJsonObject body{
        {QStringLiteral("choices"), QJsonArray{QJsonObject{{QStringLiteral("index"), 0},
                                                           {QStringLiteral("message"), message}}}}};
    const QByteArray json = QJsonDocument(body).toJson(QJsonDocument::Compact);
    provider.setHandler([json](const RecordedRequest&) { return Answer::json(200, json); });
}

QStringList ZelvaneSession::askedTexts() const
{
    QStringList texts;
    for (const RecordedRequest& request : provider.requests()) {
        texts << QJsonDocument::fromJson(
                     request.body)[QStringLiteral("messages")][1][QStringLiteral("content")]
                     .toString();
    }
    return texts;
}

QString ZelvaneSession::openEditor(const QByteArray& text, bool selected)
{
    m_document = desktop.writeFile(QStringLiteral("letter.txt"), text);
    m_saved = text;
    desktop.start(QStringLiteral("mousepad"), {QStringLiteral("--disable-server"), m_document});
    const QString window = waitForWindow(QStringLiteral("letter.txt"));
    desktop.focusWindow(window);
    selectAll();
    if (!selected) {
        key("ctrl+Home");
        keepAsking([this] { return selectedText().isEmpty(); });
    }
    return window;
}

QByteArray ZelvaneSession::editorText()
{
    save(2s);
    return m_saved.trimmed();
}

QByteArray ZelvaneSession::unchangedEditorText()
{
    save(600ms);
    return m_saved.trimmed();
}

void ZelvaneSession::save(std::chrono::milliseconds limit)
{
    const auto hasChanged = [this] {
        QFile file(m_document);
        const QByteArray before = m_saved;
        if (file.open(QIODevice::ReadOnly) && file.size() > 0) {
            m_saved = file.readAll();
        }
        return m_saved != before;
    };
    // What was pasted may arrive in the editor after the first key.
    waitUntil(
        [&] {
            key("ctrl+s");
            return waitUntil(hasChanged, 200ms);
        },
        limit);
}

QString ZelvaneSession::openReader(const QString& text)
{
    const QString script = desktop.writeFile(QStringLiteral("reader.py"), reader);
    desktop.start(QStringLiteral("/usr/bin/python3"), {script, text});
    const QString window = waitForWindow(QStringLiteral("^Reader$"));
    desktop.focusWindow(window);
    return window;
}

void ZelvaneSession::selectAll()
{
    // Takes the selection away from whoever had it.
    static const QByteArray nobodys("nobody's");
    QProcess& taker = desktop.start(
        QStringLiteral("xclip"),
        {QStringLiteral("-quiet"), QStringLiteral("-selection"), QStringLiteral("primary")});
    taker.write(nobodys);
    taker.closeWriteChannel();
    keepAsking([this] { return selectedText() == nobodys; });
    // A window has the focus a moment before its text takes keys.
    const auto selects = [this] {
        key("ctrl+a");
        return keepAsking([this] { return selectedText() != nobodys; }, 300ms);
    };
    if (!waitUntil(selects, patience)) {
        giveUp(QStringLiteral("the window in front has no text to select"));
    }
}

QByteArray ZelvaneSession::selectedText()
{
    return desktop
        .run(QStringLiteral("xclip"),
             {QStringLiteral("-selection"), QStringLiteral("primary"), QStringLiteral("-o")})
        .output;
}

bool ZelvaneSession::windowIsVisible(const QString& title)
{
    const auto found = desktop.run(QStringLiteral("xdotool"),
                                   {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                    QStringLiteral("--name"), title});
    return !found.output.trimmed().isEmpty();
}

QString ZelvaneSession::waitForKeyboard(const QString& title)
{
    const QString window = waitForWindow(title);
    if (!becomesActive(window)) {
        giveUp(QStringLiteral("the window does not get the keyboard: ") + title);
    }
    return window;
}

bool ZelvaneSession::becomesActive(const QString& window)
{
    const auto isActive = [&] {
        return desktop.run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")})
                   .output.trimmed() == window.toLatin1();
    };
    return keepAsking(isActive);
}

bool ZelvaneSession::isAbove(const QString& window)
{
    return desktop
        .run(QStringLiteral("xprop"),
             {QStringLiteral("-id"), window, QStringLiteral("_NET_WM_STATE")})
        .output.contains("_NET_WM_STATE_ABOVE");
}

QPoint ZelvaneSession::placeOf(const QString& window)
{
    const QString text = QString::fromLatin1(
        desktop.xdotool({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window}));
    static const QRegularExpression numbers(QStringLiteral("X=(-?\\d+)\\s+Y=(-?\\d+)"));
    const auto match = numbers.match(text);
    return {match.captured(1).toInt(), match.captured(2).toInt()};
}

void ZelvaneSession::drag(const QString& window, QPoint from, QPoint way)
{
    const auto move = [this](QPoint point) {
        desktop.xdotool(
            {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())});
    };
    const QPoint start = placeOf(window) + from;
    move(start);
    desktop.xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
    constexpr int steps = 10;
    for (int step = 1; step <= steps; ++step) {
        move(start + way * step / steps);
    }
    desktop.xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
}

QString ZelvaneSession::waitForWindow(const QString& title)
{
    if (!keepAsking([&] { return windowIsVisible(title); })) {
        giveUp(QStringLiteral("there is no window ") + title);
    }
    return desktop.waitForWindow(title);
}

void ZelvaneSession::waitUntilGone(const QString& title)
{
    if (!keepAsking([&] { return !windowIsVisible(title); })) {
        giveUp(QStringLiteral("there is still a window ") + title);
    }
}

DesktopSession::Outcome ZelvaneSession::askAsAScreenReader(const QString& script,
                                                           const QStringList& arguments)
{
    QProcess& asking = desktop.start(script, QStringList{accessibleName} + arguments);
    if (!waitUntil([&] { return asking.state() == QProcess::NotRunning; }, 15s)) {
        giveUp(script + QStringLiteral(" does not end"));
    }
    return {asking.exitCode(), asking.readAllStandardOutput(), {}};
}

void ZelvaneSession::press(const QString& name, int number)
{
    QByteArray place;
    const auto look = [&] {
        const auto found = askAsAScreenReader(QStringLiteral(ZELVANE_PLACE_ACCESSIBLE),
                                              {name, QString::number(number)});
        place = found.output.trimmed();
        return found.exitCode == 0;
    };
    if (!waitUntil(look, 5s)) {
        giveUp(QStringLiteral("there is no control %1; the program shows:\n").arg(name) +
               elements().join(u'\n'));
    }
    const QStringList middle = QString::fromLatin1(place).split(u' ');
    desktop.xdotool({QStringLiteral("mousemove"), middle.value(0), middle.value(1),
                     QStringLiteral("click"), QStringLiteral("1")});
}

QStringList ZelvaneSession::elements()
{
    return QString::fromUtf8(askAsAScreenReader(QStringLiteral(ZELVANE_WALK_ACCESSIBLE)).output)
        .split(u'\n', Qt::SkipEmptyParts);
}

void ZelvaneSession::openSettings()
{
    zelvane({QStringLiteral("show"), QStringLiteral("settings")});
    waitForWindow(QStringLiteral("^Settings$"));
}

bool ZelvaneSession::shows(const QString& name, std::chrono::milliseconds limit)
{
    return waitUntil(
        [&] {
            const QStringList found = elements();
            return std::ranges::any_of(found, [&](QString element) {
                if (element.endsWith(QStringLiteral(" *"))) {
                    element.chop(2);
                }
                return element.section(u'\t', 1) == name;
            });
        },
        limit);
}

void ZelvaneSession::setClipboard(const QByteArray& bytes, const QString& type)
{
    // xclip stays in the background to serve what it was given.
    QProcess& xclip = desktop.start(QStringLiteral("xclip"),
                                    {QStringLiteral("-quiet"), QStringLiteral("-selection"),
                                     QStringLiteral("clipboard"), QStringLiteral("-t"), type});
    xclip.write(bytes);
    xclip.closeWriteChannel();
    if (!keepAsking([&] { return clipboard(type) == bytes; })) {
        giveUp(QStringLiteral("the clipboard was not taken"));
    }
}

QByteArray ZelvaneSession::clipboard(const QString& type)
{
    return desktop
        .run(QStringLiteral("xclip"), {QStringLiteral("-selection"), QStringLiteral("clipboard"),
                                       QStringLiteral("-t"), type, QStringLiteral("-o")})
        .output;
}

bool ZelvaneSession::clipboardBecomes(const QByteArray& text)
{
    return keepAsking([&] { return clipboard() == text; });
}

} // namespace zelvane::test
