#include "VellorenMenu/UpcommingMeetingItemView.h"

#include "VellorenMenu/ClosePopover.h"
#include "VellorenMenu/DateTexts.h"
#include "VellorenMenu/MenuAppDelegate.h"

namespace velloren {

void UpcommingMeetingItemView::awakeFromNib() {
    ItemView::awakeFromNib();
    setBgColor(Qt::white);
    if (openButton)
        connect(openButton, &QAbstractButton::clicked, this, &UpcommingMeetingItemView::openMeetingClicked);
}

void UpcommingMeetingItemView::configureForMeeting(const Meeting& meeting) {
    if (meeting.startTime)
        showRelativeDate(*meeting.startTime);
    if (meeting.title && titleLabel) {
        titleLabel->setStringValue(*meeting.title);
        titleLabel->setVisible(!titleLabel->stringValue().trimmed().isEmpty()); // no gap above the time
    }
    if (openButton && titleLabel)
        openButton->setAccessibleDescription(titleLabel->stringValue());
    if (meeting.id)
        meetingId = *meeting.id;
}

void UpcommingMeetingItemView::refreshRelativeDate() {
    showRelativeDate(shownStartTime);
}

void UpcommingMeetingItemView::showRelativeDate(const std::string& startTime) {
    const auto time = relativeDateFromDateString(startTime);
    if (!time)
        return;
    shownStartTime = startTime;
    if (timeLabel)
        timeLabel->setStringValue(*time);
}

std::optional<std::string>
UpcommingMeetingItemView::relativeDateFromDateString(const std::string& startTime) {
    const auto start = meetingDateFormatter().dateFromString(startTime);
    if (!start)
        return std::nullopt;
    return relativeDate(*start, std::chrono::time_point_cast<Date::duration>(Date::clock::now()));
}

void UpcommingMeetingItemView::openMeetingClicked() {
    closePopover(*this);
    if (auto* delegate = dynamic_cast<MenuAppDelegate*>(Application::shared().delegate()))
        delegate->openMeeting(meetingId);
}

} // namespace velloren
