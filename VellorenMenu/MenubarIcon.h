#pragma once

#include "Platform/Foundation/RunLoop.h"
#include "Platform/Views/Image.h"
#include "Platform/Views/View.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace velloren {

class MenubarIcon;

/// Receives the presses on the icon.
class MenubarIconDelegate {
  public:
    MenubarIconDelegate() = default;
    MenubarIconDelegate(const MenubarIconDelegate&) = delete;
    MenubarIconDelegate& operator=(const MenubarIconDelegate&) = delete;
    virtual ~MenubarIconDelegate() = default;

    virtual void didMouseDown(MenubarIcon& icon) = 0;
};

/// The product's icon in the bar: black on a light bar, white on a dark one or on the blue of the highlight,
/// and blinking between two images while the main app is syncing. Main thread only.
class MenubarIcon final : public View {
    Q_OBJECT
    Q_PROPERTY(bool highlighted READ isHighlighted WRITE setHighlighted)

  public:
    enum class State : std::uint8_t { syncing, notSyncing };
    /// Which of the two images shows while syncing: the "InSync" one, or the "Default" one.
    enum class SyncIconBlink : std::uint8_t { syncingBlink, notSyncingBlink };

    /// `frame` in points, in the coordinates of the view it is put into.
    explicit MenubarIcon(const QRect& frame);
    ~MenubarIcon() override;

    /// Held weakly: it must be taken away before the delegate goes. None lets presses pass.
    void setDelegate(MenubarIconDelegate* delegate) { pressDelegate = delegate; }

    [[nodiscard]] State state() const { return syncState; }

    /// Shows once `applyState` is called.
    void setState(State state) { syncState = state; }

    void applyState();

    [[nodiscard]] bool isHighlighted() const { return highlighted; }

    void setHighlighted(bool highlight);

    /// None before the icon was drawn or its state applied for the first time.
    [[nodiscard]] const std::optional<Image>& shownImage() const { return syncImage; }

    void awakeFromNib() override;
    void mouseDown(const Event& event) override;

  protected:
    void drawRect(QPainter& painter, const QRect& dirtyRect) override;

  private:
    [[nodiscard]] Image currentImage() const;
    void rebuildSyncLayer();
    void applyHighlight();
    void applyAppearance();
    void syncIconBlinking();
    void toggleBlink();

    std::string rotationAnimationKey = "com.velloren.SyncMeetingAnimcationView.rotationAnimation";
    MenubarIconDelegate* pressDelegate = nullptr;
    State syncState = State::notSyncing;
    bool highlighted = false;
    bool darkMode = false;
    std::optional<Image> syncImage;
    std::shared_ptr<Layer> syncLayer;
    SyncIconBlink syncIconBlink = SyncIconBlink::syncingBlink;
    std::shared_ptr<RunLoop::Timer> timer;
};

} // namespace velloren
