#pragma once

#include "online/ChatCompletionsClient.h"
#include "pipeline/Engines.h"
#include "pipeline/TextTranslator.h"
#include "pipeline/TranslationRequest.h"
#include "pipeline/TranslationTrace.h"
#include "settings/AppSettings.h"

#include <QMap>

namespace zelvane {

/// The one road from a text and a language choice to a translation.
///
/// Reads the settings on the main thread, where every call is made and ends. Keeps nothing between
/// translations. No engine stands in for another: a failure ends the translation.
class TranslationDispatch final : public TextTranslator
{
public:
    /// The engines at hand. A provider whose engine is missing fails with a text that says so.
    struct Engines
    {
        ChatCompletionsClient* chat = nullptr;
        HostedEngine* hosted = nullptr;
        /// The online engines with a protocol of their own, and the offline ones.
        QMap<AIProvider, TranslationEngine*> own;
        /// Asked for the offline engines only.
        GlossaryLookup* glossary = nullptr;
    };

    /// All must outlive this object and its calls.
    TranslationDispatch(const AppSettings& settings, const UserDefaults& defaults,
                        TranslationTrace& trace, Engines engines);

    [[nodiscard]] QCoro::Task<QString> translateText(QString text, LanguagePair pair,
                                                     std::stop_token stop) override;

    /// A request with the settings' provider, key and model. `renderedPrompt` goes in as it is.
    /// Throws `TranslationError`: `emptyText`, then `missingAPIKey`.
    [[nodiscard]] TranslationRequest makeTranslationRequest(const QString& text,
                                                            const QString& sourceLanguage,
                                                            const QString& targetLanguage,
                                                            const QString& renderedPrompt) const;

    /// The engine's answer, unchanged.
    [[nodiscard]] QCoro::Task<QString> runRequest(TranslationRequest request, std::stop_token stop);

private:
    [[nodiscard]] QCoro::Task<QString> runHosted(TranslationRequest request, std::stop_token stop);
    [[nodiscard]] QCoro::Task<QString> translateWithGlossary(TranslationRequest request,
                                                             std::stop_token stop);
    [[nodiscard]] QCoro::Task<QString> dispatchRequest(TranslationRequest request,
                                                       std::stop_token stop);
    [[nodiscard]] QCoro::Task<QString> runChat(TranslationRequest request, QString path,
                                               std::stop_token stop);
    [[nodiscard]] TranslationEngine& ownEngine(AIProvider provider) const;
    [[nodiscard]] HostedEngine& hostedEngine() const;
    [[nodiscard]] QString resolvedModel(AIProvider provider) const;

    const AppSettings& m_settings;
    const UserDefaults& m_defaults;
    TranslationTrace& m_trace;
    Engines m_engines;
};

} // namespace zelvane
