#pragma once

#include "Services/CompletionSource.h"
#include "pipeline/Engines.h"

namespace zelvane {

/// Whether a string of a document is text for readers rather than an identifier, a code or a single
/// word in ASCII.
[[nodiscard]] bool isTranslatableLeaf(const QString& value);

/// Translates whole texts with a local model, which is reliable with a few short lines only: cuts
/// them up, keeps four requests in flight, asks again and for less at once after an answer that is
/// of no use, and puts the answers in place line by line. Of a JSON document only the strings are
/// translated. Main thread.
class OfflineTranslator final : public TranslationEngine
{
public:
    /// `source` must outlive this object, and this object every call.
    explicit OfflineTranslator(CompletionSource& source);

    /// The whole translation, never a part of it. Throws `TranslationError`, what `source` fails
    /// with, or `CancellationError`. Ends when no request is in flight any more.
    [[nodiscard]] QCoro::Task<QString> translateOffline(QString text, QString sourceLanguage,
                                                        QString targetLanguage,
                                                        QString systemPrompt,
                                                        QMap<QString, QStringList> glossaryHints,
                                                        std::stop_token stop);

    [[nodiscard]] QCoro::Task<QString> translate(TranslationRequest request,
                                                 std::stop_token stop) override;

private:
    [[nodiscard]] QCoro::Task<void> requireInstallation(std::stop_token stop);
    [[nodiscard]] QCoro::Task<QString> translatePlain(QString text, ModelJob job,
                                                      std::stop_token stop);
    [[nodiscard]] QCoro::Task<std::optional<QString>>
    translateStructured(QString text, ModelJob job, std::stop_token stop);
    [[nodiscard]] QCoro::Task<QString> translateLeaf(QString value, ModelJob job,
                                                     std::stop_token stop);
    /// `job` but for its lines. `depth` counts the halvings that led to this chunk.
    [[nodiscard]] QCoro::Task<QStringList> translateLines(QStringList chunk, ModelJob job,
                                                          int depth, std::stop_token stop);

    CompletionSource& m_source;
};

} // namespace zelvane
