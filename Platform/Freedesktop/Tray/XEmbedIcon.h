#pragma once

#include <QAbstractNativeEventFilter>
#include <QPoint>
#include <QSize>

#include <cstdint>
#include <functional>
#include <string>

namespace velloren {

class StatusBarButton;

/// A status item in a tray of the older kind, which takes in windows (XEmbed). It stands there while it is
/// wanted and such a tray exists, and moves on to the tray that follows. Without an X display there is none.
/// Main thread only.
class XEmbedIcon final : private QAbstractNativeEventFilter {
  public:
    /// `pressed` is told of presses of the left and the right button, by their place on the screen in the
    /// screen's own pixels. The button outlives this.
    XEmbedIcon(StatusBarButton& button, std::string title, std::function<void(QPoint)> pressed);
    ~XEmbedIcon() override;

    void setWanted(bool wanted);

    /// The picture of the button may have changed.
    void redraw();

  private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void buttonPressed(unsigned which, QPoint place);
    void dock();
    void undock();
    void createWindow();
    [[nodiscard]] std::uint32_t visualOfTray() const;

    StatusBarButton& button;
    std::string title;
    std::function<void(QPoint)> pressed;
    bool isWanted = false;
    std::uint32_t tray = 0;   ///< the window that owns the tray's selection; 0 while there is none
    std::uint32_t window = 0; ///< the icon's; 0 while it is in no tray
    std::uint8_t depth = 0;
    QSize size;
};

} // namespace velloren
