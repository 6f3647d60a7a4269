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

/// A row with the outlets that the form would give it.
template <class Row>
struct Loaded {
    Loaded() {
        row.titleLabel = &title;
        row.heightConstraint = new LayoutConstraint(row);
    }

    Row row;
    Label title{&row};
};

struct LoadedUpload : Loaded<UploadItemView> {
    LoadedUpload() {
        animating.setWantsLayer(true);
        animating.resize(16, 16);
        row.animatingView = &animating;
        row.imageView = &image;
    }

    View animating{&row};
    ImageView image{&animating};
};

class PlainWindow final : public Window {
  public:
    [[nodiscard]] QWidget* contentView() const override { return nullptr; }
};

template <class Row>
void expectHeight(int height) {
    Loaded<Row> loaded;
    loaded.row.setItemHidden(true);
    EXPECT_EQ(loaded.row.height(), 0);
    loaded.row.setItemHidden(false);
    EXPECT_EQ(loaded.row.height(), height);
}

} // namespace

TEST_F(ItemViewTest, TakesTheHeightOfItsClass) {
    expectHeight<ItemView>(34);
    expectHeight<UpcommingMeetingItemView>(60);
    expectHeight<CreateMeetingItemView>(40);
    expectHeight<UploadItemView>(30);
    ItemView bare;
    bare.setItemHidden(true);
    EXPECT_TRUE(bare.isItemHidden()) << "without a constraint the flag alone is set";
}

TEST_F(ItemViewTest, PaintsItsBackground) {
    ItemView row;
    row.resize(10, 10);
    EXPECT_EQ(row.grab().toImage().pixelColor(5, 5), QColor(236, 236, 236));
    row.setBgColor(Qt::red);
    EXPECT_EQ(row.grab().toImage().pixelColor(5, 5), QColor(Qt::red));
}

TEST_F(ItemViewTest, LightsTheCreateRowUpUnderThePointerAndGivesItsColourBack) {
    CreateMeetingItemView row;
    row.setBgColor(Qt::yellow);
    row.awakeFromNib();
    row.show();
    row.resize(500, 40);
    ASSERT_EQ(row.trackingAreas().size(), 1u);
    EXPECT_EQ(row.trackingAreas().front()->rect, row.rect());
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QCoreApplication::sendEvent(&row, &enter);
    EXPECT_EQ(row.bgColor(), QColor(Qt::white));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&row, &leave);
    EXPECT_EQ(row.bgColor(), QColor(Qt::yellow));
}

TEST_F(ItemViewTest, KeepsWhatAMeetingDoesNotTell) {
    Loaded<UpcommingMeetingItemView> loaded;
    auto& row = loaded.row;
    Label time(&row);
    row.timeLabel = &time;
    row.awakeFromNib();
    EXPECT_EQ(row.bgColor(), QColor(Qt::white));
    row.configureForMeeting({"a", "Review", "2001-03-07T14:05:00Z"});
    const QString first = time.stringValue();
    EXPECT_FALSE(first.isEmpty());
    row.configureForMeeting({});
    row.configureForMeeting({std::nullopt, std::nullopt, "tomorrow, perhaps"});
    EXPECT_EQ(row.meetingId, "a");
    EXPECT_EQ(loaded.title.stringValue(), "Review");
    EXPECT_EQ(time.stringValue(), first);
}

TEST_F(ItemViewTest, TellsTheUploadStateAndForgetsIt) {
    LoadedUpload upload;
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
    for (const QColor& colour : {QColor(87, 87, 87), QColor(Qt::red)}) {
        MeetingButton button;
        EXPECT_FALSE(button.attributedTitle()) << "made in code it keeps the platform's style";
        button.setText("Open");
        if (colour == Qt::red)
            button.setProperty("textColor", colour);
        button.awakeFromNib();
        button.setTextColor(Qt::blue);
        button.setText("Shut");
        ASSERT_TRUE(button.attributedTitle());
        EXPECT_EQ(button.attributedTitle()->text, "Open");
        EXPECT_EQ(button.attributedTitle()->foregroundColor, colour);
        EXPECT_TRUE(button.attributedTitle()->alignment & Qt::AlignHCenter);
    }
}

} // namespace velloren
