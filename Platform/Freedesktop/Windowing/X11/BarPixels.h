#pragma once

#include <QAbstractNativeEventFilter>
#include <QImage>
#include <QPoint>
#include <QTimer>

#include <functional>
#include <optional>
#include <string>

/// What the bars of an X display look like. Places are in the screen's own pixels. Main thread only.
namespace velloren::x11 {

/// The name for `Appearance` of what most of the picture looks like: dark is what white stands out on more
/// than black. None where a good part of it is of the other kind.
[[nodiscard]] std::optional<std::string> appearanceOf(const QImage& picture);

/// The same of the bar at that place, as the screen shows it around the icon that stands there. None where
/// there is no bar, or none that can be seen: hidden, covered, or on a display that does not show itself.
[[nodiscard]] std::optional<std::string> appearanceOfBarAt(QPoint icon);

/// The same of all the bars that can be seen; none unless they look alike.
[[nodiscard]] std::optional<std::string> appearanceOfBars();

/// Tells, a few times, when bars may have come to look otherwise: some time after it was told so, or after
/// the desktop's theme or wallpaper changed, since bars take their time to draw themselves. Wakes nothing up
/// by itself.
class BarChanges final : private QAbstractNativeEventFilter {
  public:
    explicit BarChanges(std::function<void()> settled);
    ~BarChanges() override;

    void expect();

  private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    QTimer settling;
    int looksLeft = 0;
};

} // namespace velloren::x11
