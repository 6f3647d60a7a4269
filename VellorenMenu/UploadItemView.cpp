#include "VellorenMenu/UploadItemView.h"

#include <numbers>

namespace velloren {

namespace {

constexpr auto addedAnimationKey = "transform.rotation.z";
// The rotation is looked for on another layer and under another key than it is added to: the up-to-date state
// shows in image and text alone.
constexpr auto removedAnimationKey = "com.VellorenMenu.rotationanimationkey";

} // namespace

void UploadItemView::setSyncing(bool syncing) {
    if (syncing)
        startActivity();
    else
        makeUptoDate();
}

void UploadItemView::setRemaningTime(std::int64_t minutes) {
    minutesLeft = minutes;
    if (titleLabel)
        titleLabel->setStringValue(QStringLiteral("Uploading meeting files (%1 min left)").arg(minutes));
}

void UploadItemView::startActivity() {
    display(QStringLiteral("sync"), QStringLiteral("Uploading meeting files"));
    if (!animatingView || !animatingView->layer())
        return;
    const BasicAnimation rotation{"transform.rotation.z", std::numbers::pi, std::chrono::seconds(1),
                                  BasicAnimation::forever};
    animatingView->layer()->setAnchorPoint({0.5, 0.5});
    animatingView->layer()->setPosition({animatingView->width() / 2.0, animatingView->height() / 2.0});
    animatingView->layer()->addAnimation(rotation, addedAnimationKey);
}

void UploadItemView::stopActivity() {
    if (imageView && imageView->layer() && imageView->layer()->animationForKey(removedAnimationKey))
        imageView->layer()->removeAnimationForKey(removedAnimationKey);
}

void UploadItemView::makeUptoDate() {
    stopActivity();
    display(QStringLiteral("upToDate"), QStringLiteral("Up to date"));
}

void UploadItemView::viewWillMoveToWindow(Window* window) {
    if (!window)
        return;
    if (imageView)
        imageView->hide();
    if (animatingView)
        animatingView->hide();
    if (titleLabel)
        titleLabel->hide();
}

void UploadItemView::display(const QString& imageName, const QString& title) {
    if (imageView)
        imageView->setImage(Image::named(imageName));
    if (titleLabel)
        titleLabel->setStringValue(title);
}

} // namespace velloren
