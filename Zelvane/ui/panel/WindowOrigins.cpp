#include "ui/panel/WindowOrigins.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace zelvane {

namespace {

struct OriginKeys
{
    QString x;
    QString y;
};

OriginKeys keysOf(WindowKind kind)
{
    switch (kind) {
    case WindowKind::manual:
        return {QStringLiteral("zv.manualWindow.originX"),
                QStringLiteral("zv.manualWindow.originY")};
    case WindowKind::result:
        return {QStringLiteral("zv.resultWindow.originX"),
                QStringLiteral("zv.resultWindow.originY")};
    }
    Q_UNREACHABLE();
}

QPointF movedInto(const QRectF& frame, QRectF window)
{
    // The order decides which edges win when the window is larger than the screen.
    if (window.right() > frame.right()) {
        window.moveRight(frame.right());
    }
    if (window.left() < frame.left()) {
        window.moveLeft(frame.left());
    }
    if (window.top() < frame.top()) {
        window.moveTop(frame.top());
    }
    if (window.bottom() > frame.bottom()) {
        window.moveBottom(frame.bottom());
    }
    return window.topLeft();
}

} // namespace

ScreenLayout systemScreens()
{
    return {
        .visibleFrames =
            [] {
                QList<QRectF> frames;
                for (const QScreen* screen : QGuiApplication::screens()) {
                    frames.append(screen->availableGeometry());
                }
                return frames;
            },
        .mainFrame = []() -> std::optional<QRectF> {
            const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
            if (!screen) {
                screen = QGuiApplication::primaryScreen();
            }
            return screen ? std::optional<QRectF>(screen->availableGeometry()) : std::nullopt;
        },
    };
}

QPointF clampedOrigin(QPointF origin, QSizeF size, const ScreenLayout& screens)
{
    const QRectF window(origin, size);
    const QList<QRectF> frames = screens.visibleFrames();
    if (frames.isEmpty()) {
        return origin;
    }
    const auto touched =
        std::ranges::find_if(frames, [&](const QRectF& frame) { return frame.intersects(window); });
    if (touched != frames.end()) {
        return movedInto(*touched, window);
    }
    if (const auto frame = screens.mainFrame()) {
        return movedInto(*frame, window);
    }
    // While screens come and go the main one may be there at the second look.
    if (const auto frame = screens.mainFrame()) {
        return centredOrigin(size, *frame);
    }
    return origin;
}

QPointF centredOrigin(QSizeF size, const QRectF& frame)
{
    QRectF window({}, size);
    window.moveCenter(frame.center());
    return {std::round(window.x()), std::round(window.y())};
}

WindowOrigins::WindowOrigins(UserDefaults& defaults, ScreenLayout screens)
    : m_defaults(defaults)
    , m_screens(std::move(screens))
{
}

std::optional<QPointF> WindowOrigins::loadWindowOrigin(WindowKind kind, double width,
                                                       double height) const
{
    const OriginKeys keys = keysOf(kind);
    const std::optional<double> x = m_defaults.number(keys.x);
    const std::optional<double> y = m_defaults.number(keys.y);
    if (!x || !y) {
        return std::nullopt;
    }
    return clampedOrigin({*x, *y}, {width, height}, m_screens);
}

void WindowOrigins::saveWindowOrigin(WindowKind kind, double x, double y)
{
    const OriginKeys keys = keysOf(kind);
    m_defaults.setValue(keys.x, x);
    m_defaults.setValue(keys.y, y);
}

void WindowOrigins::resetWindowOrigins()
{
    for (const WindowKind kind : {WindowKind::manual, WindowKind::result}) {
        const OriginKeys keys = keysOf(kind);
        m_defaults.remove(keys.x);
        m_defaults.remove(keys.y);
    }
}

QPointF WindowOrigins::centre(double width, double height) const
{
    const std::optional<QRectF> frame = m_screens.mainFrame();
    return frame ? centredOrigin({width, height}, *frame) : QPointF();
}

std::optional<QSizeF> WindowOrigins::availableSize() const
{
    const std::optional<QRectF> frame = m_screens.mainFrame();
    return frame ? std::optional<QSizeF>(frame->size()) : std::nullopt;
}

} // namespace zelvane
