#pragma once

#include <QPoint>

#include <functional>

namespace velloren {

/// What takes the presses outside a popover while it is shown. Main thread only.
class PressSource {
  public:
    using Handler = std::function<void(Qt::MouseButton, QPoint)>;

    PressSource() = default;
    PressSource(const PressSource&) = delete;
    PressSource& operator=(const PressSource&) = delete;

    /// Is called for each, with its place on the whole desktop.
    virtual void setPressHandler(Handler handler) = 0;

  protected:
    ~PressSource() = default;
};

} // namespace velloren
