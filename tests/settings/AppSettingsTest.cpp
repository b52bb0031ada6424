#include "settings/AppSettings.h"

#include "support/Await.h"
#include "support/FakeSecretBackend.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

TEST(AppSettings, haveTheirDefaultsInANewInstallation)
{
    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets(defaults, backend);
    const AppSettings settings(defaults, secrets, QStringLiteral("German"));
    EXPECT_EQ(settings.provider(), AIProvider::smartOffline);
    EXPECT_EQ(settings.model(), QStringLiteral("hymt2-7b-q4-k-m"));
}

} // namespace
} // namespace zelvane::test
