#pragma once

#include "Platform/Desktop/StatusMenu.h"
#include "Platform/Views/View.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velloren {

/// The view in the bar that stands for a status item. It is never a window here: the bar's host shows a
/// picture of it. Presses that the host reports go to the view at its centre.
class StatusBarButton final : public View {
    Q_OBJECT

  public:
    /// `size` in points; at least one in each direction.
    explicit StatusBarButton(QSize size);

    /// The host reports a press at `position` on the screen.
    void press(QPoint position);

    /// What comes next is not the effect of a press.
    void forgetPress() { latestPress.reset(); }

    /// Around the place of the latest press; empty where there was none.
    [[nodiscard]] QRect rectOnScreen(const QRect& rect) const override;

    /// A square picture of `side` pixels: the centre of the button. As long as nobody saw the bar, it
    /// stands on a ground of its own, a little larger, that tells it from a bar of the other kind.
    [[nodiscard]] QImage picture(int side);

    /// What the bar was seen to look like, as `Appearance` calls it; none when it can no longer be seen.
    void setSeenAppearance(const std::optional<std::string>& name);

    /// Called once, when a bar first takes the picture.
    void setFirstShownHandler(std::function<void()> handler) { firstShown = std::move(handler); }

    /// Called, at the earliest after the present event, when the picture may have changed.
    void setDisplayHandler(std::function<void()> handler) { display = std::move(handler); }

  protected:
    void displayNeeded() override;
    void changeEvent(QEvent* event) override;
    void childEvent(QChildEvent* event) override;

  private:
    std::function<void()> display;
    std::function<void()> firstShown;
    std::optional<QPoint> latestPress;
    bool displayPending = false;
};

/// One item of the bar. It stands there until it is released.
class StatusItem {
  public:
    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    virtual ~StatusItem() = default;

    /// The item's button; none when the desktop gives it none. Lives as long as the item.
    [[nodiscard]] virtual StatusBarButton* button() = 0;

    /// Whether the host may show the item's tool tip, as it may at first: not over what the item has opened.
    virtual void setToolTipAllowed(bool allowed) = 0;

    /// What hosts that open a menu list in it. Lives as long as the item.
    [[nodiscard]] StatusMenu& menu() { return itemMenu; }

  private:
    StatusMenu itemMenu;
};

/// The desktop's bar of status items. Main thread only.
class StatusBar {
  public:
    StatusBar() = default;
    StatusBar(const StatusBar&) = delete;
    StatusBar& operator=(const StatusBar&) = delete;
    virtual ~StatusBar() = default;

    /// The bar of this session, provided through SharedInstance<StatusBar>.
    static StatusBar& systemStatusBar();

    /// A new item, `length` points wide.
    [[nodiscard]] virtual std::unique_ptr<StatusItem> statusItemWithLength(double length) = 0;
};

} // namespace velloren
