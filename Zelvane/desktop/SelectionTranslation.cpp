#include "desktop/SelectionTranslation.h"

#include "foundation/Text.h"
#include "pipeline/TranslationError.h"

#include <QPointer>

#include <utility>

namespace zelvane {

namespace {

using std::chrono::milliseconds;

// Foreign programs answer copy and paste without telling when they are done. These waits are ample
// for programs that answer at all, and short enough not to be felt.
constexpr milliseconds copyWait{180};
constexpr milliseconds prePasteWait{80};
constexpr milliseconds postPasteWait{120};

QString inMilliseconds(milliseconds duration)
{
    return QStringLiteral("%1 ms").arg(duration.count());
}

QString trueOrFalse(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QString charactersOf(const QString& text)
{
    return QString::number(text::characterCount(text));
}

/// After a wait that no stop shortens. The program may have ended meanwhile, and whoever was waited
/// for says so from its destructor, when the flow's object has long gone.
void endIfGone(const QPointer<SelectionTranslation>& flow)
{
    if (!flow) {
        throw CancellationError();
    }
}

} // namespace

QString caseName(TranslateOutputMode mode)
{
    switch (mode) {
    case TranslateOutputMode::automatic:
        return QStringLiteral("auto");
    case TranslateOutputMode::autoAndWindow:
        return QStringLiteral("autoAndWindow");
    case TranslateOutputMode::windowOnly:
        return QStringLiteral("windowOnly");
    }
    Q_UNREACHABLE();
}

SelectionTranslation::SelectionTranslation(const Parts& parts)
    : m_parts(parts)
{
}

SelectionTranslation::~SelectionTranslation()
{
    restorePasteboard();
}

QCoro::Task<TranslateSelectionResult>
SelectionTranslation::translateSelection(LanguagePair pair, TranslateOutputMode mode,
                                         bool autoReplace, std::stop_token stop)
{
    beginTrace(pair, mode, autoReplace);
    requirePermission();
    co_await backUpPasteboard();

    TranslateSelectionResult result;
    result.original = co_await copySelection(stop);

    const bool isStatic = co_await focusedElementIsStatic();
    result.replaced = mode != TranslateOutputMode::windowOnly && autoReplace && !isStatic;
    result.showWindow = mode == TranslateOutputMode::autoAndWindow || !result.replaced;
    markOutcome(result);

    result.translated = co_await translate(result.original, pair, stop);
    if (result.replaced && !co_await paste(result.translated, stop)) {
        // Nobody is left to take the paste: the popup keeps the translation from being lost.
        result.replaced = false;
        result.showWindow = true;
        markOutcome(result);
    }
    restorePasteboard();
    m_parts.trace.mark(QStringLiteral("pasteboard restored"));
    m_parts.trace.mark(QStringLiteral("done"));
    result.diagnostics = m_parts.trace.report();
    co_return result;
}

void SelectionTranslation::beginTrace(const LanguagePair& pair, TranslateOutputMode mode,
                                      bool autoReplace)
{
    const AIProvider provider = m_parts.settings.provider();
    const QString model = m_parts.settings.model();
    m_parts.trace.begin({
        {QStringLiteral("provider"), rawValue(provider)},
        {QStringLiteral("model"), model.isEmpty() ? defaultModel(provider) : model},
        {QStringLiteral("pair"), pairLabel(pair)},
        {QStringLiteral("mode"), caseName(mode)},
        {QStringLiteral("autoReplace"), trueOrFalse(autoReplace)},
    });
}

void SelectionTranslation::requirePermission()
{
    if (!m_parts.permission.isEffectivelyTrusted()) {
        m_parts.trace.mark(QStringLiteral("accessibility denied"));
        m_parts.permission.requestPrompt();
        throw TranslationError(TranslationError::Code::accessibilityDenied);
    }
    m_parts.trace.mark(QStringLiteral("accessibility ok"));
}

QCoro::Task<void> SelectionTranslation::backUpPasteboard()
{
    const QPointer self(this);
    try {
        auto saved = co_await m_parts.pasteboard.snapshot();
        endIfGone(self);
        m_saved = std::move(saved);
    } catch (const PasteboardError& error) {
        endIfGone(self);
        // Going on would replace a clipboard that could not be put back.
        m_parts.trace.mark(QStringLiteral("error"), error.description());
        throw;
    }
    m_parts.trace.mark(QStringLiteral("pasteboard backed up"));
}

void SelectionTranslation::restorePasteboard()
{
    if (const auto saved = std::exchange(m_saved, std::nullopt)) {
        m_parts.pasteboard.restore(*saved);
    }
}

QCoro::Task<QString> SelectionTranslation::copySelection(std::stop_token stop)
{
    const QPointer self(this);
    // Emptied first, so that only what arrives in answer to our own keys counts as the selection.
    m_parts.pasteboard.clear();
    co_await m_parts.keystrokes.postCommandKey(CommandKey::copy);
    endIfGone(self);
    m_parts.trace.mark(QStringLiteral("Cmd+C posted"));
    co_await m_parts.clock.sleep(copyWait, stop);
    m_parts.trace.mark(QStringLiteral("Cmd+C wait done"), inMilliseconds(copyWait));

    const std::optional<QString> copied = co_await m_parts.pasteboard.string();
    endIfGone(self);
    const QString selection = text::trimmed(copied.value_or(QString()));
    if (selection.isEmpty()) {
        restorePasteboard();
        m_parts.trace.mark(QStringLiteral("selection empty"));
        throw TranslationError(TranslationError::Code::emptyText);
    }
    const QString characters = charactersOf(selection);
    m_parts.trace.setMeta(QStringLiteral("chars"), characters);
    m_parts.trace.mark(QStringLiteral("selection read"), characters + QStringLiteral(" chars"));
    co_return selection;
}

QCoro::Task<bool> SelectionTranslation::focusedElementIsStatic()
{
    const QPointer self(this);
    const std::optional<FocusedElement> element = co_await m_parts.focus.focusedElement();
    endIfGone(self);
    const bool staticElement = isStatic(element);
    m_parts.trace.mark(QStringLiteral("editable detect"),
                       staticElement ? QStringLiteral("static") : QStringLiteral("editable"));
    co_return staticElement;
}

QCoro::Task<QString> SelectionTranslation::translate(QString text, LanguagePair pair,
                                                     std::stop_token stop)
{
    const QPointer self(this);
    m_parts.trace.mark(QStringLiteral("API begin"));
    QString translation;
    try {
        translation = co_await m_parts.translator.translateText(text, pair, stop);
    } catch (...) {
        endIfGone(self);
        abandon(std::current_exception());
        throw;
    }
    endIfGone(self);
    m_parts.trace.mark(QStringLiteral("API end"),
                       charactersOf(translation) + QStringLiteral(" chars"));
    co_return translation;
}

QCoro::Task<bool> SelectionTranslation::paste(QString translation, std::stop_token stop)
{
    const QPointer self(this);
    try {
        m_parts.pasteboard.clear();
        m_parts.pasteboard.setString(translation);
        co_await m_parts.clock.sleep(prePasteWait, stop);
        m_parts.trace.mark(QStringLiteral("pre-paste wait done"), inMilliseconds(prePasteWait));
        const PostResult posted = co_await m_parts.keystrokes.postCommandKey(CommandKey::paste);
        endIfGone(self);
        if (posted == PostResult::targetGone) {
            m_parts.trace.mark(QStringLiteral("paste target gone"));
            co_return false;
        }
        m_parts.trace.mark(QStringLiteral("Cmd+V posted"));
        co_await m_parts.clock.sleep(postPasteWait, stop);
        m_parts.trace.mark(QStringLiteral("post-paste wait done"), inMilliseconds(postPasteWait));
    } catch (...) {
        endIfGone(self);
        abandon(std::current_exception());
        throw;
    }
    co_return true;
}

void SelectionTranslation::abandon(const std::exception_ptr& error)
{
    restorePasteboard();
    m_parts.trace.mark(QStringLiteral("error"), describe(error));
}

void SelectionTranslation::markOutcome(const TranslateSelectionResult& result)
{
    m_parts.trace.setMeta(QStringLiteral("replaced"), trueOrFalse(result.replaced));
    m_parts.trace.setMeta(QStringLiteral("showWindow"), trueOrFalse(result.showWindow));
}

} // namespace zelvane
