#pragma once

#include "Platform/Views/View.h"

namespace velloren {

/// The root view of the popover's content. On entering a window it lays the popover's light grey behind the
/// whole of it, arrow and border included. Main thread only.
class MainContentView final : public View {
    Q_OBJECT

  public:
    explicit MainContentView(QWidget* parent = nullptr);

    void viewDidMoveToWindow() override;
};

} // namespace velloren
