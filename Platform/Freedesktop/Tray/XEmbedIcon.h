#pragma once

#include <QAbstractNativeEventFilter>
#include <QPoint>
#include <QSize>

#include <cstdint>
#include <functional>
#include <string>

namespace velloren {

class StatusBarButton;

/// A status item in a tray of the older kind, which takes in windows (XEmbed). It stands there, in the size
/// that the tray gives it, while it is wanted and such a tray exists, and moves on to the tray that follows.
/// A tray that refuses it or puts it out is asked again a few times at most. It tells the button what it sees
/// of the bar. Without an X display there is none. Main thread only.
class XEmbedIcon final : private QAbstractNativeEventFilter {
  public:
    /// `pressed` is told of presses of the left and the right button, by their place on the screen in the
    /// screen's own pixels. The button outlives this.
    XEmbedIcon(StatusBarButton& button, std::string title, std::function<void(QPoint)> pressed);
    ~XEmbedIcon() override;

    void setWanted(bool wanted);

    [[nodiscard]] bool isInTray() const { return isEmbedded; }

    /// The picture of the button may have changed.
    void redraw();

  private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void buttonPressed(unsigned which, QPoint place);
    void managerAnnounced();
    void trayChanged();
    void reparented(std::uint32_t parent);
    void dock();
    void undock();
    [[nodiscard]] QRect placeOnScreen() const;
    void createWindow();
    [[nodiscard]] std::uint32_t visualOfTray() const;

    StatusBarButton& button;
    std::string title;
    std::function<void(QPoint)> pressed;
    bool isWanted = false;
    std::uint32_t tray = 0;   ///< the window that owns the tray's selection; 0 while there is none
    std::uint32_t window = 0; ///< the icon's; 0 while it is in no tray
    std::uint32_t colormap =
        0; ///< of the window, and as long as it: freed earlier, the window is left without
    bool isEmbedded = false;
    int timesPutOut = 0; ///< by the present tray
    std::uint8_t depth = 0;
    QSize size;
};

} // namespace velloren
