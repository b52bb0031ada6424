#include "ui/panel/ScreenWatch.h"

#include "ui/panel/TranslatorKeyablePanel.h"

#include <QApplication>
#include <QScreen>

#include <utility>

namespace zelvane {

namespace {

bool staysPut(const QWidget& window)
{
    return !window.isVisible() || window.isMaximized() || window.isFullScreen() ||
           window.windowType() == Qt::Popup || window.windowType() == Qt::ToolTip;
}

void bringOntoScreens(QWidget& window, const ScreenLayout& screens)
{
    const auto* panel = qobject_cast<TranslatorKeyablePanel*>(&window);
    const QRect frame = panel ? panel->panelFrame() : window.frameGeometry();
    const QPoint origin = clampedOrigin(frame.topLeft(), frame.size(), screens).toPoint();
    if (origin != frame.topLeft()) {
        window.move(window.pos() + origin - frame.topLeft());
    }
}

} // namespace

void bringWindowsOntoScreens(const ScreenLayout& screens)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (!staysPut(*window)) {
            bringOntoScreens(*window, screens);
        }
    }
}

ScreenWatch::ScreenWatch(ScreenLayout screens)
    : m_screens(std::move(screens))
{
    for (QScreen* screen : QGuiApplication::screens()) {
        follow(screen);
    }
    connect(qApp, &QGuiApplication::screenAdded, this, &ScreenWatch::follow);
    // In a later turn, when Qt has settled what screens there are.
    connect(qApp, &QGuiApplication::screenRemoved, this, &ScreenWatch::bringWindows,
            Qt::QueuedConnection);
}

void ScreenWatch::follow(QScreen* screen)
{
    connect(screen, &QScreen::geometryChanged, this, &ScreenWatch::bringWindows,
            Qt::QueuedConnection);
}

void ScreenWatch::bringWindows()
{
    bringWindowsOntoScreens(m_screens);
}

} // namespace zelvane
