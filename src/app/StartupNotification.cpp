#include "StartupNotification.h"

#include <QGuiApplication>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace tambrel {
namespace {

xcb_atom_t atom(xcb_connection_t* connection, const QByteArray& name) {
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

QByteArray removal(QByteArray id) {
    id.replace('\\', "\\\\").replace('"', "\\\"");
    return "remove: ID=\"" + id + '"' + '\0';
}

// The text goes to everyone who watches the root window, twenty bytes at a time.
void broadcast(xcb_connection_t* connection, xcb_window_t sender, const QByteArray& text) {
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 8;
    message.window = sender;
    message.type = atom(connection, "_NET_STARTUP_INFO_BEGIN");
    constexpr qsizetype pieceLength = sizeof message.data.data8;
    for (qsizetype at = 0; at < text.size(); at += pieceLength) {
        const QByteArray piece = text.mid(at, pieceLength).leftJustified(pieceLength, '\0');
        std::ranges::copy(piece, std::begin(message.data.data8));
        xcb_send_event(connection, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char*>(&message));
        message.type = atom(connection, "_NET_STARTUP_INFO");
    }
    xcb_flush(connection);
}

} // namespace

void endStartupNotification(const QWidget& window, const QString& id) {
    if (id.isEmpty() || QGuiApplication::platformName() != "xcb")
        return;
    if (const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>())
        broadcast(x11->connection(), static_cast<xcb_window_t>(window.winId()), removal(id.toUtf8()));
}

} // namespace tambrel
