#include "VellorenMenu/UpcommingMeetingItemView.h"

#include "Platform/Foundation/RunLoop.h"
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
    showRelativeDate(startTimeOnDisplay);
    describeButton();
}

std::optional<Date> UpcommingMeetingItemView::nextChangeOfRelativeDate() const {
    const auto start = meetingDateFormatter().dateFromString(startTimeOnDisplay);
    return start ? std::optional(velloren::nextChangeOfRelativeDate(*start, RunLoop::main().now()))
                 : std::nullopt;
}

void UpcommingMeetingItemView::showRelativeDate(const std::string& startTime) {
    const auto time = relativeDateFromDateString(startTime);
    if (!time)
        return;
    startTimeOnDisplay = startTime;
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
    return relativeDate(startTime, RunLoop::main().now());
}

void UpcommingMeetingItemView::openMeetingClicked() {
    closePopover(*this);
    if (auto* delegate = MenuAppDelegate::ofApplication())
        delegate->openMeeting(meetingId);
}

} // namespace velloren
