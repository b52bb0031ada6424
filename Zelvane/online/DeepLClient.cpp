#include "online/DeepLClient.h"

#include "foundation/Text.h"
#include "http/ApiExchange.h"
#include "http/JsonError.h"
#include "online/JsonShape.h"
#include "settings/LanguageNames.h"

#include <algorithm>
#include <array>

namespace zelvane {

namespace {

struct LanguageCode
{
    const char16_t* name; ///< in lower case
    const char16_t* code;
};

// clang-format off
constexpr std::array languageCodes{
    LanguageCode{u"english", u"EN-US"}, LanguageCode{u"english (us)", u"EN-US"},
    LanguageCode{u"american english", u"EN-US"},
    LanguageCode{u"english (uk)", u"EN-GB"}, LanguageCode{u"british english", u"EN-GB"},
    LanguageCode{u"russian", u"RU"}, LanguageCode{u"polish", u"PL"},
    LanguageCode{u"ukrainian", u"UK"},
    LanguageCode{u"german", u"DE"}, LanguageCode{u"standard german", u"DE"},
    LanguageCode{u"french", u"FR"}, LanguageCode{u"spanish", u"ES"},
    LanguageCode{u"italian", u"IT"}, LanguageCode{u"portuguese", u"PT"},
    LanguageCode{u"dutch", u"NL"}, LanguageCode{u"swedish", u"SV"}, LanguageCode{u"danish", u"DA"},
    LanguageCode{u"finnish", u"FI"}, LanguageCode{u"norwegian", u"NB"},
    LanguageCode{u"czech", u"CS"}, LanguageCode{u"slovak", u"SK"},
    LanguageCode{u"slovenian", u"SL"}, LanguageCode{u"bulgarian", u"BG"},
    LanguageCode{u"romanian", u"RO"}, LanguageCode{u"hungarian", u"HU"},
    LanguageCode{u"greek", u"EL"}, LanguageCode{u"estonian", u"ET"},
    LanguageCode{u"latvian", u"LV"}, LanguageCode{u"lithuanian", u"LT"},
    LanguageCode{u"turkish", u"TR"},
    LanguageCode{u"chinese", u"ZH"}, LanguageCode{u"chinese (simplified)", u"ZH"},
    LanguageCode{u"simplified chinese", u"ZH"},
    LanguageCode{u"japanese", u"JA"}, LanguageCode{u"korean", u"KO"},
    LanguageCode{u"indonesian", u"ID"}, LanguageCode{u"arabic", u"AR"},
};
// clang-format on

/// The code of a language to translate into, which must say whose English is meant.
QString targetCode(const QString& language)
{
    const QString code = deepLCode(language);
    return code == u"EN" ? QStringLiteral("EN-US") : code;
}

} // namespace

QString deepLCode(const QString& language)
{
    if (isAutoSource(language)) {
        return {};
    }
    const QString name = text::lowerCased(language);
    const auto known = std::ranges::find_if(
        languageCodes, [&](const LanguageCode& row) { return name == QStringView(row.name); });
    return known == languageCodes.end() ? shortCode(language) : QString::fromUtf16(known->code);
}

DeepLPlan deepLPlan(const QString& apiKey)
{
    return apiKey.endsWith(u":fx") ? DeepLPlan::free : DeepLPlan::paid;
}

QJsonObject deepLRequestBody(const QString& text, const QString& sourceLanguage,
                             const QString& targetLanguage)
{
    QJsonObject body{{QStringLiteral("text"), QJsonArray{text::wellFormed(text)}},
                     {QStringLiteral("target_lang"), text::wellFormed(targetCode(targetLanguage))}};
    const QString source = deepLCode(sourceLanguage);
    if (!source.isEmpty()) {
        body.insert(QStringLiteral("source_lang"), text::wellFormed(source));
    }
    return body;
}

QString deepLResponseText(const QByteArray& body)
{
    const QJsonObject answer = parsedJson(body).object();
    const QJsonObject translation = firstObjectIn(answer.value(u"translations"));
    return text::trimmed(stringIn(translation.value(u"text")));
}

DeepLClient::DeepLClient(HttpTransport& transport, const UserDefaults& defaults)
    : m_transport(transport)
    , m_defaults(defaults)
{
}

QCoro::Task<QString> DeepLClient::translateWithDeepL(QString text, QString sourceLanguage,
                                                     QString targetLanguage, QString apiKey,
                                                     std::stop_token stop)
{
    const QUrl url = checkedUrl(
        deepLEndpointUrl(deepLPlan(apiKey), QStringLiteral("/v2/translate"), m_defaults));
    const HttpRequest request =
        jsonPost(url, {{"Authorization", "DeepL-Auth-Key " + apiKey.toUtf8()}},
                 deepLRequestBody(text, sourceLanguage, targetLanguage));
    const QByteArray answer = co_await answerBody(m_transport, request, apiKey, stop);
    co_return deepLResponseText(answer);
}

QCoro::Task<QString> DeepLClient::translate(TranslationRequest request, std::stop_token stop)
{
    return translateWithDeepL(request.text, request.sourceLanguage, request.targetLanguage,
                              request.apiKey, stop);
}

} // namespace zelvane
