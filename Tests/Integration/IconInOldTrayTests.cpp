#include "Tests/Integration/MenuAgentTest.h"
#include "Tests/Support/Pictures.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <string_view>

namespace velloren {

namespace {

/// The agent without any panel, and a client of the X server that can be a tray that takes in windows.
class IconInOldTray : public MenuAgentTest {
  protected:
    IconInOldTray() {
        desktop.stopPanel();
        startAgent();
    }

    ~IconInOldTray() override { xcb_disconnect(server); }

    /// 0 while it has none.
    [[nodiscard]] xcb_window_t icon() const {
        std::string window;
        desktop.run(
            {"sh", "-c",
             "xwininfo -root -tree -int | awk '/velloren-menu/ && / [1-4][0-9]x[1-4][0-9]\\+/ {print $1}'"},
            &window);
        return xcb_window_t(std::strtoul(window.c_str(), nullptr, 10));
    }

    [[nodiscard]] xcb_atom_t atom(std::string_view name) const {
        const auto cookie = xcb_intern_atom(server, 0, std::uint16_t(name.size()), name.data());
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            xcb_intern_atom_reply(server, cookie, nullptr), &std::free);
        return reply->atom;
    }

    /// Tells all that somebody manages `selection` now.
    void announceManagerOf(std::string_view selection) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = root;
        message.type = atom("MANAGER");
        message.data.data32[1] = atom(selection);
        xcb_send_event(server, 0, root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
        xcb_flush(server);
    }

    /// A tray with that place for an icon.
    void becomeTray(QRect place) {
        tray = xcb_generate_id(server);
        const std::uint32_t unmanaged = 1;
        xcb_create_window(server, XCB_COPY_FROM_PARENT, tray, root, std::int16_t(place.x()),
                          std::int16_t(place.y()), std::uint16_t(place.width()),
                          std::uint16_t(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &unmanaged);
        xcb_map_window(server, tray);
        xcb_set_selection_owner(server, tray, atom("_NET_SYSTEM_TRAY_S0"), XCB_CURRENT_TIME);
        announceManagerOf("_NET_SYSTEM_TRAY_S0");
    }

    /// It fills the place.
    void takeIn(xcb_window_t window, QSize size) {
        xcb_reparent_window(server, window, tray, 0, 0);
        const std::array sides{std::uint32_t(size.width()), std::uint32_t(size.height())};
        xcb_configure_window(server, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                             sides.data());
        xcb_map_window(server, window);
        xcb_flush(server);
    }

    xcb_connection_t* server = xcb_connect(nullptr, nullptr);
    xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
    xcb_window_t tray = 0;
};

} // namespace

TEST_F(IconInOldTray, FillsItsPlaceAndStaysThoughManagersAnnounceThemselves) {
    const QRect place(600, 300, 48, 48);
    becomeTray(place);
    ASSERT_TRUE(desktop.waitUntil([this] { return icon() != 0; }));
    const xcb_window_t window = icon();
    takeIn(window, place.size());
    EXPECT_TRUE(desktop.waitUntil([&] {
        const QImage now = desktop.screen().copy(place);
        const auto glyph =
            boundsWithin(now.rect(), [&](QPoint at) { return now.pixel(at) != now.pixel(0, 0); });
        return glyph && glyph->width() > 24 && glyph->width() < 48;
    }));
    for (const char* selection : {"_XSETTINGS_S0", "_NET_SYSTEM_TRAY_S0"})
        announceManagerOf(selection);
    desktop.click(place.center()); // the agent sees it after these
    EXPECT_TRUE(desktop.waitUntil([this] { return desktop.popover().has_value(); }));
    EXPECT_EQ(icon(), window);
}

TEST_F(IconInOldTray, AsksAgainWhenItIsPutOutAndGoesForAnItem) {
    if (desktop.run({"which", "trayer"}) != 0)
        GTEST_SKIP() << "this Debian has no trayer";
    const auto trayer = desktop.start("trayer", {"--edge", "bottom", "--align", "left"});
    const auto isInTray = [this] {
        const auto place = desktop.legacyIcon();
        return place && place->top() > VirtualDesktop::height / 2;
    };
    ASSERT_TRUE(desktop.waitUntil(isInTray));
    const xcb_window_t former = icon();
    xcb_reparent_window(server, former, root, 0, 0);
    xcb_flush(server);
    EXPECT_TRUE(desktop.waitUntil([&] { return icon() != former && isInTray(); }));
    desktop.startBar();
    EXPECT_TRUE(desktop.waitUntil([this] { return desktop.itemCount() == 1 && !desktop.legacyIcon(); }));
}

} // namespace velloren
