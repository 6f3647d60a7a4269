#pragma once

class QWidget;

namespace velloren {

/// Owns one view and is told when it is about to appear, has appeared and has gone again. Main thread only.
class ViewController {
  public:
    ViewController() = default;
    ViewController(const ViewController&) = delete;
    ViewController& operator=(const ViewController&) = delete;
    virtual ~ViewController() = default;

    /// Lives as long as the controller.
    [[nodiscard]] virtual QWidget& view() = 0;

    virtual void viewDidLoad() {}

    virtual void viewWillAppear() {}

    virtual void viewDidAppear() {}

    virtual void viewDidDisappear() {}
};

} // namespace velloren
