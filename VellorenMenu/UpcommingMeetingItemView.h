#pragma once

#include "Services/VFoundation.h"
#include "Services/VModel.h"
#include "VellorenMenu/ItemView.h"

#include <QAbstractButton>

#include <optional>
#include <string>

namespace velloren {

/// The row of one upcoming meeting: its title, its start relative to now, and a button that opens it.
/// Main thread only.
class UpcommingMeetingItemView final : public ItemView {
    Q_OBJECT

  public:
    using ItemView::ItemView;

    QPointer<Label> timeLabel;
    QPointer<QAbstractButton> openButton;
    /// Empty before the first meeting with an identifier was shown.
    std::string meetingId;

    [[nodiscard]] double viewHeight() const override { return 60.0; }

    void awakeFromNib() override;

    /// Shows the meeting; a field that it lacks leaves the row's earlier value in place.
    void configureForMeeting(const Meeting& meeting);

    /// Shows the start as it reads now.
    void refreshRelativeDate();

    /// When that begins to read differently. None while the row shows no start.
    [[nodiscard]] std::optional<Date> nextChangeOfRelativeDate() const;

    /// The row's text for a start time. None when that cannot be read.
    [[nodiscard]] static std::optional<std::string> relativeDateFromDateString(const std::string& startTime);

    /// Closes the popover and opens the meeting in the main app.
    void openMeetingClicked();

  private:
    void showRelativeDate(const std::string& startTime);
    /// Tells assistive programs what the button opens: all the buttons have the same name.
    void describeButton();

    /// Empty before there was one.
    std::string startTimeOnDisplay;
};

} // namespace velloren
