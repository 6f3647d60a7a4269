#pragma once

#include "Platform/Freedesktop/Windowing/Wayland/LayerShell.h"
#include "Platform/Views/WindowServer.h"

#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

class QScreen;

namespace velloren {

class LayerSurface;
class MaximizedSize;
class OverlayEvents;
class ScreenOverlay;

/// A Wayland compositor with a layer shell. Nobody tells there where the pointer is, and where the bars are,
/// and what is pressed outside one's own surfaces. So a popover comes with a transparent surface over every
/// screen: the compositor says where on it the pointer is, and gives it the presses, which therefore have no
/// other effect than to close the popover. Losing the keyboard's focus would not do instead: on compositors
/// where it follows the pointer it is lost on the way from the bar to the popover.
///
/// Known is thus the pointer, and the size of what the bars of a screen leave free, or leave a window there;
/// which side they are at is guessed (BarGuess). The pointer is believed first, as hosts count in whatever
/// they like, within the icon even; a number of theirs that is in no bar is not believed at all. Else the
/// pointer, the place of the latest press, or the end of the bar where icons usually are. Nobody waits for
/// the pointer's place for long: not all compositors tell it.
///
/// The popover is among the bars; only where a full-screen window hides it does it go in front of
/// that, as some compositors show what is there on a locked screen, too. Where the pointer and the keyboard
/// are taken away altogether, as by who locks the screen, its owner is asked to close it.
///
/// The popover stays on its screen when the workspace there changes. Qt's own pop-ups become parts of it.
class LayerWindowServer final : public QObject, public WindowServer {
    Q_OBJECT

  public:
    /// Presses on those surfaces become these events, which outlive this.
    explicit LayerWindowServer(OverlayEvents& events);
    ~LayerWindowServer() override;

    [[nodiscard]] std::optional<QPoint> pointerLocation() const override { return std::nullopt; }

    [[nodiscard]] bool isComposited() const override { return true; }

    void preparePopover(QWidget& window, ChangeHandler compositingChanged) override;

    void findSite(QWidget& window, const QRect& anchor, SiteHandler found) override;
    void showPopover(QWidget& window, const QRect& frame) override;
    [[nodiscard]] bool hidePopover(QWidget& window) override;

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct ScreenView;

    void lookAtScreens();
    void lookAtScreen(QScreen& screen);
    void leaveScreens();
    void answerWhenKnown();
    void answer();
    void appear(ScreenView& view);
    void appear(QWidget& window);
    void raiseIfHidden();
    void closeIfAbsent();
    void followPointer(QObject& window, QEvent::Type event);
    [[nodiscard]] std::optional<QPoint> pointer() const;
    [[nodiscard]] PopoverSite siteAtIcon();
    [[nodiscard]] PopoverSite siteNearby() const;
    [[nodiscard]] std::optional<QPoint> placeOfIcon(QPoint number) const;
    [[nodiscard]] std::optional<QPoint> placeIn(QPoint number) const;
    [[nodiscard]] QPoint likelyPlaceOn(const QScreen& screen) const;
    [[nodiscard]] int gapAroundBars() const;
    [[nodiscard]] bool isInBar(QPoint place) const;
    [[nodiscard]] const ScreenView* viewAt(QPoint place) const;
    [[nodiscard]] QSize freeOf(const ScreenView* view, const QScreen& screen) const;
    void takeIn(QWidget& popUp);
    void leaveOutOwnWindows();

    OverlayEvents& events;
    LayerShell shell;
    std::vector<std::unique_ptr<ScreenView>> views;
    std::unique_ptr<MaximizedSize> windowProbe;
    std::optional<QSize> maximized;
    QTimer patience; ///< with the compositor, then with the pointer
    QTimer hiding;   ///< until what hides the popover is believed to
    QTimer absence;  ///< of pointer or keyboard
    std::unique_ptr<CompositorNotice> shellKnown;
    std::unique_ptr<CompositorNotice> allShown;
    std::unique_ptr<CompositorNotice> scaleKnown;
    std::unique_ptr<CompositorNotice> seen;
    QPointer<QObject> underPointer; ///< which window of Qt's is, while the popover is shown
    QRect siteAnchor;
    SiteHandler siteHandler;
    std::optional<QPoint> latestPlace;
    QPointer<QWidget> popover;
    std::vector<QPointer<QWidget>> popUps;
    std::unique_ptr<LayerSurface> role;
    bool openedAtPointer = false;
    bool isSeen = false; ///< the popover; until then nothing leads through to it
    bool takingIn = false;
};

} // namespace velloren
