#pragma once

#include "Tests/Support/HostDesktop.h"

#include <QRegularExpression>
#include <QString>

namespace velloren {

/// The desktop that most tests use: Xfce's, with its panel.
class VirtualDesktop : public HostDesktop {
  public:
    /// Where the only icon of the tray stands, and a place that is nobody's.
    static constexpr QPoint icon{width - 23, 16};
    static constexpr QPoint elsewhere{300, 500};
    /// From the icon's middle up to the margin around its glyph.
    static constexpr QPoint aboveGlyph{0, 10};

    VirtualDesktop() : HostDesktop("xfce") { startBar(); }

    /// Kills the panel, as a crash does, and waits until its tray is gone.
    void stopPanel() {
        stopBar();
        waitUntil([this] { return !hasTray(); });
    }

    [[nodiscard]] bool hasTray() const { return bus().hasOwner("org.kde.StatusNotifierWatcher"); }

    /// The items in the tray.
    [[nodiscard]] int itemCount() const {
        const auto items = bus().call(
            "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties.Get",
            {"string:org.kde.StatusNotifierWatcher", "string:RegisteredStatusNotifierItems"});
        return int(QString::fromStdString(items.value_or("")).count(QStringLiteral("string \"")));
    }

    /// The window of the popover, shadow included; none while it is closed.
    [[nodiscard]] std::optional<QRect> popover() const {
        return agentWindow([](QSize size) { return size.width() >= 320; });
    }

    /// The menu of the popover; none while it is closed.
    [[nodiscard]] std::optional<QRect> menu() const {
        return agentWindow([](QSize size) { return size.width() < 320 && size.height() > 50; });
    }

    /// The icon's window in a tray that takes in windows; none while it is in none.
    [[nodiscard]] std::optional<QRect> legacyIcon() const {
        return agentWindow([](QSize size) { return size.width() >= 16 && size.width() <= 50; });
    }

  private:
    [[nodiscard]] std::optional<QRect> agentWindow(const std::function<bool(QSize)>& fits) const {
        std::string windows;
        run({"xdotool", "search", "--onlyvisible", "--class", "velloren-menu", "getwindowgeometry", "--shell",
             "%@"},
            &windows);
        static const QRegularExpression window(
            QStringLiteral("X=(-?\\d+)\nY=(-?\\d+)\nWIDTH=(\\d+)\nHEIGHT=(\\d+)"));
        for (auto matches = window.globalMatch(QString::fromStdString(windows)); matches.hasNext();) {
            const auto match = matches.next();
            const QRect geometry(match.captured(1).toInt(), match.captured(2).toInt(),
                                 match.captured(3).toInt(), match.captured(4).toInt());
            if (fits(geometry.size()))
                return geometry;
        }
        return std::nullopt;
    }
};

} // namespace velloren
