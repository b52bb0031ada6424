#include "pipeline/TranslationDispatch.h"

#include "foundation/Text.h"
#include "pipeline/Endpoints.h"
#include "pipeline/Prompts.h"
#include "pipeline/TranslationError.h"

#include <algorithm>

namespace zelvane {

namespace {

using Matches = std::vector<std::optional<GlossaryMatch>>;

bool goesToEngine(const QString& line, const std::optional<GlossaryMatch>& match)
{
    const bool replaced = match && match->replacement;
    return !replaced && !text::trimmedWithinLine(line).isEmpty();
}

/// The request for the lines from `first` up to `end`, with the hints of these lines only.
TranslationRequest runOf(const TranslationRequest& whole, const QStringList& lines,
                         const Matches& matches, qsizetype first, qsizetype end)
{
    TranslationRequest run = whole;
    run.text = lines.sliced(first, end - first).join(u'\n');
    run.glossaryHints.clear();
    for (qsizetype i = first; i < end; ++i) {
        if (const auto& match = matches[size_t(i)]) {
            run.glossaryHints.insert(match->term, match->hints);
        }
    }
    return run;
}

} // namespace

TranslationDispatch::TranslationDispatch(const AppSettings& settings, const UserDefaults& defaults,
                                         TranslationTrace& trace, Engines engines)
    : m_settings(settings)
    , m_defaults(defaults)
    , m_trace(trace)
    , m_engines(std::move(engines))
{
}

QCoro::Task<QString> TranslationDispatch::translateText(QString text, LanguagePair pair,
                                                        std::stop_token stop)
{
    const QString promptTemplate = effectivePrompt(m_settings.promptTemplate(), pair);
    const QString prompt = renderPrompt(promptTemplate, pair.source, pair.target);
    const TranslationRequest request =
        makeTranslationRequest(text, pair.source, pair.target, prompt);
    co_return co_await runRequest(request, stop);
}

TranslationRequest TranslationDispatch::makeTranslationRequest(const QString& text,
                                                               const QString& sourceLanguage,
                                                               const QString& targetLanguage,
                                                               const QString& renderedPrompt) const
{
    TranslationRequest request;
    request.text = text::trimmed(text);
    if (request.text.isEmpty()) {
        throw TranslationError(TranslationError::Code::emptyText);
    }
    request.provider = m_settings.provider();
    if (needsKey(request.provider)) {
        request.apiKey = text::trimmed(m_settings.apiKey());
        if (request.apiKey.isEmpty()) {
            throw TranslationError(TranslationError::Code::missingAPIKey);
        }
    }
    request.model = resolvedModel(request.provider);
    request.systemPrompt = renderedPrompt;
    request.sourceLanguage = sourceLanguage;
    request.targetLanguage = targetLanguage;
    return request;
}

QString TranslationDispatch::resolvedModel(AIProvider provider) const
{
    QString model;
    if (provider != AIProvider::zelvane) {
        model = m_settings.model();
    } else if (m_engines.hosted) {
        model = m_engines.hosted->currentConfig().model;
    }
    return model.isEmpty() ? defaultModel(provider) : model;
}

QCoro::Task<QString> TranslationDispatch::runRequest(TranslationRequest request,
                                                     std::stop_token stop)
{
    m_trace.setMeta(QStringLiteral("provider"), rawValue(request.provider));
    m_trace.setMeta(QStringLiteral("model"), request.model);
    m_trace.setMeta(QStringLiteral("source"), request.sourceLanguage);
    m_trace.setMeta(QStringLiteral("target"), request.targetLanguage);
    m_trace.mark(QStringLiteral("request ready"),
                 rawValue(request.provider) + QStringLiteral(" / ") + request.model);

    if (request.provider == AIProvider::zelvane) {
        co_return co_await runHosted(request, stop);
    }
    if (isOffline(request.provider)) {
        co_return co_await translateWithGlossary(request, stop);
    }
    co_return co_await dispatchRequest(request, stop);
}

QCoro::Task<QString> TranslationDispatch::runHosted(TranslationRequest request,
                                                    std::stop_token stop)
{
    const QString workerUrl = m_settings.cloudflareWorkerURL();
    const ZelvaneClientConfig config = co_await hostedEngine().loadConfig(workerUrl, stop);
    if (!config.model.isEmpty()) {
        request.model = config.model;
    }
    request.apiKey.clear();
    m_trace.setMeta(QStringLiteral("model"), request.model);
    m_trace.mark(QStringLiteral("cloudflare config"),
                 QStringLiteral("v%1 · %2 · proxy").arg(config.version).arg(request.model));
    co_return co_await dispatchRequest(request, stop);
}

QCoro::Task<QString> TranslationDispatch::translateWithGlossary(TranslationRequest request,
                                                                std::stop_token stop)
{
    const QStringList lines = request.text.split(u'\n');
    Matches matches(size_t(lines.size()));
    if (m_engines.glossary) {
        matches = co_await m_engines.glossary->matches(lines, request.sourceLanguage,
                                                       request.targetLanguage, stop);
        matches.resize(size_t(lines.size())); // whatever the dictionaries answer
    }
    const auto hits = std::ranges::count_if(matches, [](const auto& m) { return m.has_value(); });
    if (hits == 0) {
        m_trace.mark(QStringLiteral("glossary"), QStringLiteral("no matches"));
        co_return co_await dispatchRequest(request, stop);
    }
    m_trace.mark(QStringLiteral("glossary"), QStringLiteral("%1 hits").arg(hits));

    QStringList output;
    for (qsizetype i = 0; i < lines.size();) {
        const auto& match = matches[size_t(i)];
        if (!goesToEngine(lines[i], match)) {
            const bool replaced = match && match->replacement;
            output += replaced ? match->prefix + *match->replacement : lines[i];
            ++i;
            continue;
        }
        qsizetype end = i + 1;
        while (end < lines.size() && goesToEngine(lines[end], matches[size_t(end)])) {
            ++end;
        }
        const TranslationRequest run = runOf(request, lines, matches, i, end);
        output += co_await dispatchRequest(run, stop);
        i = end;
    }
    co_return output.join(u'\n');
}

QCoro::Task<QString> TranslationDispatch::dispatchRequest(TranslationRequest request,
                                                          std::stop_token stop)
{
    switch (request.provider) {
    case AIProvider::zelvane: {
        const QString workerUrl = m_settings.cloudflareWorkerURL();
        co_return co_await hostedEngine().translateHosted(request, workerUrl, stop);
    }
    case AIProvider::chatGPT:
    case AIProvider::mistral:
    case AIProvider::grok:
        co_return co_await runChat(request, QStringLiteral("/v1/chat/completions"), stop);
    case AIProvider::deepSeek:
        co_return co_await runChat(request, QStringLiteral("/chat/completions"), stop);
    case AIProvider::gemini:
    case AIProvider::claude:
    case AIProvider::deepL:
    case AIProvider::smartOffline:
    case AIProvider::balancedOffline:
    case AIProvider::fastOffline:
        co_return co_await ownEngine(request.provider).translate(request, stop);
    }
    Q_UNREACHABLE();
}

QCoro::Task<QString> TranslationDispatch::runChat(TranslationRequest request, QString path,
                                                  std::stop_token stop)
{
    if (!m_engines.chat) {
        throw EngineUnavailableError(displayName(request.provider));
    }
    const QString url = endpointUrl(request.provider, path, m_defaults);
    co_return co_await m_engines.chat->chatCompletion(request.text, request.systemPrompt,
                                                      request.apiKey, request.model, url, stop);
}

TranslationEngine& TranslationDispatch::ownEngine(AIProvider provider) const
{
    if (TranslationEngine* engine = m_engines.own.value(provider)) {
        return *engine;
    }
    if (isOffline(provider)) {
        throw TranslationError(TranslationError::Code::offlineEngineMissing);
    }
    throw EngineUnavailableError(displayName(provider));
}

HostedEngine& TranslationDispatch::hostedEngine() const
{
    if (!m_engines.hosted) {
        throw EngineUnavailableError(displayName(AIProvider::zelvane));
    }
    return *m_engines.hosted;
}

} // namespace zelvane
