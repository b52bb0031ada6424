#include "online/DeepLClient.h"

#include "online/EngineFixture.h"
#include "support/FakeHttpTransport.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using ::testing::SizeIs;
using Code = TranslationError::Code;

constexpr char goodAnswer[] =
    R"({"translations":[{"detected_source_language":"EN","text":"Hallo"}]})";

class DeepL : public ProviderFixture
{
protected:
    CallOutcome<QString> translate(const TranslationRequest& request)
    {
        return outcomeOf(client.translate(request, {}));
    }
    CallOutcome<QString> translate() { return translate(requestFor(AIProvider::deepL)); }

    DeepLClient client{transport, defaults};
};

// Languages

struct Named
{
    const char* language;
    const char* code;
};

class DeepLCode : public ::testing::TestWithParam<Named>
{
};

TEST_P(DeepLCode, isThatOfTheLanguage)
{
    EXPECT_EQ(deepLCode(QString::fromUtf8(GetParam().language)),
              QString::fromLatin1(GetParam().code));
}

INSTANTIATE_TEST_SUITE_P(
    Known, DeepLCode,
    ::testing::Values(Named{"english", "EN-US"}, Named{"english (us)", "EN-US"},
                      Named{"american english", "EN-US"}, Named{"english (uk)", "EN-GB"},
                      Named{"british english", "EN-GB"}, Named{"russian", "RU"},
                      Named{"polish", "PL"}, Named{"ukrainian", "UK"}, Named{"german", "DE"},
                      Named{"standard german", "DE"}, Named{"french", "FR"}, Named{"spanish", "ES"},
                      Named{"italian", "IT"}, Named{"portuguese", "PT"}, Named{"dutch", "NL"},
                      Named{"swedish", "SV"}, Named{"danish", "DA"}, Named{"finnish", "FI"},
                      Named{"norwegian", "NB"}, Named{"czech", "CS"}, Named{"slovak", "SK"},
                      Named{"slovenian", "SL"}, Named{"bulgarian", "BG"}, Named{"romanian", "RO"},
                      Named{"hungarian", "HU"}, Named{"greek", "EL"}, Named{"estonian", "ET"},
                      Named{"latvian", "LV"}, Named{"lithuanian", "LT"}, Named{"turkish", "TR"},
                      Named{"chinese", "ZH"}, Named{"chinese (simplified)", "ZH"},
                      Named{"simplified chinese", "ZH"}, Named{"japanese", "JA"},
                      Named{"korean", "KO"}, Named{"indonesian", "ID"}, Named{"arabic", "AR"}));

INSTANTIATE_TEST_SUITE_P(InAnyCase, DeepLCode,
                         ::testing::Values(Named{"English (UK)", "EN-GB"}, Named{"GERMAN", "DE"},
                                           Named{"Norwegian", "NB"},
                                           Named{"Chinese (Simplified)", "ZH"}));

INSTANTIATE_TEST_SUITE_P(Automatic, DeepLCode,
                         ::testing::Values(Named{"Any Language", ""}, Named{"any", ""},
                                           Named{"auto", ""}, Named{"auto-detect", ""},
                                           Named{"autodetect", ""}, Named{"detect", ""},
                                           Named{" AUTO\n", ""}));

INSTANTIATE_TEST_SUITE_P(
    ShortCode, DeepLCode,
    ::testing::Values(Named{"Hindi", "HI"}, Named{"Mandarin", "ZH"}, Named{"Montenegrin", "CNR"},
                      Named{"Modern Standard Arabic", "AR"}, Named{"Chinese (Traditional)", "CH"},
                      Named{"Klingon", "KL"}, Named{" german", "GE"}, Named{"En", "EN"},
                      Named{"x", "X"}, Named{"", "?"}, Named{" \n", "?"}));

struct Languages
{
    const char* source;
    const char* target;
    const char* body;
};

class LanguagesOfARequest : public ::testing::TestWithParam<Languages>
{
};

TEST_P(LanguagesOfARequest, areSentAsCodes)
{
    const QJsonObject body =
        deepLRequestBody(QStringLiteral("Hi"), QString::fromUtf8(GetParam().source),
                         QString::fromUtf8(GetParam().target));
    EXPECT_EQ(QJsonDocument(body).toJson(QJsonDocument::Compact), GetParam().body);
}

INSTANTIATE_TEST_SUITE_P(
    DeepL, LanguagesOfARequest,
    ::testing::Values(
        Languages{"German", "English (UK)",
                  R"({"source_lang":"DE","target_lang":"EN-GB","text":["Hi"]})"},
        Languages{"German", "English",
                  R"({"source_lang":"DE","target_lang":"EN-US","text":["Hi"]})"},
        Languages{"German", "en", R"({"source_lang":"DE","target_lang":"EN-US","text":["Hi"]})"},
        Languages{"en", "German", R"({"source_lang":"EN","target_lang":"DE","text":["Hi"]})"},
        Languages{"Any Language", "German", R"({"target_lang":"DE","text":["Hi"]})"},
        Languages{" Auto ", "German", R"({"target_lang":"DE","text":["Hi"]})"},
        Languages{"English (US)", "German",
                  R"({"source_lang":"EN-US","target_lang":"DE","text":["Hi"]})"},
        Languages{"Norwegian", "Swahili",
                  R"({"source_lang":"NB","target_lang":"SW","text":["Hi"]})"},
        Languages{"English (US)", "Any Language",
                  R"({"source_lang":"EN-US","target_lang":"","text":["Hi"]})"}));

// Requests

TEST_F(DeepL, sendsTextAndLanguagesWithTheKeyInAHeader)
{
    server.enqueue(Answer::json(200, goodAnswer));
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(received().requestLine, "POST /v2/translate HTTP/1.1");
    EXPECT_EQ(received().header("Authorization"), "DeepL-Auth-Key key-1234567890");
    EXPECT_EQ(received().header("Content-Type"), "application/json");
    EXPECT_EQ(received().body, R"({"source_lang":"EN-US","target_lang":"DE","text":["Hello"]})");
}

TEST_F(DeepL, sendsNeitherThePromptNorTheModelNorHints)
{
    server.enqueue(Answer::json(200, goodAnswer));
    TranslationRequest request = requestFor(AIProvider::deepL);
    request.systemPrompt = QStringLiteral("Be brief.");
    request.model = QStringLiteral("gpt-5");
    request.glossaryHints.insert(QStringLiteral("Hello"), {QStringLiteral("Servus")});
    EXPECT_EQ(translate(request).value, QStringLiteral("Hallo"));
    EXPECT_EQ(received().body, R"({"source_lang":"EN-US","target_lang":"DE","text":["Hello"]})");
}

TEST_F(DeepL, sendsAnyTextAsOne)
{
    server.enqueue(Answer::json(200, goodAnswer));
    TranslationRequest request = requestFor(AIProvider::deepL);
    request.text = QStringLiteral("\"a\" \\ \n\n\tü 👨‍👩‍👧") + QChar(0xdc00);
    EXPECT_EQ(translate(request).value, QStringLiteral("Hallo"));
    EXPECT_EQ(received().body, R"({"source_lang":"EN-US","target_lang":"DE",)"
                               R"("text":["\"a\" \\ \n\n\tü 👨‍👩‍👧�"]})");
}

struct KeyAndHost
{
    const char* key;
    const char* url;
};

class HostOfAKey : public ::testing::TestWithParam<KeyAndHost>
{
};

TEST_P(HostOfAKey, isThatOfItsPlan)
{
    FakeHttpTransport transport;
    const OverlayUserDefaults defaults;
    DeepLClient client(transport, defaults);
    transport.answer(200, goodAnswer);
    const auto outcome = outcomeOf(client.translateWithDeepL(
        QStringLiteral("Hello"), QStringLiteral("English"), QStringLiteral("German"),
        QString::fromLatin1(GetParam().key), {}));
    EXPECT_EQ(outcome.value, QStringLiteral("Hallo"));
    ASSERT_THAT(transport.requests(), SizeIs(1));
    EXPECT_EQ(transport.requests().front().url, QUrl(QString::fromLatin1(GetParam().url)));
}

INSTANTIATE_TEST_SUITE_P(
    DeepL, HostOfAKey,
    ::testing::Values(KeyAndHost{"0a1b-2c3d:fx", "https://api-free.deepl.com/v2/translate"},
                      KeyAndHost{":fx", "https://api-free.deepl.com/v2/translate"},
                      KeyAndHost{"0a1b-2c3d", "https://api.deepl.com/v2/translate"},
                      KeyAndHost{"0a1b:fx-2c3d", "https://api.deepl.com/v2/translate"},
                      KeyAndHost{"0a1b-2c3d:FX", "https://api.deepl.com/v2/translate"},
                      KeyAndHost{"0a1b-2c3d:fx ", "https://api.deepl.com/v2/translate"},
                      KeyAndHost{"fx", "https://api.deepl.com/v2/translate"}));

TEST_F(DeepL, anUnusableEndpointIsAnInvalidUrl)
{
    defaults.setValue(QStringLiteral("zv.endpoint.DeepL"), QStringLiteral("ftp://127.0.0.1"));
    EXPECT_EQ(translate().code, Code::invalidURL);
}

// Answers

class NoDeepLAnswer : public ::testing::TestWithParam<BadAnswer>
{
};

TEST_P(NoDeepLAnswer, fails)
{
    expectRefusal(GetParam(), deepLResponseText);
}

const auto nameOfAnswer = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(Anybody, NoDeepLAnswer, ::testing::ValuesIn(nobodysAnswers), nameOfAnswer);

INSTANTIATE_TEST_SUITE_P(
    DeepL, NoDeepLAnswer,
    ::testing::Values(BadAnswer{"noTranslations", R"({"translations":[]})", nullptr},
                      BadAnswer{"translationsNull", R"({"translations":null})", nullptr},
                      BadAnswer{"translationsObject", R"({"translations":{"text":"x"}})", nullptr},
                      BadAnswer{"translationText", R"({"translations":["x"]})", nullptr},
                      BadAnswer{"otherTranslationText", R"({"translations":[{"text":"x"},"y"]})",
                                nullptr},
                      BadAnswer{"noText", R"({"translations":[{}]})", nullptr},
                      BadAnswer{"textNull", R"({"translations":[{"text":null}]})", nullptr},
                      BadAnswer{"textArray", R"({"translations":[{"text":["x"]}]})", nullptr},
                      BadAnswer{"secondOnly", R"({"translations":[{},{"text":"x"}]})", nullptr},
                      BadAnswer{"message", R"({"message":"Hallo"})", nullptr}),
    nameOfAnswer);

TEST(DeepLAnswer, isTheFirstTranslationTrimmed)
{
    EXPECT_EQ(deepLResponseText(R"({"translations":[{"text":" \nGuten Tag\u00a0\r\n"},)"
                                R"({"text":"b"}]})"),
              QStringLiteral("Guten Tag"));
}

TEST(DeepLAnswer, mayBeEmpty)
{
    EXPECT_EQ(deepLResponseText(R"({"translations":[{"text":" "}]})"), QString());
}

TEST_F(DeepL, readsADocumentedAnswer)
{
    server.enqueue(Answer::json(200, R"({
  "translations": [
    { "detected_source_language": "EN", "text": "Hallo, Welt!", "billed_characters": 13 }
  ]
})"));
    EXPECT_EQ(translate().value, QStringLiteral("Hallo, Welt!"));
}

// Documented errors

struct Complaint
{
    const char* name;
    int status;
    const char* body;
};

class DeepLComplaint : public DeepL, public ::testing::WithParamInterface<Complaint>
{
};

TEST_P(DeepLComplaint, isShownWithItsStatus)
{
    server.enqueue(Answer::json(GetParam().status, GetParam().body));
    const auto outcome = translate();
    EXPECT_EQ(outcome.code, Code::http);
    EXPECT_EQ(outcome.text, QStringLiteral("API error %1: %2")
                                .arg(GetParam().status)
                                .arg(QString::fromUtf8(GetParam().body)));
    EXPECT_EQ(server.requests().size(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    DeepL, DeepLComplaint,
    ::testing::Values(Complaint{"badTarget", 400,
                                R"({"message":"Value for 'target_lang' not supported."})"},
                      Complaint{"wrongKey", 403, ""},
                      Complaint{"wrongHost", 403,
                                R"({"message":"Wrong endpoint. Use https://api-free.deepl.com"})"},
                      Complaint{"tooLarge", 413, R"({"message":"Request Entity Too Large"})"},
                      Complaint{"rateLimit", 429, R"({"message":"Too many requests"})"},
                      Complaint{"quota", 456, R"({"message":"Quota Exceeded"})"},
                      Complaint{"overloaded", 529, R"({"message":"Too many requests"})"}),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace zelvane::test
