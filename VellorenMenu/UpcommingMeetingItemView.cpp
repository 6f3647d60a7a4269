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
    describeButton();
    if (meeting.id)
        meetingId = *meeting.id;
}

void UpcommingMeetingItemView::refreshRelativeDate() {
    showRelativeDate(shownStartTime);
    describeButton();
}

void UpcommingMeetingItemView::showRelativeDate(const std::string& startTime) {
    const auto time = relativeDateFromDateString(startTime);
    if (!time)
        return;
    shownStartTime = startTime;
    if (timeLabel)
        timeLabel->setStringValue(*time);
}

void UpcommingMeetingItemView::describeButton() {
    QStringList texts;
    for (const Label* label : {titleLabel.data(), timeLabel.data()}) {
        if (label && !label->stringValue().trimmed().isEmpty())
            texts.append(label->stringValue());
    }
    if (openButton)
        openButton->setAccessibleDescription(texts.join(QStringLiteral(", ")));
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
