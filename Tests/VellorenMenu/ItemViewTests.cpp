#include "Tests/Support/QtTest.h"
#include "VellorenMenu/CreateMeetingItemView.h"
#include "VellorenMenu/MeetingButton.h"
#include "VellorenMenu/UpcommingMeetingItemView.h"
#include "VellorenMenu/UploadItemView.h"

#include <QEnterEvent>

#include <numbers>

namespace velloren {

namespace {

using ItemViewTest = QtTest;

/// The upload row with the outlets that the form would give it.
struct LoadedUpload {
    LoadedUpload() {
        row.titleLabel = &title;
        animating.setWantsLayer(true);
        animating.resize(16, 16);
        row.animatingView = &animating;
        row.imageView = &image;
    }

    UploadItemView row;
    Label title{&row};
    View animating{&row};
    ImageView image{&animating};
};

class PlainWindow final : public Window {
  public:
    [[nodiscard]] QWidget* contentView() const override { return nullptr; }
};

} // namespace

TEST_F(ItemViewTest, LightsTheCreateRowUpUnderThePointerAndGivesItsColourBack) {
    CreateMeetingItemView row;
    row.setBgColor(Qt::yellow);
    row.awakeFromNib();
    row.show();
    row.resize(500, 40);
    ASSERT_EQ(row.trackingAreas().size(), 1u);
    EXPECT_EQ(row.trackingAreas().front()->rect, row.rect());
    const auto painted = [&] { return row.grab().toImage().pixelColor(250, 20); };
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QCoreApplication::sendEvent(&row, &enter);
    EXPECT_EQ(painted(), QColor(Qt::white));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&row, &leave);
    EXPECT_EQ(painted(), QColor(Qt::yellow));
    EXPECT_EQ(ItemView().bgColor(), QColor(236, 236, 236)) << "of the rows that choose none";
}

TEST_F(ItemViewTest, KeepsWhatAMeetingDoesNotTell) {
    UpcommingMeetingItemView row;
    Label title(&row);
    Label time(&row);
    row.titleLabel = &title;
    row.timeLabel = &time;
    row.awakeFromNib();
    EXPECT_EQ(row.bgColor(), QColor(Qt::white));
    row.configureForMeeting({"a", "Review", "2001-03-07T14:05:00Z"});
    const QString first = time.stringValue();
    EXPECT_FALSE(first.isEmpty());
    row.configureForMeeting({});
    row.configureForMeeting({std::nullopt, std::nullopt, "tomorrow, perhaps"});
    EXPECT_EQ(row.meetingId, "a");
    EXPECT_EQ(title.stringValue(), "Review");
    EXPECT_EQ(time.stringValue(), first);
}

TEST_F(ItemViewTest, TellsTheUploadStateAndForgetsIt) {
    LoadedUpload upload;
    upload.row.heightConstraint = new LayoutConstraint(upload.row);
    upload.row.setItemHidden(false);
    EXPECT_EQ(upload.row.height(), 30);
    upload.row.setSyncing(true);
    EXPECT_FALSE(upload.row.isSyncing());
    EXPECT_EQ(upload.title.stringValue(), "Uploading meeting files");
    const Layer& turning = *upload.animating.layer();
    const auto* rotation = turning.animationForKey("transform.rotation.z");
    ASSERT_NE(rotation, nullptr);
    EXPECT_EQ(rotation->toValue, std::numbers::pi);
    EXPECT_EQ(rotation->duration.count(), 1.0);
    EXPECT_EQ(turning.position(), QPointF(8, 8));
    for (const int minutes : {12, -3}) {
        upload.row.setRemaningTime(minutes);
        EXPECT_EQ(upload.title.stringValue(), QString("Uploading meeting files (%1 min left)").arg(minutes));
        EXPECT_EQ(upload.image.image()->name(), "sync");
    }
    const auto removedKey = "com.VellorenMenu.rotationanimationkey";
    upload.image.layer()->addAnimation(*rotation, removedKey);
    upload.row.setSyncing(false);
    EXPECT_EQ(upload.title.stringValue(), "Up to date");
    EXPECT_EQ(upload.image.image()->name(), "upToDate");
    EXPECT_EQ(upload.image.layer()->animationForKey(removedKey), nullptr);
    EXPECT_NE(turning.animationForKey("transform.rotation.z"), nullptr) << "the rotation stays";
}

TEST_F(ItemViewTest, HidesTheUploadRowsContentsOnTheWayIntoAWindow) {
    LoadedUpload upload;
    upload.row.viewWillMoveToWindow(nullptr);
    EXPECT_FALSE(upload.title.isHidden());
    PlainWindow window;
    moveToSuperview(upload.row, &window);
    EXPECT_TRUE(upload.title.isHidden() && upload.animating.isHidden() && upload.image.isHidden());
    moveToSuperview(upload.row, nullptr);
}

TEST_F(ItemViewTest, StylesAMeetingButtonOnceWhenItIsLoaded) {
    MeetingButton button;
    EXPECT_FALSE(button.attributedTitle()) << "made in code it keeps the platform's style";
    button.setText("Open");
    button.setTextColor(Qt::red);
    button.awakeFromNib();
    button.setTextColor(Qt::blue);
    button.setText("Shut");
    ASSERT_TRUE(button.attributedTitle());
    EXPECT_EQ(button.attributedTitle()->text, "Open");
    EXPECT_EQ(button.attributedTitle()->foregroundColor, QColor(Qt::red));
    EXPECT_TRUE(button.attributedTitle()->alignment & Qt::AlignHCenter);
    MeetingButton colourless;
    colourless.awakeFromNib();
    EXPECT_EQ(colourless.attributedTitle()->foregroundColor, QColor(87, 87, 87));
}

} // namespace velloren
