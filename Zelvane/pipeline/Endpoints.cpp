#include "pipeline/Endpoints.h"

#include "foundation/Text.h"
#include "pipeline/Loopback.h"

#include <QUrl>

namespace zelvane {

namespace {

/// The providers' public hosts. Engines whose address is no constant have none here.
QString publicBase(AIProvider provider)
{
    switch (provider) {
    case AIProvider::zelvane:
        return QStringLiteral("https://api.zelvane.org");
    case AIProvider::chatGPT:
        return QStringLiteral("https://api.openai.com");
    case AIProvider::gemini:
        return QStringLiteral("https://generativelanguage.googleapis.com");
    case AIProvider::claude:
        return QStringLiteral("https://api.anthropic.com");
    case AIProvider::deepSeek:
        return QStringLiteral("https://api.deepseek.com");
    case AIProvider::mistral:
        return QStringLiteral("https://api.mistral.ai");
    case AIProvider::grok:
        return QStringLiteral("https://api.x.ai");
    case AIProvider::deepL:
    case AIProvider::smartOffline:
    case AIProvider::balancedOffline:
    case AIProvider::fastOffline:
        return {};
    }
    Q_UNREACHABLE();
}

QString publicBase(DeepLPlan plan)
{
    return plan == DeepLPlan::free ? QStringLiteral("https://api-free.deepl.com")
                                   : QStringLiteral("https://api.deepl.com");
}

/// The base that a user has set, without a slash at its end. Empty if it can't be used.
QString checkedBase(const QString& text)
{
    const QUrl url(text, QUrl::StrictMode);
    const bool isHttps = url.scheme() == QStringLiteral("https");
    const bool isAllowed = isHttps || (url.scheme() == QStringLiteral("http") && isLoopback(url));
    if (!url.isValid() || url.host().isEmpty() || !isAllowed || !url.userInfo().isEmpty() ||
        url.hasQuery() || url.hasFragment()) {
        return {};
    }
    QString base = url.toString(QUrl::FullyEncoded);
    while (base.endsWith(u'/')) {
        base.chop(1);
    }
    return base;
}

/// `name` is the end of the default's key.
QString urlAt(const QString& standardBase, const QString& name, const QString& path,
              const UserDefaults& defaults)
{
    const QString key = QStringLiteral("zv.endpoint.") + name;
    const QString own = text::trimmed(defaults.string(key).value_or(QString()));
    const QString base = own.isEmpty() ? standardBase : checkedBase(own);
    return base.isEmpty() ? QString() : base + path;
}

QString withoutOuterSlashes(QStringView text)
{
    while (text.startsWith(u'/')) {
        text = text.sliced(1);
    }
    while (text.endsWith(u'/')) {
        text.chop(1);
    }
    return text.toString();
}

} // namespace

QString endpointUrl(AIProvider provider, const QString& path, const UserDefaults& defaults)
{
    return urlAt(publicBase(provider), rawValue(provider), path, defaults);
}

QString deepLEndpointUrl(DeepLPlan plan, const QString& path, const UserDefaults& defaults)
{
    return urlAt(publicBase(plan), rawValue(AIProvider::deepL), path, defaults);
}

QString hostedServiceUrl(const QString& workerUrl, const QString& path,
                         const UserDefaults& defaults)
{
    const QString own = withoutOuterSlashes(text::trimmed(workerUrl));
    if (own.isEmpty()) {
        return endpointUrl(AIProvider::zelvane, path, defaults);
    }
    const QString base = checkedBase(own);
    return base.isEmpty() ? QString() : base + path;
}

QString modelFileUrl(const QString& path, const UserDefaults& defaults)
{
    return urlAt(QStringLiteral("https://huggingface.co"), QStringLiteral("modelFiles"), path,
                 defaults);
}

QString dictionariesUrl(const QString& path, const UserDefaults& defaults)
{
    return urlAt(QStringLiteral("https://download.wikdict.com"), QStringLiteral("dictionaries"),
                 path, defaults);
}

} // namespace zelvane
