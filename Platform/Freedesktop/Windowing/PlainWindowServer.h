#pragma once

#include "Platform/Views/WindowServer.h"

namespace velloren {

/// A display that blends windows, places them itself, and tells nothing about the pointer: a Wayland
/// compositor without a layer shell. Main thread only.
class PlainWindowServer : public WindowServer {
  public:
    [[nodiscard]] std::optional<QPoint> pointerLocation() const override { return std::nullopt; }

    [[nodiscard]] bool isComposited() const override { return true; }

    void preparePopover(QWidget&, ChangeHandler) override {}

    /// An anchor is what a host named: of two places it may mean, the one in a bar.
    void findSite(QWidget& window, const QRect& anchor, SiteHandler found) override;
    void showPopover(QWidget& window, const QRect& frame) override;

    /// A window with the window manager has a place and a history there: there is a new one for each showing.
    [[nodiscard]] bool hidePopover(QWidget& window) override;
};

} // namespace velloren
