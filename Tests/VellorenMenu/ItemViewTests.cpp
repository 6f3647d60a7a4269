#include "Tests/Support/ManualRunLoop.h"
#include "Tests/Support/QtTest.h"
#include "VellorenMenu/MainViewController.h"
#include "VellorenMenu/MeetingButton.h"

#include <QEnterEvent>

namespace velloren {

namespace {

class ItemViewTest : public QtTest {
  protected:
    ~ItemViewTest() override { SharedInstance<RunLoop>::reset(); }

    ManualRunLoop& loop = ManualRunLoop::install();
    std::unique_ptr<MainViewController> form = MainViewController::controller();
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
    const std::function<void()> ends[] = {[&] { row.hide(); },
                                          [&] {
                                              QEvent leave(QEvent::Leave);
                                              QCoreApplication::sendEvent(&row, &leave);
                                          }};
    for (const auto& end : ends) {
        row.show();
        QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
        QCoreApplication::sendEvent(&row, &enter);
        EXPECT_EQ(painted(), QColor(Qt::white));
        end();
        EXPECT_EQ(painted(), QColor(Qt::yellow));
    }
}

TEST_F(ItemViewTest, KeepsWhatAMeetingDoesNotTell) {
    UpcommingMeetingItemView& row = *form->firstMeetingView;
    EXPECT_EQ(row.bgColor(), QColor(Qt::white));
    row.configureForMeeting({"a", "Review", "2001-03-07T14:05:00Z"});
    const QString first = row.timeLabel->stringValue();
    EXPECT_FALSE(first.isEmpty());
    row.configureForMeeting({});
    row.configureForMeeting({std::nullopt, std::nullopt, "tomorrow, perhaps"});
    EXPECT_EQ(row.meetingId, "a");
    EXPECT_EQ(row.titleLabel->stringValue(), "Review");
    EXPECT_EQ(row.timeLabel->stringValue(), first);
    for (const char* title : {" ", "Design"}) {
        row.configureForMeeting({std::nullopt, title, std::nullopt});
        EXPECT_EQ(row.titleLabel->isHidden(), *title == ' ') << "no gap where the title is empty";
    }
}

TEST_F(ItemViewTest, TellsTheUploadStateAndForgetsIt) {
    UploadItemView& row = *form->uploadItemView;
    const auto title = [&] { return row.titleLabel->stringValue(); };
    row.setItemHidden(false);
    EXPECT_EQ(row.heightConstraint->constant(), 30);
    row.animatingView->resize(16, 16);
    row.setSyncing(true);
    EXPECT_FALSE(row.isSyncing());
    EXPECT_EQ(title(), "Uploading meeting files");
    const Layer& turning = *row.animatingView->layer();
    const auto* rotation = turning.animationForKey("transform.rotation.z");
    ASSERT_NE(rotation, nullptr);
    EXPECT_EQ(turning.position(), QPointF(8, 8));
    for (const int minutes : {12, -3}) {
        row.setRemaningTime(minutes);
        EXPECT_EQ(title(), QString("Uploading meeting files (%1 min left)").arg(minutes));
        EXPECT_EQ(row.imageView->image()->name(), "sync");
    }
    const auto removedKey = "com.VellorenMenu.rotationanimationkey";
    row.imageView->layer()->addAnimation(*rotation, removedKey);
    row.setSyncing(false);
    EXPECT_EQ(title(), "Up to date");
    EXPECT_EQ(row.imageView->image()->name(), "upToDate");
    EXPECT_EQ(row.imageView->layer()->animationForKey(removedKey), nullptr);
    EXPECT_NE(turning.animationForKey("transform.rotation.z"), nullptr) << "the rotation stays";
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
}

} // namespace velloren
