#include "Platform/Freedesktop/Windowing/X11/BarPixels.h"

#include "Platform/Desktop/Appearance.h"
#include "Platform/Freedesktop/Windowing/X11/X11Bars.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QCoreApplication>
#include <QPainter>
#include <QRect>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace velloren::x11 {

namespace {

constexpr std::chrono::seconds timeToSettle(1);
constexpr int looksAtMost = 3;      // on a busy machine bars take longer
constexpr int leastThickness = 12;  // less is what an auto-hidden bar leaves at the edge of the screen
constexpr int greatestLength = 512; // of what is looked at, to each side of the icon

bool showsDesktop() {
    return connection() && !isWithinWayland();
}

/// Of a bar, the part around the icon but for the icon itself, which may be highlighted.
QImage shownAround(QPoint icon, const QRect& bar) {
    const int thickness = std::min(bar.width(), bar.height());
    if (thickness < leastThickness)
        return {};
    const QRect visible = bar.intersected({0, 0, screen().width_in_pixels, screen().height_in_pixels});
    const bool runsAcross = bar.width() >= bar.height();
    const QPoint reach = runsAcross ? QPoint(greatestLength, thickness) : QPoint(thickness, greatestLength);
    const QRect near = QRect(icon - reach, icon + reach).intersected(visible);
    QRect before = near;
    QRect after = near;
    if (runsAcross) {
        before.setRight(icon.x() - thickness);
        after.setLeft(icon.x() + thickness);
    } else {
        before.setBottom(icon.y() - thickness);
        after.setTop(icon.y() + thickness);
    }
    const auto length = [](const QRect& part) { return std::max(part.width(), part.height()); };
    return imageOf(screen().root, length(before) > length(after) ? before : after);
}

std::array<double, 256> linearComponents() {
    std::array<double, 256> linear{};
    for (std::size_t component = 0; component < linear.size(); ++component) {
        const double value = double(component) / 255.0;
        linear[component] = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    }
    return linear;
}

double luminanceOf(QRgb color) {
    static const std::array<double, 256> linear = linearComponents();
    const auto part = [](double share, int component) { return share * linear[std::size_t(component)]; };
    return part(0.2126, qRed(color)) + part(0.7152, qGreen(color)) + part(0.0722, qBlue(color));
}

} // namespace

std::optional<std::string> appearanceOf(const QImage& picture) {
    // As many pixels as tell: text and other icons are the lesser part of a bar.
    constexpr int samplesEachWay = 64;
    std::vector<double> luminances;
    const int stepDown = std::max(1, picture.height() / samplesEachWay);
    const int stepAcross = std::max(1, picture.width() / samplesEachWay);
    for (int y = 0; y < picture.height(); y += stepDown) {
        for (int x = 0; x < picture.width(); x += stepAcross)
            luminances.push_back(luminanceOf(picture.pixel(x, y)));
    }
    if (luminances.empty())
        return std::nullopt;
    std::sort(luminances.begin(), luminances.end());
    const double nearlyDarkest = luminances[luminances.size() / 5];
    const double nearlyLightest = luminances[luminances.size() * 4 / 5];
    // White and black contrast with this alike: (1 + 0.05) / (L + 0.05) = (L + 0.05) / 0.05.
    const double evenContrast = std::sqrt(1.05 * 0.05) - 0.05;
    if (nearlyLightest < evenContrast)
        return Appearance::vibrantDark;
    return nearlyDarkest >= evenContrast ? std::optional(Appearance::vibrantLight) : std::nullopt;
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
