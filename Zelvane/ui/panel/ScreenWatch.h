#pragma once

#include "ui/panel/WindowOrigins.h"

#include <QObject>

class QScreen;

namespace zelvane {

/// Moves each window of the program that shows to where it can be seen and reached on the screens
/// of now. Popovers and menus, which close by themselves, and windows that fill a screen stay.
void bringWindowsOntoScreens(const ScreenLayout& screens);

/// Does so when a screen has gone or has another size: not every window manager does. Main thread
/// only.
class ScreenWatch final : public QObject
{
    Q_OBJECT

public:
    explicit ScreenWatch(ScreenLayout screens);

private:
    void follow(QScreen* screen);
    void bringWindows();

    ScreenLayout m_screens;
};

} // namespace zelvane
