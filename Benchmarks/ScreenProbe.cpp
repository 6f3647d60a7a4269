#include "Benchmarks/ScreenProbe.h"

#include "Platform/Foundation/FatalError.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace velloren {

ScreenProbe::ScreenProbe() : connection(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection))
        fatalError("there is no display to probe");
    root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

ScreenProbe::~ScreenProbe() {
    xcb_disconnect(connection);
}

void ScreenProbe::moveTo(int x, int y) {
    xcb_test_fake_input(connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root, std::int16_t(x),
                        std::int16_t(y), 0);
    xcb_flush(connection);
}

void ScreenProbe::click() {
    for (const int type : {XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE})
        xcb_test_fake_input(connection, std::uint8_t(type), 1, XCB_CURRENT_TIME, root, 0, 0, 0);
    xcb_flush(connection);
}

std::uint32_t ScreenProbe::colorAt(int x, int y) {
    const auto request = xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, std::int16_t(x),
                                       std::int16_t(y), 1, 1, ~0U);
    const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
        xcb_get_image_reply(connection, request, nullptr), &std::free);
    std::uint32_t pixel = 0;
    if (reply && xcb_get_image_data_length(reply.get()) >= int(sizeof pixel))
        std::memcpy(&pixel, xcb_get_image_data(reply.get()), sizeof pixel);
    return pixel & 0xffffffU;
}

} // namespace velloren
