#include "desktop/ServicesProvider.h"

#include "foundation/Text.h"
#include "pipeline/Prompts.h"
#include "pipeline/TranslationError.h"

#include <utility>

namespace zelvane {

namespace {

constexpr std::chrono::milliseconds longestWait{60'000};

QString timeOutText()
{
    return QStringLiteral("Translation timed out after 60 seconds.");
}

QString charactersOf(const QString& text)
{
    return QString::number(text::characterCount(text));
}

/// Tells the one who waits that nothing more is to come, be it done or never begun.
class Signal
{
public:
    explicit Signal(std::shared_ptr<std::binary_semaphore> end)
        : m_end(std::move(end))
    {
    }
    ~Signal() { m_end->release(); }
    Q_DISABLE_COPY_MOVE(Signal)

private:
    std::shared_ptr<std::binary_semaphore> m_end;
};

} // namespace

struct ServicesProvider::Boxes
{
    std::optional<QString> translation;
    std::exception_ptr failure;
    std::shared_ptr<std::binary_semaphore> end = std::make_shared<std::binary_semaphore>(0);
};

ServicesProvider::ServicesProvider(const Parts& parts, Wait wait)
    : m_parts(parts)
    , m_wait(std::move(wait))
{
}

ServicesProvider::~ServicesProvider()
{
    close();
}

void ServicesProvider::close()
{
    m_mainThread.close();
    m_tasks.cancelAll();
}

bool ServicesProvider::waitInRealTime(std::binary_semaphore& end, std::chrono::milliseconds limit)
{
    return end.try_acquire_for(limit);
}

ServicesProvider::Failure ServicesProvider::translatePair1(ServicePasteboard& pasteboard)
{
    return runServiceTranslation(pasteboard, 0, Form::plain);
}

ServicesProvider::Failure ServicesProvider::translatePair2(ServicePasteboard& pasteboard)
{
    return runServiceTranslation(pasteboard, 1, Form::plain);
}

ServicesProvider::Failure ServicesProvider::translatePair3(ServicePasteboard& pasteboard)
{
    return runServiceTranslation(pasteboard, 2, Form::plain);
}

ServicesProvider::Failure ServicesProvider::translatePair1UI(ServicePasteboard& pasteboard)
{
    return runServiceTranslation(pasteboard, 0, Form::withPopup);
}

ServicesProvider::Failure ServicesProvider::translatePair2UI(ServicePasteboard& pasteboard)
{
    return runServiceTranslation(pasteboard, 1, Form::withPopup);
}

ServicesProvider::Failure ServicesProvider::translatePair3UI(ServicePasteboard& pasteboard)
{
    return runServiceTranslation(pasteboard, 2, Form::withPopup);
}

template <typename Call>
auto ServicesProvider::onMainThread(Call call) -> std::expected<std::invoke_result_t<Call>, QString>
{
    if (m_mainThread.isCurrent()) {
        return call();
    }
    // Shared, since a call that comes too late finds nobody waiting any more.
    const auto result = std::make_shared<std::optional<std::invoke_result_t<Call>>>();
    const auto end = std::make_shared<std::binary_semaphore>(0);
    m_mainThread.post([call = std::move(call), result, signal = std::make_shared<Signal>(end)] {
        *result = call();
    });
    if (!m_wait(*end, longestWait)) {
        return std::unexpected(timeOutText());
    }
    if (!*result) {
        return std::unexpected(CancellationError().description());
    }
    return std::move(**result);
}

ServicesProvider::Failure ServicesProvider::runServiceTranslation(ServicePasteboard& pasteboard,
                                                                  int slot, Form form)
{
    const QString text = pasteboard.string().value_or(QString());
    const auto prepared =
        onMainThread([this, text, slot] { return prepareServiceRequest(text, slot); });
    if (!prepared) {
        return prepared.error();
    }
    if (!*prepared) {
        return prepared->error();
    }
    const auto boxes = std::make_shared<Boxes>();
    const auto started = onMainThread([this, request = **prepared, text, boxes] {
        traceServiceStart(request, text);
        m_tasks.start(
            [&](std::stop_token stop) { return translate(request, boxes, std::move(stop)); });
        return true;
    });
    if (!started) {
        return started.error();
    }
    if (!m_wait(*boxes->end, longestWait)) {
        return timeOutText();
    }
    if (boxes->failure) {
        return describe(boxes->failure);
    }
    if (!boxes->translation) {
        return TranslationError(TranslationError::Code::badResponse).description();
    }
    pasteboard.clearContents();
    pasteboard.setString(*boxes->translation);
    if (form == Form::withPopup) {
        m_mainThread.post([this, text, translation = *boxes->translation] {
            presentServiceResult(text, translation);
        });
    }
    return std::nullopt;
}

ServicesProvider::Prepared ServicesProvider::prepareServiceRequest(const QString& text,
                                                                   int slot) const
{
    try {
        const QList<LanguagePair> pairs = m_parts.settings.pairs();
        if (slot < 0 || slot >= pairs.size()) {
            throw ServiceError(
                QStringLiteral("Language pair slot %1 is not configured.").arg(slot + 1));
        }
        const LanguagePair& pair = pairs[slot];
        if (!pair.enabled) {
            throw ServiceError(QStringLiteral("Language pair ") + pair.source +
                               QStringLiteral(" → ") + pair.target +
                               QStringLiteral(" is disabled in Settings."));
        }
        const QString promptTemplate = effectivePrompt(m_parts.settings.promptTemplate(), pair);
        const QString prompt = renderPrompt(promptTemplate, pair.source, pair.target);
        return m_parts.dispatch.makeTranslationRequest(text, pair.source, pair.target, prompt);
    } catch (...) {
        return std::unexpected(describe(std::current_exception()));
    }
}

void ServicesProvider::traceServiceStart(const TranslationRequest& request, const QString& text)
{
    m_parts.trace.begin({
        {QStringLiteral("provider"), rawValue(request.provider)},
        {QStringLiteral("model"), request.model},
        {QStringLiteral("source"), request.sourceLanguage},
        {QStringLiteral("target"), request.targetLanguage},
        {QStringLiteral("chars"), charactersOf(text)},
        {QStringLiteral("mode"), QStringLiteral("services")},
    });
    m_parts.trace.mark(QStringLiteral("API begin"));
}

QCoro::Task<void> ServicesProvider::translate(TranslationRequest request,
                                              std::shared_ptr<Boxes> boxes, std::stop_token stop)
{
    const Signal signal(boxes->end);
    try {
        const QString translation = co_await m_parts.dispatch.runRequest(request, stop);
        boxes->translation = translation;
        if (!stop.stop_requested()) {
            m_parts.trace.mark(QStringLiteral("API end"),
                               charactersOf(translation) + QStringLiteral(" chars"));
        }
    } catch (...) {
        boxes->failure = std::current_exception();
        if (!stop.stop_requested()) {
            m_parts.trace.mark(QStringLiteral("error"), describe(boxes->failure));
        }
    }
}

void ServicesProvider::presentServiceResult(const QString& text, const QString& translation)
{
    m_parts.windows.presentTranslationResult(text, translation, m_parts.trace.report());
}

} // namespace zelvane
