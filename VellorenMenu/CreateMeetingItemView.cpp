#include "VellorenMenu/CreateMeetingItemView.h"

#include "VellorenMenu/MenuAppDelegate.h"

namespace velloren {

void CreateMeetingItemView::awakeFromNib() {
    ItemView::awakeFromNib();
    originalBG = bgColor();
    if (createButton)
        connect(createButton, &QAbstractButton::clicked, this, &CreateMeetingItemView::createMeetingClicked);
}

void CreateMeetingItemView::updateTrackingAreas() {
    if (trackingArea)
        removeTrackingArea(trackingArea);
    trackingArea = std::make_shared<TrackingArea>(TrackingArea{rect()});
    addTrackingArea(trackingArea);
}

void CreateMeetingItemView::mouseEntered() {
    setBgColor(Qt::white);
    ItemView::mouseEntered();
}

void CreateMeetingItemView::mouseExited() {
    if (originalBG)
        setBgColor(*originalBG);
    ItemView::mouseExited();
}

void CreateMeetingItemView::createMeetingClicked() {
    closePopover(*this);
    if (auto* delegate = MenuAppDelegate::ofApplication())
        delegate->createNewMeeting();
}

} // namespace velloren
