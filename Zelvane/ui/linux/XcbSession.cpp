#include "ui/linux/XcbSession.h"

#include <QGuiApplication>
#include <QScreen>

#include <cstdlib>
#include <memory>

namespace zelvane {

namespace {

struct Free
{
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

/// The number of the screen in the display's name: ":0.1" is 1.
int screenNumberOf(const QByteArray& display)
{
    const qsizetype point = display.lastIndexOf('.');
    return point > display.lastIndexOf(':') ? display.mid(point + 1).toInt() : 0;
}

} // namespace

std::optional<XcbSession> currentXcbSession()
{
    const auto* native =
        qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!native || !native->connection()) {
        return std::nullopt;
    }
    XcbSession session{native->connection(), nullptr, screenNumberOf(qgetenv("DISPLAY"))};
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(session.connection));
    for (int skipped = 0; skipped < session.screenNumber && screens.rem > 1; ++skipped) {
        xcb_screen_next(&screens);
    }
    session.screen = screens.data;
    return session;
}

xcb_atom_t internAtom(const XcbSession& session, const QByteArray& name)
{
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        session.connection,
        xcb_intern_atom(session.connection, 0, uint16_t(name.size()), name.constData()), nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

xcb_window_t selectionOwner(const XcbSession& session, xcb_atom_t selection)
{
    const Reply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        session.connection, xcb_get_selection_owner(session.connection, selection), nullptr));
    return reply ? reply->owner : xcb_window_t(XCB_WINDOW_NONE);
}

QPoint fromServerPixels(QPoint pixels)
{
    // Screens keep their corner in pixels, whatever they are scaled by.
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (const QScreen* screen : screens) {
        const QPoint corner = screen->geometry().topLeft();
        const qreal scale = screen->devicePixelRatio();
        const QSize size = (QSizeF(screen->geometry().size()) * scale).toSize();
        if (QRect(corner, size).contains(pixels)) {
            return corner + ((pixels - corner).toPointF() / scale).toPoint();
        }
    }
    return pixels;
}

} // namespace zelvane
