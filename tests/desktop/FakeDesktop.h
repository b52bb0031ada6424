#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/AlertPresenter.h"
#include "desktop/AppModelWindows.h"
#include "desktop/FocusInspector.h"
#include "desktop/HotKeyRegistrar.h"
#include "desktop/KeystrokePoster.h"
#include "desktop/MouseTap.h"
#include "desktop/OptionClickMenu.h"
#include "desktop/OptionMenuPresenter.h"
#include "desktop/Pasteboard.h"
#include "desktop/SelectionTranslation.h"
#include "foundation/Completion.h"
#include "pipeline/TextTranslator.h"

#include <QMap>
#include <QStringList>

#include <exception>
#include <functional>
#include <utility>

/// Recording stand-ins for everything of the desktop that the flow touches. All write into one log,
/// so that a test sees the order across them.
namespace zelvane::test {

/// Keeps an answer back until the test lets it go. Lets everything pass unless it is closed.
class Hold
{
public:
    void close() { m_gate = Completion<void>(); }
    void open()
    {
        if (m_gate) {
            std::exchange(m_gate, std::nullopt)->succeed();
        }
    }

    [[nodiscard]] QCoro::Task<void> wait() const
    {
        if (const auto gate = m_gate) {
            co_await gate->result();
        }
    }

private:
    std::optional<Completion<void>> m_gate;
};

class FakePasteboard final : public Pasteboard
{
public:
    explicit FakePasteboard(QStringList& log)
        : m_log(log)
    {
    }

    [[nodiscard]] QCoro::Task<PasteboardSnapshot> snapshot() override
    {
        m_log << QStringLiteral("snapshot");
        co_await heldSnapshot.wait();
        if (ownerIsFrozen) {
            throw PasteboardError();
        }
        co_return content;
    }

    void clear() override
    {
        m_log << QStringLiteral("clear");
        content.items.clear();
    }

    [[nodiscard]] QCoro::Task<std::optional<QString>> string() override
    {
        m_log << QStringLiteral("read string");
        co_await heldString.wait();
        const QString type = QStringLiteral("text");
        if (content.items.isEmpty() || !content.items.first().contains(type)) {
            co_return std::nullopt;
        }
        co_return QString::fromUtf8(content.items.first().value(type));
    }

    void setString(const QString& text) override
    {
        m_log << QStringLiteral("set string ") + text;
        put(text);
    }

    void restore(const PasteboardSnapshot& snapshot) override
    {
        m_log << QStringLiteral("restore");
        content = snapshot;
    }

    /// What another program would do.
    void put(const QString& text) { content.items = {{{QStringLiteral("text"), text.toUtf8()}}}; }

    PasteboardSnapshot content;
    bool ownerIsFrozen = false;
    Hold heldSnapshot;
    Hold heldString;

private:
    QStringList& m_log;
};

class FakeKeystrokePoster final : public KeystrokePoster
{
public:
    explicit FakeKeystrokePoster(QStringList& log)
        : m_log(log)
    {
    }

    [[nodiscard]] QCoro::Task<PostResult> postCommandKey(CommandKey key) override
    {
        if (key == CommandKey::copy) {
            m_log << QStringLiteral("post copy");
            if (onCopy) {
                onCopy();
            }
            co_await heldCopy.wait();
            co_return PostResult::posted;
        }
        m_log << QStringLiteral("post paste");
        co_await heldPaste.wait();
        co_return pasteResult;
    }

    /// The foreign program's answer to the copy shortcut.
    std::function<void()> onCopy;
    PostResult pasteResult = PostResult::posted;
    Hold heldCopy;
    Hold heldPaste;

private:
    QStringList& m_log;
};

class FakeFocusInspector final : public FocusInspector
{
public:
    [[nodiscard]] QCoro::Task<std::optional<FocusedElement>> focusedElement() override
    {
        co_await held.wait();
        co_return element;
    }

    std::optional<FocusedElement> element;
    Hold held;
};

class FakeTranslator final : public TextTranslator
{
public:
    explicit FakeTranslator(QStringList& log)
        : m_log(log)
    {
    }

    /// Answers when the test says so, or at once if `answer` or `failure` is set.
    [[nodiscard]] QCoro::Task<QString> translateText(QString text, LanguagePair pair,
                                                     std::stop_token stop) override
    {
        m_log << QStringLiteral("translate ") + text;
        texts << text;
        pairs << pair;
        if (failure) {
            std::rethrow_exception(failure);
        }
        if (answer) {
            co_return *answer;
        }
        pending = Completion<QString>();
        const Completion<QString> current = pending;
        const std::stop_callback onStop(stop, [current] { current.fail(CancellationError()); });
        co_return co_await current.result();
    }

    std::optional<QString> answer;
    std::exception_ptr failure;
    Completion<QString> pending;
    QStringList texts;
    QList<LanguagePair> pairs;

private:
    QStringList& m_log;
};

class FakeAccessibilityPlatform final : public AccessibilityPlatform
{
public:
    explicit FakeAccessibilityPlatform(QStringList& log)
        : m_log(log)
    {
    }

    [[nodiscard]] bool isProcessTrusted() const override { return trusted; }
    [[nodiscard]] bool probeEventTap() override
    {
        ++probes;
        return tapWorks;
    }
    void showPrompt() override { m_log << QStringLiteral("permission prompt"); }
    void relaunch() override { m_log << QStringLiteral("relaunch"); }

    bool trusted = true;
    bool tapWorks = true;
    int probes = 0;

private:
    QStringList& m_log;
};

class FakeAlertPresenter final : public AlertPresenter
{
public:
    explicit FakeAlertPresenter(QStringList& log)
        : m_log(log)
    {
    }

    void activateApplication() override { m_log << QStringLiteral("activate"); }

    [[nodiscard]] QCoro::Task<int> present(Alert alert) override
    {
        m_log << QStringLiteral("alert ") + alert.informativeText;
        alerts << alert;
        closed = Completion<int>();
        const Completion<int> current = closed;
        co_return co_await current.result();
    }

    QList<Alert> alerts;
    /// Decided by the test with the index of a button.
    Completion<int> closed;

private:
    QStringList& m_log;
};

class FakeWindows final : public AppModelWindows
{
public:
    explicit FakeWindows(QStringList& log)
        : m_log(log)
    {
    }

    void presentTranslationResult(const QString& original, const QString& translated,
                                  const QString& diagnostics) override
    {
        m_log << QStringLiteral("popup %1 | %2").arg(original, translated);
        lastDiagnostics = diagnostics;
    }
    void showManualTranslationWindow() override { m_log << QStringLiteral("manual window"); }
    void showOnboarding() override { m_log << QStringLiteral("onboarding"); }
    void promptOnLaunchIfNeeded() override { m_log << QStringLiteral("prompt on launch"); }

    QString lastDiagnostics;

private:
    QStringList& m_log;
};

class FakeOptionClickMenu final : public OptionClickMenu
{
public:
    explicit FakeOptionClickMenu(QStringList& log)
        : m_log(log)
    {
    }

    void setOnSelect(std::function<void(LanguagePair, TranslateOutputMode)> callback) override
    {
        onSelect = std::move(callback);
    }
    void setOnActivated(std::function<void()> callback) override
    {
        onActivated = std::move(callback);
    }
    void setWanted(bool wanted) override
    {
        m_log << (wanted ? QStringLiteral("menu wanted") : QStringLiteral("menu unwanted"));
    }
    void reconcile() override { m_log << QStringLiteral("menu reconcile"); }
    [[nodiscard]] bool isListening() const override { return listening; }
    [[nodiscard]] QString lastError() const override { return error; }

    std::function<void(LanguagePair, TranslateOutputMode)> onSelect;
    std::function<void()> onActivated;
    bool listening = false;
    QString error;

private:
    QStringList& m_log;
};

/// A tap that can be refused at either place, be switched off, and not come on again.
class FakeMouseTap final : public MouseTap
{
public:
    explicit FakeMouseTap(QStringList& log)
        : m_log(log)
    {
    }

    [[nodiscard]] bool create(Place place, Handler made) override
    {
        m_log << (place == Place::hardware ? QStringLiteral("tap hardware")
                                           : QStringLiteral("tap session"));
        if (!(place == Place::hardware ? worksForHardware : worksForSession)) {
            return false;
        }
        handler = std::move(made);
        return true;
    }
    [[nodiscard]] bool enable() override
    {
        m_log << QStringLiteral("tap enable");
        return canBeEnabled;
    }
    void remove() override
    {
        if (handler) {
            m_log << QStringLiteral("tap remove");
        }
        handler = {};
    }
    [[nodiscard]] QString refusal() const override { return reason; }

    /// Refuses everything from now on, or nothing.
    void setWorks(bool works) { worksForHardware = worksForSession = works; }
    TapVerdict send(TapEvent::Type type, quint32 flags = 0, QPoint location = {}) const
    {
        return handler({type, flags, location});
    }

    Handler handler;
    bool worksForHardware = true;
    bool worksForSession = true;
    bool canBeEnabled = true;
    QString reason;

private:
    QStringList& m_log;
};

class FakeOptionMenuPresenter final : public OptionMenuPresenter
{
public:
    void popUp(const OptionMenuContent& content, QPoint location,
               std::function<void(const MenuChoice&)> onChosen) override
    {
        shown << content;
        locations << location;
        choose = std::move(onChosen);
    }

    QList<OptionMenuContent> shown;
    QList<QPoint> locations;
    std::function<void(const MenuChoice&)> choose;
};

class FakeHotKeyRegistrar final : public HotKeyRegistrar
{
public:
    [[nodiscard]] bool installHandler(std::function<void(HotKeyID)> onPressed) override
    {
        ++handlerInstalls;
        if (handlerWorks) {
            press = std::move(onPressed);
        }
        return handlerWorks;
    }

    [[nodiscard]] std::optional<Reference> registerHotKey(const KeyChord& chord,
                                                          HotKeyID id) override
    {
        for (const auto& [other, otherId] : std::as_const(live)) {
            if (other == chord) {
                return std::nullopt;
            }
        }
        live.insert(++m_lastReference, {chord, id});
        return m_lastReference;
    }

    void unregisterHotKey(Reference reference) override { live.remove(reference); }

    /// The ids of the live registrations, ascending.
    [[nodiscard]] QList<quint32> liveIds() const
    {
        QList<quint32> ids;
        for (const auto& [chord, id] : live) {
            ids << id.id;
        }
        std::ranges::sort(ids);
        return ids;
    }

    QMap<Reference, std::pair<KeyChord, HotKeyID>> live;
    std::function<void(HotKeyID)> press;
    bool handlerWorks = true;
    int handlerInstalls = 0;

private:
    Reference m_lastReference = 0;
};

} // namespace zelvane::test
