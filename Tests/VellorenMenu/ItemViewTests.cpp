#include "Tests/Support/QtTest.h"
#include "VellorenMenu/CreateMeetingItemView.h"
#include "VellorenMenu/ItemView.h"
#include "VellorenMenu/MeetingButton.h"
#include "VellorenMenu/RowButton.h"
#include "VellorenMenu/UpcommingMeetingItemView.h"
#include "VellorenMenu/UploadItemView.h"

#include <QEnterEvent>

#include <numbers>

namespace velloren {

namespace {

constexpr QColor grey(236, 236, 236);

/// A row with the outlets that the form would give it.
template <class Row>
struct LoadedRow {
    LoadedRow() {
        row.titleLabel = &title;
        row.heightConstraint = new LayoutConstraint(row);
    }

    Row row;
    Label title{&row};
};

class ItemViewTest : public QtTest {};

class PlainWindow final : public Window {
  public:
    [[nodiscard]] QWidget* contentView() const override { return nullptr; }
};

} // namespace

TEST_F(ItemViewTest, TakesTheHeightOfItsClassWhateverIsStored) {
    LoadedRow<ItemView> plain;
    plain.row.setItemHidden(false);
    EXPECT_EQ(plain.row.heightConstraint->constant(), 34);
    LoadedRow<UpcommingMeetingItemView> meeting;
    meeting.row.setViewHeight(10);
    meeting.row.setItemHidden(false);
    EXPECT_EQ(meeting.row.heightConstraint->constant(), 60);
    EXPECT_EQ(meeting.row.height(), 60);
    meeting.row.setItemHidden(true);
    EXPECT_EQ(meeting.row.heightConstraint->constant(), 0);
    EXPECT_EQ(LoadedRow<CreateMeetingItemView>().row.viewHeight(), 40);
    EXPECT_EQ(LoadedRow<UploadItemView>().row.viewHeight(), 30);
}

TEST_F(ItemViewTest, OnlyKeepsTheFlagWithoutAHeightConstraint) {
    ItemView row;
    row.resize(100, 50);
    row.setItemHidden(true);
    EXPECT_TRUE(row.isItemHidden());
    EXPECT_EQ(row.height(), 50);
}

TEST_F(ItemViewTest, PaintsItsBackground) {
    ItemView row;
    row.resize(10, 10);
    EXPECT_EQ(row.grab().toImage().pixelColor(5, 5), grey);
    row.setBgColor(Qt::red);
    EXPECT_EQ(row.grab().toImage().pixelColor(5, 5), QColor(Qt::red));
}

TEST_F(ItemViewTest, LightsTheCreateRowUpUnderThePointerAndGivesItsColourBack) {
    LoadedRow<CreateMeetingItemView> create;
    create.row.setBgColor(Qt::yellow);
    create.row.awakeFromNib();
    create.row.setItemHidden(false);
    create.row.show();
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QCoreApplication::sendEvent(&create.row, &enter);
    EXPECT_EQ(create.row.bgColor(), QColor(Qt::white));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&create.row, &leave);
    EXPECT_EQ(create.row.bgColor(), QColor(Qt::yellow));
    create.row.resize(500, 40);
    ASSERT_EQ(create.row.trackingAreas().size(), 1u);
    EXPECT_EQ(create.row.trackingAreas().front()->rect, create.row.rect());
}

TEST_F(ItemViewTest, KeepsTheCreateRowLitWhenItWasNeverLoaded) {
    CreateMeetingItemView row;
    row.resize(50, 40);
    row.show();
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QCoreApplication::sendEvent(&row, &enter);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&row, &leave);
    EXPECT_EQ(row.bgColor(), QColor(Qt::white)) << "no colour is known to go back to";
}

TEST_F(ItemViewTest, KeepsWhatAMeetingDoesNotTell) {
    LoadedRow<UpcommingMeetingItemView> row;
    Label time(&row.row);
    row.row.timeLabel = &time;
    row.row.awakeFromNib();
    EXPECT_EQ(row.row.bgColor(), QColor(Qt::white));
    EXPECT_EQ(row.row.meetingId, "");

    row.row.configureForMeeting({"a", "Review", "2001-03-07T14:05:00Z"});
    EXPECT_EQ(row.row.meetingId, "a");
    EXPECT_EQ(row.title.stringValue(), "Review");
    const QString first = time.stringValue();
    EXPECT_FALSE(first.isEmpty());

    row.row.configureForMeeting({});
    row.row.configureForMeeting({std::nullopt, std::nullopt, "tomorrow, perhaps"});
    EXPECT_EQ(row.row.meetingId, "a");
    EXPECT_EQ(row.title.stringValue(), "Review");
    EXPECT_EQ(time.stringValue(), first);
}

TEST_F(ItemViewTest, TellsTheUploadStateAndForgetsIt) {
    LoadedRow<UploadItemView> upload;
    auto* animating = new View(&upload.row);
    animating->setWantsLayer(true);
    animating->resize(16, 16);
    auto* image = new ImageView(animating);
    upload.row.animatingView = animating;
    upload.row.imageView = image;

    upload.row.setSyncing(true);
    EXPECT_FALSE(upload.row.isSyncing());
    EXPECT_EQ(upload.title.stringValue(), "Uploading meeting files");
    ASSERT_TRUE(image->image());
    EXPECT_EQ(image->image()->name(), "sync");
    const auto* rotation = animating->layer()->animationForKey("transform.rotation.z");
    ASSERT_NE(rotation, nullptr);
    EXPECT_EQ(rotation->toValue, std::numbers::pi);
    EXPECT_EQ(rotation->duration.count(), 1.0);
    EXPECT_EQ(animating->layer()->position(), QPointF(8, 8));

    upload.row.setRemaningTime(12);
    EXPECT_EQ(upload.title.stringValue(), "Uploading meeting files (12 min left)");
    upload.row.setRemaningTime(-3);
    EXPECT_EQ(upload.title.stringValue(), "Uploading meeting files (-3 min left)");
    EXPECT_EQ(image->image()->name(), "sync");

    image->layer()->addAnimation(*rotation, "com.VellorenMenu.rotationanimationkey");
    upload.row.setSyncing(false);
    EXPECT_EQ(upload.title.stringValue(), "Up to date");
    EXPECT_EQ(image->image()->name(), "upToDate");
    EXPECT_EQ(image->layer()->animationForKey("com.VellorenMenu.rotationanimationkey"), nullptr);
    EXPECT_NE(animating->layer()->animationForKey("transform.rotation.z"), nullptr) << "the rotation stays";
}

TEST_F(ItemViewTest, HidesTheUploadRowsContentsOnTheWayIntoAWindow) {
    LoadedRow<UploadItemView> upload;
    auto* animating = new View(&upload.row);
    auto* image = new ImageView(animating);
    upload.row.animatingView = animating;
    upload.row.imageView = image;
    upload.row.viewWillMoveToWindow(nullptr);
    EXPECT_FALSE(upload.title.isHidden());
    PlainWindow window;
    moveToSuperview(upload.row, &window);
    EXPECT_TRUE(upload.title.isHidden());
    EXPECT_TRUE(animating->isHidden());
    EXPECT_TRUE(image->isHidden());
    moveToSuperview(upload.row, nullptr);
}

TEST_F(ItemViewTest, SkipsTheUploadStepsWhoseOutletsAreMissing) {
    UploadItemView bare;
    bare.startActivity();
    bare.setRemaningTime(1);
    bare.makeUptoDate();
    EXPECT_EQ(bare.remaningTime(), 1);
}

TEST_F(ItemViewTest, StylesAMeetingButtonOnceWhenItIsLoaded) {
    MeetingButton button;
    EXPECT_FALSE(button.attributedTitle()) << "made in code it keeps the platform's style";
    button.setText("Open");
    button.awakeFromNib();
    ASSERT_TRUE(button.attributedTitle());
    EXPECT_EQ(button.attributedTitle()->foregroundColor, QColor(87, 87, 87));
    EXPECT_TRUE(button.attributedTitle()->alignment & Qt::AlignHCenter);
    button.setTextColor(Qt::red);
    button.setText("Shut");
    EXPECT_EQ(button.attributedTitle()->text, "Open");
    EXPECT_EQ(button.attributedTitle()->foregroundColor, QColor(87, 87, 87));

    MeetingButton coloured;
    coloured.setProperty("textColor", QColor(Qt::red));
    coloured.awakeFromNib();
    EXPECT_EQ(coloured.attributedTitle()->foregroundColor, QColor(Qt::red));
}

} // namespace velloren
