#pragma once

#include "ui/panel/WindowSystem.h"
#include "ui/style/Theme.h"

#include <QList>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

namespace zelvane::gallery {

/// What scenes are made with.
struct Stage
{
    const Theme& theme;
    WindowSystem& windows;
};

/// A window on show. Destroying it takes the window off the screen.
class Exhibit
{
public:
    Exhibit() = default;
    virtual ~Exhibit() = default;
    Q_DISABLE_COPY_MOVE(Exhibit)

    /// Null once the user has closed the window.
    [[nodiscard]] virtual QWidget* window() = 0;
    /// What happens once the window is on the screen: another page, a sheet, an open list.
    virtual void takeStep() {}
};

/// One window in one state.
struct Scene
{
    QString name;
    std::function<std::unique_ptr<Exhibit>(const Stage&)> show;
    /// Whether the scene is about the exhibit's step, rather than about its window.
    bool hasStep = false;
};

[[nodiscard]] QList<Scene> allScenes();

/// The settings: each page in its states, the keyboard on each kind of control, and the sheets.
[[nodiscard]] QList<Scene> settingsScenes();
[[nodiscard]] QList<Scene> sheetScenes();

/// The window into which the user types.
[[nodiscard]] QList<Scene> manualScenes();

/// The introduction, slide by slide.
[[nodiscard]] QList<Scene> onboardingScenes();

} // namespace zelvane::gallery
