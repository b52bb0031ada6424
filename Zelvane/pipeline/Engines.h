#pragma once

#include "pipeline/TranslationRequest.h"

#include <QCoroTask>

#include <optional>
#include <stop_token>
#include <vector>

namespace zelvane {

/// What the hosted service currently prescribes.
struct ZelvaneClientConfig
{
    QString model;
    /// 0 for what is built in.
    qint64 version = 0;
    /// The name of the model's provider.
    QString provider;

    friend bool operator==(const ZelvaneClientConfig&, const ZelvaneClientConfig&) = default;
};

/// The hosted service, as the dispatch needs it. Main thread.
class HostedEngine
{
public:
    HostedEngine() = default;
    virtual ~HostedEngine() = default;
    Q_DISABLE_COPY_MOVE(HostedEngine)

    /// The configuration at hand, without any wait.
    [[nodiscard]] virtual ZelvaneClientConfig currentConfig() const = 0;
    /// The configuration, fetched first if there is none. Throws what the client fails with.
    /// `workerUrl` is the setting, which may be empty.
    [[nodiscard]] virtual QCoro::Task<ZelvaneClientConfig> loadConfig(QString workerUrl,
                                                                      std::stop_token stop) = 0;
    [[nodiscard]] virtual QCoro::Task<QString>
    translateHosted(TranslationRequest request, QString workerUrl, std::stop_token stop) = 0;
};

/// An engine that takes a finished request: one online protocol, or the offline models.
class TranslationEngine
{
public:
    TranslationEngine() = default;
    virtual ~TranslationEngine() = default;
    Q_DISABLE_COPY_MOVE(TranslationEngine)

    [[nodiscard]] virtual QCoro::Task<QString> translate(TranslationRequest request,
                                                         std::stop_token stop) = 0;
};

/// What a dictionary knows of one line.
struct GlossaryMatch
{
    /// What stands before the term on its line and stays.
    QString prefix;
    QString term;
    /// The whole line's translation, if the dictionary has it.
    std::optional<QString> replacement;
    QStringList hints;

    friend bool operator==(const GlossaryMatch&, const GlossaryMatch&) = default;
};

/// Dictionaries by language direction.
class GlossaryLookup
{
public:
    GlossaryLookup() = default;
    virtual ~GlossaryLookup() = default;
    Q_DISABLE_COPY_MOVE(GlossaryLookup)

    /// One optional match for each line, in order. The languages are those of the request.
    [[nodiscard]] virtual QCoro::Task<std::vector<std::optional<GlossaryMatch>>>
    matches(QStringList lines, QString source, QString target, std::stop_token stop) = 0;
};

} // namespace zelvane
