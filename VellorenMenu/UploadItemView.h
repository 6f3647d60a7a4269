#pragma once

#include "Platform/Views/ImageView.h"
#include "VellorenMenu/ItemView.h"

#include <cstdint>

namespace velloren {

/// The row that tells whether meeting files are being uploaded. It has no memory of its state: every call
/// sets image and text afresh. Main thread only.
class UploadItemView final : public ItemView {
    Q_OBJECT

  public:
    using ItemView::ItemView;

    QPointer<ImageView> imageView;
    /// The view whose layer carries the rotation.
    QPointer<View> animatingView;

    [[nodiscard]] double viewHeight() const override { return 30.0; }

    /// Always false, whatever the row shows.
    [[nodiscard]] bool isSyncing() const { return false; }

    /// Shows the uploading state, or that everything is up to date.
    void setSyncing(bool syncing);

    /// In minutes.
    [[nodiscard]] std::int64_t remaningTime() const { return minutesLeft; }

    /// Also puts the minutes into the title.
    void setRemaningTime(std::int64_t minutes);

    void startActivity();
    void stopActivity();
    void makeUptoDate();

    /// Hides the row's contents on the way into a window; nothing shows them again.
    void viewWillMoveToWindow(Window* window) override;

  private:
    void display(const QString& imageName, const QString& title);

    std::int64_t minutesLeft = 0;
};

} // namespace velloren
