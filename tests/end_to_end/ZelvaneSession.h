#pragma once

#include "foundation/SystemClock.h"
#include "support/DesktopSession.h"
#include "support/LoopbackHttpServer.h"
#include "support/provider/HostedModel.h"

#include <QJsonObject>
#include <QStringList>

#include <memory>

namespace zelvane::test {

/// The program itself on a desktop of its own, with a provider and the hosted service on this
/// machine.
///
/// Settings are written through the program's own command line before it starts.
class ZelvaneSession
{
    SystemClock m_clock; // before what uses it

public:
    /// A session bus and an accessibility bus besides the window manager.
    [[nodiscard]] static DesktopSession::Options wholeDesktop();

    enum class Profile {
        /// A provider, a key for it, two pairs with shortcuts, and the introduction behind.
        prepared,
        /// As after an installation.
        fresh,
    };

    explicit ZelvaneSession(const DesktopSession::Options& options = wholeDesktop(),
                            Profile profile = Profile::prepared);

    /// Control+Alt+G translates into German, Control+Alt+E into English.
    static constexpr const char* toGerman = "ctrl+alt+g";
    static constexpr const char* toEnglish = "ctrl+alt+e";

    DesktopSession desktop;
    /// The program's file, the built one at first.
    QString program = QStringLiteral(ZELVANE_PROGRAM);
    LoopbackHttpServer provider;
    HostedModel hosted{m_clock};

    /// Runs a command of the program in this session's profile; throws if it fails.
    QByteArray zelvane(const QStringList& arguments);
    void setDefault(const QString& key, bool value);
    void setDefault(const QString& key, const QString& value);

    /// Starts the program, again if it has ended, and waits until its shortcuts work.
    void start(const QStringList& options = {});
    /// What the running program has printed so far.
    [[nodiscard]] QByteArray printed();
    /// Asks the program to quit, as a session's end does, and waits for it. Throws if it crashes.
    void quit();
    /// Whether the running program answers a command at once.
    [[nodiscard]] bool answers();
    [[nodiscard]] QProcess& process() { return *m_process; }

    /// Waits for the timing report of the run that ends next, counted from 1.
    QByteArray waitForReport(int run = 1);

    /// Answers every request with this translation.
    void answerWith(const QByteArray& translation);
    /// The texts that the provider was asked to translate.
    [[nodiscard]] QStringList askedTexts() const;

    /// Opens the text in an editor, and selects all of it or nothing. Yields the editor's window.
    QString openEditor(const QByteArray& text, bool selected = true);
    /// What the editor holds: saved by its own shortcut and read from the file. Waits a while for
    /// something else than the last time.
    [[nodiscard]] QByteArray editorText();
    /// The same where nothing is expected to change.
    [[nodiscard]] QByteArray unchangedEditorText();
    /// Opens a window with a text that can be selected but not changed.
    QString openReader(const QString& text);
    /// Selects all text of the window in front, and nothing in any other window.
    void selectAll();

    void key(const char* chord)
    {
        desktop.xdotool({QStringLiteral("key"), QString::fromLatin1(chord)});
    }
    /// Waits for a visible window with this title, while the provider goes on answering.
    QString waitForWindow(const QString& title);
    /// The same, until it has the keyboard too.
    QString waitForKeyboard(const QString& title);
    [[nodiscard]] bool becomesActive(const QString& window);
    /// Whether it stays above the windows of all programs.
    [[nodiscard]] bool isAbove(const QString& window);
    [[nodiscard]] QPoint placeOf(const QString& window);
    /// Drags what is under `from`, in the window's coordinates, by `way`.
    void drag(const QString& window, QPoint from, QPoint way);
    [[nodiscard]] bool windowIsVisible(const QString& title);
    void waitUntilGone(const QString& title);

    /// Clicks on a control of the program's that can be used, as soon as it shows: the one with
    /// this name for screen readers, the `number`th if there are several. Needs the accessibility
    /// bus.
    void press(const QString& name, int number = 1);
    /// Runs one of the scripts that ask on the accessibility bus, while the provider goes on
    /// answering.
    DesktopSession::Outcome askAsAScreenReader(const QString& script,
                                               const QStringList& arguments = {});
    /// What a screen reader finds in the program's windows: "role\tname", with " *" at what has the
    /// focus. Needs the accessibility bus.
    [[nodiscard]] QStringList elements();
    /// Opens the settings, and waits for their window.
    void openSettings();
    /// Waits until the program shows something of this name; false if it doesn't.
    [[nodiscard]] bool shows(const QString& name,
                             std::chrono::milliseconds limit = std::chrono::seconds(5));

    /// Puts bytes on the clipboard under one type, as another program would.
    void setClipboard(const QByteArray& bytes, const QString& type = QStringLiteral("UTF8_STRING"));
    [[nodiscard]] QByteArray clipboard(const QString& type = QStringLiteral("UTF8_STRING"));
    /// Waits until the clipboard holds this text.
    [[nodiscard]] bool clipboardBecomes(const QByteArray& text);

private:
    void writeEndpoints();
    void prepareProfile();
    /// Saves the editor's text until the file changes.
    void save(std::chrono::milliseconds limit);
    /// What the program in front has selected.
    [[nodiscard]] QByteArray selectedText();
    [[nodiscard]] QStringList withProfile(const QStringList& arguments) const;

    LoopbackHttpServer m_hostedServer;
    QProcess* m_process = nullptr;
    QByteArray m_printed;
    QString m_document;
    QByteArray m_saved;
};

} // namespace zelvane::test
