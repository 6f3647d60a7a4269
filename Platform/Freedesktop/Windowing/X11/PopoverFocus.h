#pragma once

#include <QObject>
#include <QTimer>

class QWindow;

namespace velloren {

/// The keyboard's focus of a popover's window on X11, which no window manager sees to. Such a window gets it
/// back on a press in it: some presses elsewhere leave the popover open, but not the keyboard with it. And it
/// gets it back from nobody: window managers lay it aside when they are started anew, or on an empty
/// workspace. No window that somebody could see loses it. Lives as long as the window. Main thread only.
class PopoverFocus final : public QObject {
    Q_OBJECT

  public:
    explicit PopoverFocus(QWindow& window);

    /// For a showing of the window, which was mapped.
    void take();

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void request();
    void takeFromNobody();

    QWindow& window;
    QTimer settled;
    int attemptsLeft = 0;
};

} // namespace velloren
