#pragma once

#include "http/NetworkHttpTransport.h"
#include "online/CallOutcome.h"
#include "pipeline/Engines.h"
#include "settings/UserDefaults.h"
#include "support/LoopbackHttpServer.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

namespace zelvane::test {

/// A server on loopback that every provider is looked for at, and what an engine needs to reach it.
class ProviderFixture : public ::testing::Test
{
protected:
    ProviderFixture()
    {
        for (const AIProvider provider : allProviders) {
            defaults.setValue(QStringLiteral("zv.endpoint.") + rawValue(provider),
                              server.url().toString());
        }
    }

    static TranslationRequest requestFor(AIProvider provider)
    {
        TranslationRequest request;
        request.text = QStringLiteral("Hello");
        request.provider = provider;
        request.apiKey = QStringLiteral("key-1234567890");
        request.model = defaultModel(provider);
        request.systemPrompt = QStringLiteral("Translate.");
        request.sourceLanguage = QStringLiteral("English (US)");
        request.targetLanguage = QStringLiteral("German");
        return request;
    }

    /// The one request that the server got.
    [[nodiscard]] const RecordedRequest& received() const
    {
        EXPECT_EQ(server.requests().size(), 1);
        return server.requests().at(0);
    }

    VirtualClock clock;
    OverlayUserDefaults defaults;
    LoopbackHttpServer server;
    NetworkHttpTransport transport{clock};
};

/// An answer whose shape an engine must refuse.
struct BadAnswer
{
    const char* name;
    QByteArray body;
    const char* json; ///< the parser's complaint, or null where the shape is wrong
};

/// Bodies that no engine takes for an answer, whatever its format.
inline const std::vector<BadAnswer> nobodysAnswers{
    {"array", "[]", nullptr},
    {"emptyObject", "{}", nullptr},
    {"empty", "", "The answer is not JSON: illegal value at byte 0."},
    {"blank", " \n", "The answer is not JSON: illegal value at byte 2."},
    {"html", "<!DOCTYPE html><html></html>", "The answer is not JSON: illegal value at byte 1."},
    {"text", R"("Hallo")", "The answer is not JSON: illegal value at byte 1."},
    {"half", R"({"candidates":[{"con)", "The answer is not JSON: unterminated string at byte 21."},
    {"two", "{}{}", "The answer is not JSON: garbage at the end of the document at byte 2."},
    {"notUtf8", "{\"text\":\"\xff\"}", "The answer is not JSON: invalid UTF8 string at byte 9."},
    {"deep", QByteArray(100'000, '['),
     "The answer is not JSON: too deeply nested document at byte 1025."},
    {"zero", QByteArray("\0", 1), "The answer is not JSON: illegal value at byte 1."},
};

/// Checks that reading an answer fails as it is told.
template <typename Read>
void expectRefusal(const BadAnswer& answer, Read read)
{
    try {
        read(answer.body);
        FAIL() << "the answer was taken";
    } catch (const TranslationError& error) {
        EXPECT_EQ(error.code(), TranslationError::Code::badResponse);
        EXPECT_EQ(answer.json, nullptr);
    } catch (const JsonError& error) {
        EXPECT_EQ(error.description(), QString::fromLatin1(answer.json));
    }
}

} // namespace zelvane::test
