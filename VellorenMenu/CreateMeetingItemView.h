#pragma once

#include "VellorenMenu/ItemView.h"

#include <QAbstractButton>

#include <memory>
#include <optional>

namespace velloren {

/// The row that creates a meeting; it lights up under the pointer. Main thread only.
class CreateMeetingItemView final : public ItemView {
    Q_OBJECT

  public:
    using ItemView::ItemView;

    /// Covers the row.
    QPointer<QAbstractButton> createButton;

    [[nodiscard]] double viewHeight() const override { return 40.0; }

    void awakeFromNib() override;
    void updateTrackingAreas() override;

    /// Closes the popover and has the main app create a meeting.
    void createMeetingClicked();

  protected:
    void mouseEntered() override;
    void mouseExited() override;

  private:
    std::shared_ptr<TrackingArea> trackingArea;
    /// None before the row was loaded.
    std::optional<QColor> originalBG;
};

} // namespace velloren
