#pragma once

#include "settings/AppSettings.h"
#include "support/FakeSecretBackend.h"
#include "support/QtPrinters.h"
#include "support/VirtualClock.h"
#include "ui/panel/WindowOrigins.h"
#include "ui/panel/WindowSystem.h"
#include "ui/style/Theme.h"

#include <gtest/gtest.h>

namespace zelvane::test {

/// A desktop on which another program's window has the keyboard. Notes what panels ask of it.
class RecordingWindowSystem final : public WindowSystem
{
public:
    void describe(QWindow&, const PanelHints& hints) override { described.append(hints); }
    void setSkipsTaskbar(QWindow& window, bool skips) override
    {
        skipping.append({window.title(), skips});
    }
    void activate(QWindow& window) override
    {
        ++activations;
        window.requestActivate();
    }
    [[nodiscard]] Window foreignActiveWindow() const override { return foreign; }
    void activateForeign(Window window) override { givenBack.append(window); }

    Window foreign = 77;
    int activations = 0;
    QList<PanelHints> described;
    QList<std::pair<QString, bool>> skipping;
    QList<Window> givenBack;
};

/// One screen of 1600 by 1000, of which a dock takes 40 at the top.
inline ScreenLayout oneScreen()
{
    const QRectF frame(0, 40, 1600, 960);
    return {[frame] { return QList<QRectF>{frame}; }, [frame] { return std::optional(frame); }};
}

/// What every window needs, with nothing behind it but memory.
class UiTest : public ::testing::Test
{
protected:
    VirtualClock clock;
    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{defaults, backend};
    AppSettings settings{defaults, secrets, QStringLiteral("English (US)")};
    StyleTweaker tokens;
    DesktopAppearance appearance;
    Theme theme{tokens, appearance};
    RecordingWindowSystem windows;
    WindowOrigins origins{defaults, oneScreen()};
};

} // namespace zelvane::test
