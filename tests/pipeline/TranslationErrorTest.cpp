#include "pipeline/TranslationError.h"

#include <gtest/gtest.h>

#include <optional>

namespace zelvane::test {
namespace {

using Code = TranslationError::Code;

TEST(TranslationError, tellsTheUserWhatWentWrong)
{
    const auto text = [](Code code) { return TranslationError(code).description(); };
    EXPECT_EQ(text(Code::missingAPIKey),
              QStringLiteral("API key is not set. Open Settings and add your key."));
    EXPECT_EQ(text(Code::emptyText), QStringLiteral("No text selected."));
    EXPECT_EQ(text(Code::invalidURL), QStringLiteral("Invalid API URL."));
    EXPECT_EQ(text(Code::badResponse), QStringLiteral("Unexpected response from the AI provider."));
    EXPECT_EQ(text(Code::accessibilityDenied),
              QStringLiteral("Accessibility permission is required to replace text. Enable it in "
                             "System Settings → Privacy & Security → Accessibility."));
    EXPECT_EQ(text(Code::pasteFailed), QStringLiteral("Could not paste the translated text."));
    EXPECT_EQ(text(Code::offlineEngineMissing),
              QStringLiteral("The selected offline engine is not installed. Open Settings → AI "
                             "Provider and tap Install."));
    EXPECT_EQ(text(Code::offlineEngineBusy),
              QStringLiteral("Offline engine stopped. Try translating again."));
}

TEST(TranslationError, quotesTheStatusAndTheBodyOfAnHttpFailure)
{
    const auto failure = TranslationError::http(1404, QStringLiteral("50% %@ off"));
    EXPECT_EQ(failure.description(), QStringLiteral("API error 1404: 50% %@ off"));
    EXPECT_EQ(failure.code(), Code::http);
    EXPECT_EQ(failure.httpStatus(), 1404);
    EXPECT_EQ(failure.payload(), QStringLiteral("50% %@ off"));
}

TEST(TranslationError, showsTheMessageAboutALanguageAsItStands)
{
    const auto failure =
        TranslationError::offlineUnsupportedLanguage(QStringLiteral("No Klingon: %@"));
    EXPECT_EQ(failure.description(), QStringLiteral("No Klingon: %@"));
    EXPECT_EQ(failure.httpStatus(), 0);
}

TEST(TranslationError, namesAnEngineThatIsNotThere)
{
    EXPECT_EQ(EngineUnavailableError(QStringLiteral("DeepL")).description(),
              QStringLiteral(
                  "DeepL is not part of this version of Zelvane Desk. Choose another engine."));
}

/// The body of the failure that an answer turns into; none if it passes.
std::optional<QString> shownBody(int status, const QByteArray& body)
{
    try {
        validateHTTPResponse(status, body);
        return std::nullopt;
    } catch (const TranslationError& failure) {
        EXPECT_EQ(failure.code(), Code::http);
        EXPECT_EQ(failure.httpStatus(), status);
        return failure.payload();
    }
}

TEST(HttpValidation, passesTheStatusesFrom200To299)
{
    EXPECT_EQ(shownBody(200, "fine"), std::nullopt);
    EXPECT_EQ(shownBody(204, ""), std::nullopt);
    EXPECT_EQ(shownBody(299, "\xff"), std::nullopt);
}

TEST(HttpValidation, failsWithEveryOtherStatus)
{
    for (const int status : {0, 100, 199, 300, 302, 400, 401, 404, 422, 429, 500, 503, 600}) {
        EXPECT_EQ(shownBody(status, "why"), QStringLiteral("why")) << status;
    }
}

TEST(HttpValidation, cutsTheBodyTo400Characters)
{
    EXPECT_EQ(shownBody(500, QByteArray(400, 'a')), QString(400, u'a'));
    EXPECT_EQ(shownBody(500, QByteArray(401, 'a')), QString(400, u'a') + u'…');
    EXPECT_EQ(shownBody(500, QByteArray(2000, 'a')), QString(400, u'a') + u'…');
    EXPECT_EQ(shownBody(500, ""), QString());
}

TEST(HttpValidation, countsCharactersAsAReaderDoes)
{
    const QString family = QStringLiteral("👨‍👩‍👧‍👦");
    EXPECT_EQ(shownBody(500, family.repeated(400).toUtf8()), family.repeated(400));
    EXPECT_EQ(shownBody(500, family.repeated(401).toUtf8()), family.repeated(400) + u'…');
    EXPECT_EQ(shownBody(500, QByteArray("\r\n").repeated(401)),
              QStringLiteral("\r\n").repeated(400) + u'…');
}

TEST(HttpValidation, takesABodyThatIsNotUtf8ForAnEmptyOne)
{
    EXPECT_EQ(shownBody(500, "bad \xff\xfe bytes"), QString());
    EXPECT_EQ(shownBody(500, "cut in the middle \xe2\x82"), QString());
    EXPECT_EQ(shownBody(500, "\xed\xa0\x80"), QString());
}

TEST(HttpValidation, keepsWhateverUtf8TheBodyHolds)
{
    EXPECT_EQ(shownBody(500, QByteArray("a\0b", 3)), QString::fromUtf8("a\0b", 3));
    EXPECT_EQ(shownBody(500, " \n ümläut "), QStringLiteral(" \n ümläut "));
    EXPECT_EQ(shownBody(500, "\xef\xbb\xbfmark"), QStringLiteral("mark"));
}

} // namespace
} // namespace zelvane::test
