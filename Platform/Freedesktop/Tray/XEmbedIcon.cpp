#include "Platform/Freedesktop/Tray/XEmbedIcon.h"

#include "Platform/Desktop/StatusBar.h"
#include "Platform/Freedesktop/Windowing/X11/BarPixels.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QGuiApplication>
#include <QPainter>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace velloren {

namespace {

constexpr double firstSide = 22; // points; trays resize what they take in
constexpr int patienceWithTray = 3;
constexpr std::uint8_t translucentDepth = 32;
constexpr std::string_view traySelection = "_NET_SYSTEM_TRAY_S0"; // of the first screen
constexpr std::uint32_t requestDock = 0;
constexpr std::array<std::uint32_t, 2> xembedInfo{0, 1}; // protocol version 0, to be mapped

std::uint8_t depthOf(xcb_visualid_t visual) {
    for (auto depth = xcb_screen_allowed_depths_iterator(&x11::screen()); depth.rem; xcb_depth_next(&depth)) {
        for (auto each = xcb_depth_visuals_iterator(depth.data); each.rem; xcb_visualtype_next(&each)) {
            if (each.data->visual_id == visual)
                return depth.data->depth;
        }
    }
    return x11::screen().root_depth;
}

xcb_window_t ownerOfTray() {
    const auto owner = x11::owned(xcb_get_selection_owner_reply(
        x11::connection(), xcb_get_selection_owner(x11::connection(), x11::atomNamed(traySelection)),
        nullptr));
    return owner ? owner->owner : xcb_window_t{XCB_WINDOW_NONE};
}

/// The tray, whose end is told from now on; one that ended before that was asked for is none.
xcb_window_t followedTray() {
    constexpr std::uint32_t itsEnd = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_window_t tray = ownerOfTray();
    for (xcb_window_t former = XCB_WINDOW_NONE; tray != XCB_WINDOW_NONE && tray != former;) {
        xcb_change_window_attributes(x11::connection(), tray, XCB_CW_EVENT_MASK, &itsEnd);
        former = std::exchange(tray, ownerOfTray());
    }
    return tray;
}

void setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string& text) {
    xcb_change_property(x11::connection(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        std::uint32_t(text.size()), text.data());
}

QImage transparent(QSize size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void drawPoint(xcb_window_t window, QRgb color) {
    const xcb_gcontext_t context = xcb_generate_id(x11::connection());
    const std::uint32_t foreground = color;
    constexpr xcb_point_t corner{0, 0};
    xcb_create_gc(x11::connection(), context, window, XCB_GC_FOREGROUND, &foreground);
    xcb_poly_point(x11::connection(), XCB_COORD_MODE_ORIGIN, window, context, 1, &corner);
    xcb_free_gc(x11::connection(), context);
}

/// What shows through the window. Some trays have nothing behind it: then what the bar shows beside it. Black
/// where neither can be told.
QImage backgroundOf(xcb_window_t window, const QRect& onScreen) {
    constexpr QRgb mark = 0xff01fe01;
    drawPoint(window, mark);
    xcb_clear_area(x11::connection(), false, window, 0, 0, 0, 0);
    QImage background = x11::imageOf(window, QRect(QPoint(), onScreen.size()));
    if (!background.isNull() && background.pixel(0, 0) == mark)
        background =
            x11::imageOf(x11::screen().root, QRect(onScreen.x() - 1, onScreen.y(), 1, onScreen.height()))
                .scaled(onScreen.size());
    if (background.isNull()) {
        background = QImage(onScreen.size(), QImage::Format_RGB32);
        background.fill(Qt::black);
    }
    return background;
}

} // namespace

XEmbedIcon::XEmbedIcon(StatusBarButton& button, std::string title, std::function<void(QPoint)> pressed)
    : button(button), title(std::move(title)), pressed(std::move(pressed)) {
    if (x11::connection())
        qApp->installNativeEventFilter(this);
}

XEmbedIcon::~XEmbedIcon() {
    undock();
}

void XEmbedIcon::setWanted(bool wanted) {
    isWanted = wanted;
    if (!wanted)
        undock();
    else if (!window)
        dock();
}

void XEmbedIcon::redraw() {
    if (!window || size.isEmpty())
        return;
    QImage image = depth == translucentDepth ? transparent(size) : backgroundOf(window, placeOnScreen());
    if (isEmbedded)
        button.setSeenAppearance(depth == translucentDepth ? x11::appearanceOfBarAt(placeOnScreen().center())
                                                           : x11::appearanceOf(image));
    const int side = std::min(size.width(), size.height());
    QPainter(&image).drawImage((size.width() - side) / 2, (size.height() - side) / 2, button.picture(side));

    xcb_connection_t* connection = x11::connection();
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_gc(connection, context, window, 0, nullptr);
    xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, context, std::uint16_t(size.width()),
                  std::uint16_t(size.height()), 0, 0, 0, depth, std::uint32_t(image.sizeInBytes()),
                  image.constBits());
    xcb_free_gc(connection, context);
    xcb_flush(connection);
}

bool XEmbedIcon::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    switch (event->response_type & 0x7f) {
    case XCB_CLIENT_MESSAGE: // a new tray tells the root window of itself, as other managers do
        if (const auto* news = static_cast<const xcb_client_message_event_t*>(message);
            news->type == x11::atomNamed("MANAGER") && news->data.data32[1] == x11::atomNamed(traySelection))
            managerAnnounced();
        break;
    case XCB_DESTROY_NOTIFY:
        if (const auto ended = static_cast<const xcb_destroy_notify_event_t*>(message)->window;
            ended == tray || ended == window)
            trayChanged();
        break;
    case XCB_REPARENT_NOTIFY:
        if (const auto* change = static_cast<const xcb_reparent_notify_event_t*>(message);
            window && change->window == window)
            reparented(change->parent);
        break;
    case XCB_CONFIGURE_NOTIFY:
        if (const auto* change = static_cast<const xcb_configure_notify_event_t*>(message);
            window && change->window == window)
            size = {change->width, change->height};
        break;
    case XCB_EXPOSE:
        if (const auto* exposed = static_cast<const xcb_expose_event_t*>(message);
            window && exposed->window == window && exposed->count == 0)
            redraw();
        break;
    case XCB_BUTTON_PRESS:
        if (const auto* press = static_cast<const xcb_button_press_event_t*>(message);
            window && press->event == window)
            buttonPressed(press->detail, {press->root_x, press->root_y});
        break;
    default:
        break;
    }
    return false;
}

void XEmbedIcon::buttonPressed(unsigned which, QPoint place) {
    if (which != XCB_BUTTON_INDEX_1 && which != XCB_BUTTON_INDEX_3)
        return;
    // Later: while a filter runs, Qt may read on and come by this event once more.
    QMetaObject::invokeMethod(
        &button, [this, place] { pressed(place); }, Qt::QueuedConnection);
}

void XEmbedIcon::managerAnnounced() {
    // Some trays say so again once they have the icon, and lose one that comes anew then.
    if (!isEmbedded || ownerOfTray() != tray)
        trayChanged();
}

void XEmbedIcon::trayChanged() {
    timesPutOut = 0;
    undock();
    if (isWanted)
        dock();
}

void XEmbedIcon::reparented(std::uint32_t parent) {
    isEmbedded = parent != x11::screen().root;
    if (isEmbedded || ++timesPutOut > patienceWithTray)
        return;
    undock();
    dock();
}

void XEmbedIcon::dock() {
    xcb_connection_t* connection = x11::connection();
    if (!connection)
        return;
    tray = followedTray();
    if (tray == XCB_WINDOW_NONE)
        return;
    createWindow();

    xcb_client_message_event_t request{};
    request.response_type = XCB_CLIENT_MESSAGE;
    request.format = 32;
    request.window = tray;
    request.type = x11::atomNamed("_NET_SYSTEM_TRAY_OPCODE");
    request.data.data32[0] = XCB_CURRENT_TIME;
    request.data.data32[1] = requestDock;
    request.data.data32[2] = window;
    xcb_send_event(connection, false, tray, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&request));
    xcb_flush(connection);
}

void XEmbedIcon::undock() {
    if (!window)
        return;
    xcb_destroy_window(x11::connection(), window); // gone already where it went with its tray
    xcb_free_colormap(x11::connection(), colormap);
    xcb_flush(x11::connection());
    window = 0;
    tray = 0;
    if (std::exchange(isEmbedded, false))
        button.setSeenAppearance(std::nullopt);
}

QRect XEmbedIcon::placeOnScreen() const {
    const auto corner = x11::owned(xcb_translate_coordinates_reply(
        x11::connection(), xcb_translate_coordinates(x11::connection(), window, x11::screen().root, 0, 0),
        nullptr));
    return {corner ? QPoint(corner->dst_x, corner->dst_y) : QPoint(), size};
}

void XEmbedIcon::createWindow() {
    xcb_connection_t* connection = x11::connection();
    const xcb_visualid_t visual = visualOfTray();
    depth = depthOf(visual);
    const auto side = std::uint16_t(std::lround(firstSide * qApp->devicePixelRatio()));
    size = {side, side};
    colormap = xcb_generate_id(connection);
    xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colormap, x11::screen().root, visual);
    xcb_create_window_value_list_t values{};
    values.background_pixmap =
        depth == translucentDepth ? XCB_BACK_PIXMAP_NONE : XCB_BACK_PIXMAP_PARENT_RELATIVE;
    values.border_pixel = 0;
    values.event_mask =
        XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_BUTTON_PRESS;
    values.colormap = colormap;
    window = xcb_generate_id(connection);
    xcb_create_window_aux(
        connection, depth, window, x11::screen().root, 0, 0, side, side, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        visual, XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, &values);

    const std::string program = QCoreApplication::applicationName().toStdString();
    setText(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, program + '\0' + program + '\0');
    setText(window, x11::atomNamed("_NET_WM_NAME"), x11::atomNamed("UTF8_STRING"), title);
    // WM_NORMAL_HINTS with nothing but the least width and height.
    const std::array<std::uint32_t, 18> sizeHints{1U << 4, 0, 0, 0, 0, side, side};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, sizeHints.size(), sizeHints.data());
    const xcb_atom_t info = x11::atomNamed("_XEMBED_INFO");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, info, info, 32, xembedInfo.size(),
                        xembedInfo.data());
}

std::uint32_t XEmbedIcon::visualOfTray() const {
    const auto property = x11::owned(xcb_get_property_reply(
        x11::connection(),
        xcb_get_property(x11::connection(), false, tray, x11::atomNamed("_NET_SYSTEM_TRAY_VISUAL"),
                         XCB_ATOM_VISUALID, 0, 1),
        nullptr));
    if (!property || xcb_get_property_value_length(property.get()) != sizeof(xcb_visualid_t))
        return x11::screen().root_visual;
    return *static_cast<const xcb_visualid_t*>(xcb_get_property_value(property.get()));
}

} // namespace velloren
