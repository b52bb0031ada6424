#include "ui/manual/ManualTranslationModel.h"

#include "foundation/DescribedError.h"
#include "foundation/Text.h"
#include "settings/LanguageNames.h"
#include "settings/Localization.h"

#include <utility>

namespace zelvane {

namespace {

QString characters(const QString& text)
{
    return QString::number(text::characterCount(text));
}

QString effectiveModel(const AppSettings& settings)
{
    const AIProvider provider = settings.provider();
    return provider != AIProvider::zelvane && !settings.model().isEmpty() ? settings.model()
                                                                          : defaultModel(provider);
}

} // namespace

QSize manualWindowContentSize(TranslationWindowSize size)
{
    switch (size) {
    case TranslationWindowSize::extraSmall:
        return {430, 390};
    case TranslationWindowSize::small:
        return {520, 470};
    case TranslationWindowSize::medium:
        return {640, 560};
    case TranslationWindowSize::large:
        return {780, 680};
    case TranslationWindowSize::extraLarge:
        return {940, 800};
    }
    Q_UNREACHABLE();
}

QString defaultManualTarget(const QList<LanguagePair>& enabledPairs)
{
    for (const LanguagePair& pair : enabledPairs) {
        if (!isAutoSource(pair.target)) {
            return pair.target;
        }
    }
    return QStringLiteral("English (US)");
}

ManualTranslationModel::ManualTranslationModel(const AppSettings& settings, TranslationTrace& trace,
                                               Services services)
    : m_settings(settings)
    , m_trace(trace)
    , m_services(std::move(services))
    , m_sourceLanguage(offeredLanguages().first())
    , m_targetLanguage(defaultManualTarget(settings.enabledPairs()))
{
}

ManualTranslationModel::~ManualTranslationModel()
{
    if (m_isTranslating) {
        m_trace.mark(QStringLiteral("cancelled"));
    }
}

void ManualTranslationModel::translate(const QString& text)
{
    if (m_isTranslating) {
        return;
    }
    m_copied = false;
    m_errorText = QString();
    m_translatedText = QString();
    m_isTranslating = true;
    beginTrace(text);
    m_translation.start([this, text](std::stop_token stop) {
        return run(text, sourceLanguage(), targetLanguage(), std::move(stop));
    });
}

QCoro::Task<void> ManualTranslationModel::run(QString text, QString source, QString target,
                                              std::stop_token stop)
{
    QString translation;
    std::exception_ptr failure;
    bool cancelled = false;
    try {
        translation = co_await m_services.translate(std::move(text), std::move(source),
                                                    std::move(target), stop);
    } catch (const CancellationError&) {
        cancelled = true;
    } catch (...) {
        failure = std::current_exception();
    }
    if (stop.stop_requested()) {
        co_return; // the window has closed
    }
    if (cancelled) {
        m_trace.mark(QStringLiteral("cancelled"));
    } else if (failure) {
        m_errorText = describe(failure);
        m_trace.mark(QStringLiteral("error"), errorText());
    } else {
        m_translatedText = translation;
        m_trace.mark(QStringLiteral("API end"), characters(translation) + QStringLiteral(" chars"));
    }
    m_isTranslating = false;
}

void ManualTranslationModel::beginTrace(const QString& text)
{
    m_trace.begin({
        {QStringLiteral("provider"), rawValue(m_settings.provider())},
        {QStringLiteral("model"), effectiveModel(m_settings)},
        {QStringLiteral("source"), sourceLanguage()},
        {QStringLiteral("target"), targetLanguage()},
        {QStringLiteral("chars"), characters(text)},
        {QStringLiteral("mode"), QStringLiteral("manual")},
    });
    m_trace.mark(QStringLiteral("API begin"));
}

void ManualTranslationModel::copy()
{
    if (canCopy()) {
        m_services.writeToClipboard(translatedText());
        m_copied = true;
    }
}

QString ManualTranslationModel::statusText() const
{
    if (m_isTranslating) {
        return localizedText(QStringLiteral("Translating…"));
    }
    return localizedText(m_copied ? QStringLiteral("Copied") : QStringLiteral("Esc to close"));
}

} // namespace zelvane
