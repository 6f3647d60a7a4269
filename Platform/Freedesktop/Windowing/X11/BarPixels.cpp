#include "Platform/Freedesktop/Windowing/X11/BarPixels.h"

#include "Platform/Desktop/Appearance.h"
#include "Platform/Freedesktop/Windowing/X11/X11Bars.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QCoreApplication>
#include <QPainter>
#include <QRect>
#include <xcb/xcb.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace velloren::x11 {

namespace {

constexpr std::chrono::seconds timeToSettle(1);
constexpr int looksAtMost = 3;      // on a busy machine bars take longer
constexpr int leastThickness = 12;  // less is what an auto-hidden bar leaves at the edge of the screen
constexpr int greatestLength = 512; // of what is looked at, to each side of the icon

bool showsDesktop() {
    return connection() && !isWithinWayland();
}

/// Of a bar, the part around the icon, which is a small part of that.
QImage shownAround(QPoint icon, const QRect& bar) {
    if (std::min(bar.width(), bar.height()) < leastThickness)
        return {};
    const QPoint reach(greatestLength, greatestLength);
    const QRect visible(0, 0, screen().width_in_pixels, screen().height_in_pixels);
    return imageOf(screen().root, QRect(icon - reach, icon + reach) & bar & visible);
}

double luminanceOf(QRgb color) {
    const auto part = [](double share, int component) {
        const double value = component / 255.0;
        return share * value * value * (0.8 + 0.2 * value); // sRGB's curve, to a hundredth
    };
    return part(0.2126, qRed(color)) + part(0.7152, qGreen(color)) + part(0.0722, qBlue(color));
}

} // namespace

std::optional<std::string> appearanceOf(const QImage& picture) {
    // As many pixels as tell: text and other icons are the lesser part of a bar.
    constexpr int samplesEachWay = 64;
    // White and black contrast with this alike: (1 + 0.05) / (L + 0.05) = (L + 0.05) / 0.05.
    const double evenContrast = std::sqrt(1.05 * 0.05) - 0.05;
    int dark = 0;
    int all = 0;
    const int stepDown = std::max(1, picture.height() / samplesEachWay);
    const int stepAcross = std::max(1, picture.width() / samplesEachWay);
    for (int y = 0; y < picture.height(); y += stepDown) {
        for (int x = 0; x < picture.width(); x += stepAcross, ++all)
            dark += luminanceOf(picture.pixel(x, y)) < evenContrast ? 1 : 0;
    }
    if (5 * dark > 4 * all)
        return Appearance::vibrantDark;
    return 5 * dark < all ? std::optional(Appearance::vibrantLight) : std::nullopt;
}

std::optional<std::string> appearanceOfBarAt(QPoint icon) {
    return showsDesktop() ? appearanceOf(shownAround(icon, barAt(icon))) : std::nullopt;
}

std::optional<std::string> appearanceOfBars() {
    if (!showsDesktop())
        return std::nullopt;
    std::optional<std::string> common;
    for (const QRect& bar : bars()) {
        const auto look = appearanceOfBarAt(bar.center());
        if (look && common && *common != *look)
            return std::nullopt;
        if (look)
            common = look;
    }
    return common;
}

BarChanges::BarChanges(std::function<void()> settled) {
    settling.setSingleShot(true);
    settling.setTimerType(Qt::VeryCoarseTimer);
    settling.setInterval(timeToSettle);
    settling.callOnTimeout([this, settled = std::move(settled)] {
        if (--looksLeft > 0)
            settling.start();
        settled();
    });
    if (showsDesktop())
        qApp->installNativeEventFilter(this);
}

BarChanges::~BarChanges() = default;

void BarChanges::expect() {
    if (!showsDesktop())
        return;
    looksLeft = looksAtMost;
    settling.start();
}

bool BarChanges::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    // Qt has the X server tell of these changes in any case.
    const auto* event = static_cast<const xcb_property_notify_event_t*>(message);
    if (eventType == "xcb_generic_event_t" && (event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY &&
        (event->atom == atomNamed("_XSETTINGS_SETTINGS") || event->atom == atomNamed("_XROOTPMAP_ID")))
        expect();
    return false;
}

} // namespace velloren::x11
