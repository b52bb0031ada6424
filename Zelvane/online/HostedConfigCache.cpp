#include "online/HostedConfigCache.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace zelvane {

namespace {

const QString configKey = QStringLiteral("zv.cloudflare.config.prod");

QByteArray encode(const ZelvaneClientConfig& config)
{
    const QJsonObject object{{QStringLiteral("version"), config.version},
                             {QStringLiteral("model"), config.model},
                             {QStringLiteral("provider"), config.provider}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<ZelvaneClientConfig> decode(const QByteArray& json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const QJsonValue version = object.value(u"version");
    const QJsonValue model = object.value(u"model");
    const QJsonValue provider = object.value(u"provider");
    if (!version.isDouble() || !model.isString() || !provider.isString()) {
        return std::nullopt;
    }
    return ZelvaneClientConfig{model.toString(), version.toInteger(), provider.toString()};
}

std::optional<ZelvaneClientConfig> stored(const UserDefaults& defaults)
{
    const std::optional<QByteArray> json = defaults.data(configKey);
    return json ? decode(*json) : std::nullopt;
}

} // namespace

ZelvaneClientConfig builtInClientConfig()
{
    return {QStringLiteral("gemini-3.1-flash-lite"), 0, QStringLiteral("gemini")};
}

HostedConfigCache::HostedConfigCache(UserDefaults& defaults)
    : m_defaults(defaults)
{
}

ZelvaneClientConfig HostedConfigCache::current() const
{
    // Not remembered: the built-in record must not pass for one that the service gave.
    return known().value_or(builtInClientConfig());
}

bool HostedConfigCache::store(const ZelvaneClientConfig& config)
{
    const std::lock_guard guard(m_lock);
    m_record = config;
    if (stored(m_defaults) == config) {
        return false;
    }
    m_defaults.setValue(configKey, encode(config));
    return true;
}

std::optional<ZelvaneClientConfig> HostedConfigCache::known() const
{
    const std::lock_guard guard(m_lock);
    if (!m_record) {
        m_record = stored(m_defaults);
    }
    return m_record;
}

} // namespace zelvane
