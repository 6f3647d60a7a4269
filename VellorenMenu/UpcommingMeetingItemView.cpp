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
    const auto time = meeting.startTime ? relativeDateFromDateString(*meeting.startTime) : std::nullopt;
    if (time && timeLabel)
        timeLabel->setStringValue(*time);
    if (meeting.title && titleLabel)
        titleLabel->setStringValue(*meeting.title);
    if (openButton && titleLabel)
        openButton->setAccessibleDescription(titleLabel->stringValue());
    if (meeting.id)
        meetingId = *meeting.id;
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
