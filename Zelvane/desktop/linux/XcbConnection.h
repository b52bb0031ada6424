#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <cstdlib>
#include <expected>
#include <memory>

#include <xcb/xcb.h>

namespace zelvane {

struct FreeWithLibc
{
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply, an event or an error of the X server; null where there is none.
template <typename T>
using XcbOwned = std::unique_ptr<T, FreeWithLibc>;

/// The extensions of the X server that the program can't do without.
enum class XExtension {
    xtest,
    xinput2,
    xfixes,
    xkb,
};

/// One connection to an X server, to be used by one thread at a time.
///
/// Losing the server is an ordinary event: requests then do nothing, replies are null and `isLost`
/// says so. Nothing here ends the program.
class XcbConnection
{
public:
    /// Connects to `display`, or to $DISPLAY if it is empty. The error is a sentence for the user
    /// that says what is missing and what still works.
    [[nodiscard]] static std::expected<std::unique_ptr<XcbConnection>, QString>
    open(const QByteArray& display, const QList<XExtension>& needed);
    ~XcbConnection();
    Q_DISABLE_COPY_MOVE(XcbConnection)

    [[nodiscard]] xcb_connection_t* get() const { return m_connection; }
    [[nodiscard]] xcb_window_t root() const { return m_root; }
    [[nodiscard]] bool isLost() const { return xcb_connection_has_error(m_connection) != 0; }

    /// The number of the first event of an extension that `open` was asked for.
    [[nodiscard]] quint8 firstEvent(XExtension extension) const;

    /// Asks the server once for each name. `XCB_ATOM_NONE` if the server is lost.
    [[nodiscard]] xcb_atom_t atom(const QByteArray& name);
    /// Empty if there is no such atom.
    [[nodiscard]] QByteArray atomName(xcb_atom_t atom);

    /// Stands for the program that made a window or other resource: equal for two resources if they
    /// came over the same connection.
    [[nodiscard]] quint32 clientOf(quint32 resource) const { return resource & ~m_resourceMask; }

    /// The 32-bit values of a window's property, empty if it has none of this type.
    [[nodiscard]] QList<quint32> property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type);

    /// Sends everything and waits until the server has done it.
    void sync();
    void flush() { xcb_flush(m_connection); }

    /// From any thread: makes a request that waits for the server's answer fail at once.
    void cutOff();

private:
    XcbConnection(xcb_connection_t* connection, int screen);
    [[nodiscard]] bool activate(XExtension extension);

    xcb_connection_t* m_connection;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    quint32 m_resourceMask = 0;
    QHash<XExtension, quint8> m_firstEvents;
    QHash<QByteArray, xcb_atom_t> m_atoms;
    QHash<xcb_atom_t, QByteArray> m_atomNames;
};

} // namespace zelvane
