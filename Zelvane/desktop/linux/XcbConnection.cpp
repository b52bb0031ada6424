#include "desktop/linux/XcbConnection.h"

#include "desktop/linux/XkbProtocol.h"
#include "settings/Localization.h"

#include <csignal>

#include <sys/socket.h>

#include <xcb/xcbext.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace zelvane {

namespace {

QString missing(XExtension extension)
{
    switch (extension) {
    case XExtension::xtest:
        return localizedText(QStringLiteral(
            "The X server lacks the extension XTEST, so Zelvane Desk can't press keys for you. "
            "The commands translate and defaults still work."));
    case XExtension::xinput2:
        return localizedText(QStringLiteral(
            "The X server lacks XInput 2, so Zelvane Desk can't watch for its hotkeys. "
            "The commands translate and defaults still work."));
    case XExtension::xfixes:
        return localizedText(QStringLiteral(
            "The X server lacks the extension XFixes, so Zelvane Desk can't look after your "
            "clipboard. The commands translate and defaults still work."));
    case XExtension::xkb:
        return localizedText(QStringLiteral(
            "The X server lacks the extension XKB, so Zelvane Desk can't read your keyboard. "
            "The commands translate and defaults still work."));
    }
    Q_UNREACHABLE();
}

const xcb_query_extension_reply_t* extensionData(xcb_connection_t* connection,
                                                 xcb_extension_t* extension)
{
    const auto* data = xcb_get_extension_data(connection, extension);
    return data && data->present ? data : nullptr;
}

} // namespace

std::expected<std::unique_ptr<XcbConnection>, QString>
XcbConnection::open(const QByteArray& display, const QList<XExtension>& needed)
{
    // Writing to a server that has gone would otherwise end the program.
    std::signal(SIGPIPE, SIG_IGN);

    int screen = 0;
    xcb_connection_t* raw = xcb_connect(display.isEmpty() ? nullptr : display.constData(), &screen);
    std::unique_ptr<XcbConnection> connection(new XcbConnection(raw, screen));
    if (connection->isLost() || connection->root() == XCB_WINDOW_NONE) {
        return std::unexpected(localizedText(QStringLiteral(
            "No X display can be opened, so hotkeys and replacing text in place don't work here. "
            "The command line still does.")));
    }
    for (const XExtension extension : needed) {
        if (!connection->activate(extension)) {
            return std::unexpected(missing(extension));
        }
    }
    return connection;
}

XcbConnection::XcbConnection(xcb_connection_t* connection, int screen)
    : m_connection(connection)
{
    if (isLost()) {
        return;
    }
    const xcb_setup_t* setup = xcb_get_setup(m_connection);
    m_resourceMask = setup->resource_id_mask;
    auto screens = xcb_setup_roots_iterator(setup);
    for (; screens.rem > 1 && screen > 0; --screen) {
        xcb_screen_next(&screens);
    }
    if (screens.rem > 0) {
        m_root = screens.data->root;
    }
}

XcbConnection::~XcbConnection()
{
    xcb_disconnect(m_connection);
}

bool XcbConnection::activate(XExtension extension)
{
    const xcb_query_extension_reply_t* data = nullptr;
    bool agreed = false;
    switch (extension) {
    case XExtension::xtest: {
        data = extensionData(m_connection, &xcb_test_id);
        if (data) {
            const auto cookie = xcb_test_get_version(m_connection, 2, 2);
            agreed = XcbOwned<xcb_test_get_version_reply_t>(
                         xcb_test_get_version_reply(m_connection, cookie, nullptr)) != nullptr;
        }
        break;
    }
    case XExtension::xinput2: {
        data = extensionData(m_connection, &xcb_input_id);
        if (data) {
            const auto cookie = xcb_input_xi_query_version(m_connection, 2, 0);
            const XcbOwned<xcb_input_xi_query_version_reply_t> version(
                xcb_input_xi_query_version_reply(m_connection, cookie, nullptr));
            agreed = version && version->major_version >= 2;
        }
        break;
    }
    case XExtension::xfixes: {
        data = extensionData(m_connection, &xcb_xfixes_id);
        if (data) {
            const auto cookie = xcb_xfixes_query_version(m_connection, 5, 0);
            agreed = XcbOwned<xcb_xfixes_query_version_reply_t>(
                         xcb_xfixes_query_version_reply(m_connection, cookie, nullptr)) != nullptr;
        }
        break;
    }
    case XExtension::xkb: {
        data = extensionData(m_connection, &xcb_xkb_id);
        agreed = data && xkb_x11_setup_xkb_extension(m_connection, XKB_X11_MIN_MAJOR_XKB_VERSION,
                                                     XKB_X11_MIN_MINOR_XKB_VERSION,
                                                     XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr,
                                                     nullptr, nullptr, nullptr) != 0;
        break;
    }
    }
    if (agreed) {
        m_firstEvents.insert(extension, data->first_event);
    }
    return agreed;
}

quint8 XcbConnection::firstEvent(XExtension extension) const
{
    return m_firstEvents.value(extension);
}

xcb_atom_t XcbConnection::atom(const QByteArray& name)
{
    if (const auto known = m_atoms.constFind(name); known != m_atoms.constEnd()) {
        return *known;
    }
    const auto cookie = xcb_intern_atom(m_connection, 0, quint16(name.size()), name.constData());
    const XcbOwned<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(m_connection, cookie, nullptr));
    if (!reply) {
        return XCB_ATOM_NONE;
    }
    m_atoms.insert(name, reply->atom);
    m_atomNames.insert(reply->atom, name);
    return reply->atom;
}

QByteArray XcbConnection::atomName(xcb_atom_t atom)
{
    if (const auto known = m_atomNames.constFind(atom); known != m_atomNames.constEnd()) {
        return *known;
    }
    const XcbOwned<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, atom), nullptr));
    if (!reply) {
        return {};
    }
    const QByteArray name(xcb_get_atom_name_name(reply.get()),
                          xcb_get_atom_name_name_length(reply.get()));
    m_atomNames.insert(atom, name);
    m_atoms.insert(name, atom);
    return name;
}

QList<quint32> XcbConnection::property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type)
{
    constexpr quint32 mostValues = 65536;
    const auto cookie = xcb_get_property(m_connection, 0, window, name, type, 0, mostValues);
    const XcbOwned<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply || reply->format != 32 || reply->type != type) {
        return {};
    }
    const auto* values = static_cast<const quint32*>(xcb_get_property_value(reply.get()));
    return QList<quint32>(values, values + reply->value_len);
}

void XcbConnection::sync()
{
    const auto cookie = xcb_get_input_focus(m_connection);
    const XcbOwned<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, cookie, nullptr));
}

void XcbConnection::cutOff()
{
    ::shutdown(xcb_get_file_descriptor(m_connection), SHUT_RDWR);
}

} // namespace zelvane
