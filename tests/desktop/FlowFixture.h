#pragma once

#include "desktop/FakeDesktop.h"
#include "desktop/FakeShell.h"
#include "support/FakeSecretBackend.h"
#include "support/VirtualClock.h"

#include "desktop/AppModel.h"

#include <gtest/gtest.h>

namespace zelvane::test {

/// Settings in memory, fakes for the whole desktop, and the flow on top of them.
class FlowFixture : public ::testing::Test
{
protected:
    FlowFixture()
    {
        keystrokes.onCopy = [this] {
            if (!selection.isNull()) {
                pasteboard.put(selection);
            }
        };
        pasteboard.put(QStringLiteral("the user's own"));
        translator.answer = QStringLiteral("Hallo Welt");
        pair = makePair(QStringLiteral("Any Language"), QStringLiteral("German"));
    }

    static LanguagePair makePair(const QString& source, const QString& target)
    {
        LanguagePair made;
        made.id = QUuid::createUuid();
        made.source = source;
        made.target = target;
        return made;
    }

    /// Settings that the loading is to find.
    static OverlayUserDefaults& seeded(OverlayUserDefaults& empty)
    {
        empty.setValue(QStringLiteral("zv.provider"), QStringLiteral("Mistral"));
        empty.setValue(QStringLiteral("zv.hasSeenOnboarding"), true);
        return empty;
    }

    [[nodiscard]] QString clipboardText() const
    {
        if (pasteboard.content.items.isEmpty()) {
            return QStringLiteral("(empty)");
        }
        return QString::fromUtf8(pasteboard.content.items.first().value(QStringLiteral("text")));
    }

    /// What the foreign program copies; a null string stands for nothing selected.
    QString selection = QStringLiteral("hello world");
    LanguagePair pair;

    QStringList log;
    VirtualClock clock;
    OverlayUserDefaults defaults;
    FakeSecretBackend secretBackend;
    SecretStore secrets{seeded(defaults), secretBackend};
    AppSettings settings{defaults, secrets, QStringLiteral("English (US)")};
    TranslationTrace trace{clock};
    FakePasteboard pasteboard{log};
    FakeKeystrokePoster keystrokes{log};
    FakeFocusInspector focus;
    FakeTranslator translator{log};
    FakeAccessibilityPlatform platform{log};
    FakeApplicationWindows applicationWindows{log};
    FakeActivationPolicy activationPolicy{log};
    SettingsWindow settingsWindow{applicationWindows, activationPolicy, clock, {}};
    AccessibilityPermission permission{platform, settingsWindow, defaults, clock};
    SelectionTranslation flow{
        {settings, permission, pasteboard, keystrokes, focus, translator, trace, clock}};
};

} // namespace zelvane::test
