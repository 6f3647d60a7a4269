#pragma once

#include "Platform/Foundation/Subscription.h"
#include "Platform/Views/ViewController.h"
#include "VellorenMenu/CreateMeetingItemView.h"
#include "VellorenMenu/ItemView.h"
#include "VellorenMenu/MainContentView.h"
#include "VellorenMenu/UpcomingMeetings.h"
#include "VellorenMenu/UpcommingMeetingItemView.h"
#include "VellorenMenu/UploadItemView.h"

#include <QPointer>

#include <array>
#include <memory>

namespace velloren {

/// The controller of the popover's content: at most three upcoming meetings, the row that creates one, and
/// the upload row, all fetched and set afresh at every appearance. It keeps no list of its own and outlives
/// every answer of the main app. Main thread only.
class MainViewController final : public ViewController {
  public:
    /// Made from the form `Main`.
    [[nodiscard]] static std::unique_ptr<MainViewController> controller();

    ~MainViewController() override;

    [[nodiscard]] QWidget& view() override { return *rootView; }

    void viewWillAppear() override;
    void viewDidAppear() override;
    void viewDidDisappear() override;

    void showNoMeetingsView();

    /// Lays out the meetings; none is laid out like an empty list.
    void loadUpcoming(const FetchedMeetings& answer);

    /// Reads the local store for as many meetings as there are rows. None when it could not be read.
    [[nodiscard]] FetchedMeetings fetchMeetings();

    // The outlets, set from the form; reaching one that is missing stops the process.
    QPointer<ItemView> noMeetingView;
    QPointer<UpcommingMeetingItemView> firstMeetingView;
    QPointer<UpcommingMeetingItemView> secondMeetingView;
    QPointer<UpcommingMeetingItemView> thridMeetingView;
    QPointer<CreateMeetingItemView> createMeetingView;
    QPointer<UploadItemView> uploadItemView;

  private:
    MainViewController();

    [[nodiscard]] std::array<UpcommingMeetingItemView*, 3> meetingRows() const;
    [[nodiscard]] bool showCreateRowForUser();
    void fetchThroughDelegate();
    void refreshRelativeDates();
    void followRelativeDates();

    bool isOnScreen = false;
    Subscription nextChangeOfDates; ///< while on the screen
    std::unique_ptr<MainContentView> rootView;
};

} // namespace velloren
