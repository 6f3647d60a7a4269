#pragma once

#include <QObject>
#include <QRect>

#include <memory>
#include <vector>

class QWidget;

namespace velloren {

class OverlayEvents;

/// Transparent X windows all round what a popover shows, above everything else on every screen, bars
/// included: they take what is pressed there. They follow the popover where it goes. Main thread only.
class WindowsAroundPopover final : public QObject {
    Q_OBJECT

  public:
    /// `popover` is shown, and outlives this, as the events do that the presses become.
    WindowsAroundPopover(QWidget& popover, OverlayEvents& events);
    ~WindowsAroundPopover() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    class Part;

    void surround();

    QWidget& popover;
    OverlayEvents& events;
    QRect surrounded;
    std::vector<std::unique_ptr<Part, void (*)(Part*)>> parts;
};

} // namespace velloren
