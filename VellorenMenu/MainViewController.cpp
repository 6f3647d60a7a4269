#include "VellorenMenu/MainViewController.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/RunLoop.h"
#include "Services/VLogger.h"
#include "Services/VMeetingManager.h"
#include "Services/VSyncManager.h"
#include "Shared/VApp.h"
#include "VellorenMenu/MenuAppDelegate.h"
#include "ui_Main.h"

namespace velloren {

namespace {

constexpr auto unit = "VellorenMenu/MainViewController";

template <class Row>
Row& required(const QPointer<Row>& outlet) {
    if (!outlet)
        fatalError("a row of the popover is missing from its form");
    return *outlet;
}

void setRow(ItemView& row, double height, bool hidden) {
    if (row.heightConstraint)
        row.heightConstraint->setConstant(height);
    row.setItemHiddenFlag(hidden);
}

void show(ItemView& row) {
    setRow(row, row.viewHeight(), false);
}

void collapse(ItemView& row) {
    setRow(row, 0, true);
}

std::string printedCount(std::optional<std::size_t> count) {
    return count ? std::to_string(*count) : "unknown: too many to count in time";
}

void bind(ItemView* row, Label* titleLabel) {
    row->titleLabel = titleLabel;
    row->heightConstraint = new LayoutConstraint(*row);
}

void bind(UpcommingMeetingItemView* row, Label* titleLabel, Label* timeLabel, QAbstractButton* openButton) {
    bind(row, titleLabel);
    row->timeLabel = timeLabel;
    row->openButton = openButton;
}

} // namespace

MainViewController::MainViewController() : rootView(std::make_unique<MainContentView>()) {
    Ui::Main form;
    form.setupUi(rootView.get());
    form.uploadItemAnimatingView->setWantsLayer(true);

    noMeetingView = form.noMeetingView;
    bind(form.noMeetingView, form.noMeetingTitleLabel);

    firstMeetingView = form.firstMeetingView;
    bind(form.firstMeetingView, form.firstMeetingTitleLabel, form.firstMeetingTimeLabel,
         form.firstMeetingOpenButton);
    secondMeetingView = form.secondMeetingView;
    bind(form.secondMeetingView, form.secondMeetingTitleLabel, form.secondMeetingTimeLabel,
         form.secondMeetingOpenButton);
    thridMeetingView = form.thridMeetingView;
    bind(form.thridMeetingView, form.thridMeetingTitleLabel, form.thridMeetingTimeLabel,
         form.thridMeetingOpenButton);

    createMeetingView = form.createMeetingView;
    bind(form.createMeetingView, form.createMeetingTitleLabel);
    createMeetingView->createButton = form.createMeetingButton;
    form.createMeetingImageView->setImage(Image::named(QStringLiteral("createMeeting")));

    uploadItemView = form.uploadItemView;
    bind(form.uploadItemView, form.uploadItemTitleLabel);
    uploadItemView->imageView = form.uploadItemImageView;
    uploadItemView->animatingView = form.uploadItemAnimatingView;

    awakeFromNib(*rootView);
}

MainViewController::~MainViewController() = default;

std::unique_ptr<MainViewController> MainViewController::controller() {
    std::unique_ptr<MainViewController> controller(new MainViewController);
    controller->viewDidLoad();
    return controller;
}

void MainViewController::viewWillAppear() {
    ViewController::viewWillAppear();
    showNoMeetingsView();
    const bool running = VApp(VApp::main).isRunning();
    Logger::sharedInstance().debug(
        std::string("MainViewController viewWillAppear(), Velloren main app is running=") +
            (running ? "true" : "false"),
        {unit, "viewWillAppear()", 36});
    if (!showCreateRowForUser())
        return;
    if (VApp(VApp::main).isRunning())
        fetchThroughDelegate();
    else
        loadUpcoming(fetchMeetings());
}

void MainViewController::viewDidAppear() {
    ViewController::viewDidAppear();
    UploadItemView& row = required(uploadItemView);
    if (SyncManager::sharedInstance().isSyncing())
        row.startActivity();
    else
        row.makeUptoDate();
    isOnScreen = true;
    followRelativeDates();
}

void MainViewController::viewDidDisappear() {
    isOnScreen = false;
    nextChangeOfDates = {};
    ViewController::viewDidDisappear();
}

bool MainViewController::showCreateRowForUser() {
    const auto user = loggedInUser();
    if (!user) {
        collapse(required(createMeetingView));
        return false;
    }
    Logger::sharedInstance().debug("Velloren Menu: user currently logged in main app " + user->description(),
                                   {unit, "viewWillAppear()", 47});
    show(required(createMeetingView));
    return true;
}

void MainViewController::fetchThroughDelegate() {
    if (auto* delegate = MenuAppDelegate::ofApplication())
        fetchFromMainApp(*delegate, [this](const FetchedMeetings& meetings) { loadUpcoming(meetings); });
}

FetchedMeetings MainViewController::fetchMeetings() {
    auto next = MeetingFetcher().fetchNextMeetingsSortedByDate(true, mostMeetingsShown);
    Logger::sharedInstance().debug(next ? "Fetching from Realm, meetings.count=" + printedCount(next->count)
                                        : std::string("Fetching from Realm failed, returned object is nil"),
                                   {unit, "fetchMeetings()"});
    return next ? FetchedMeetings(std::move(next->first)) : std::nullopt;
}

std::array<UpcommingMeetingItemView*, 3> MainViewController::meetingRows() const {
    return {&required(firstMeetingView), &required(secondMeetingView), &required(thridMeetingView)};
}

void MainViewController::showNoMeetingsView() {
    show(required(noMeetingView));
    for (ItemView* row : meetingRows())
        collapse(*row);
}

void MainViewController::refreshRelativeDates() {
    for (auto* row : meetingRows()) {
        if (!row->isItemHidden())
            row->refreshRelativeDate();
    }
    followRelativeDates();
}

void MainViewController::followRelativeDates() {
    nextChangeOfDates = {};
    if (!isOnScreen)
        return;
    std::optional<Date> next;
    for (const auto* row : meetingRows()) {
        const auto change = row->isItemHidden() ? std::nullopt : row->nextChangeOfRelativeDate();
        if (change && (!next || *change < *next))
            next = change;
    }
    if (next)
        nextChangeOfDates = RunLoop::main().postAt(*next, [this] { refreshRelativeDates(); });
}

void MainViewController::loadUpcoming(const FetchedMeetings& answer) {
    const auto meetings = shownMeetings(answer);
    if (meetings.empty())
        show(required(noMeetingView));
    else
        collapse(required(noMeetingView));
    auto next = meetings.begin();
    for (auto* row : meetingRows()) {
        if (next != meetings.end()) {
            show(*row);
            row->configureForMeeting(*next++);
        } else {
            collapse(*row);
        }
    }
    followRelativeDates();
}

} // namespace velloren
