#include "Platform/Views/Label.h"
#include "Tests/Support/QtTest.h"

#include <QHelpEvent>
#include <QScreen>
#include <QToolTip>

namespace velloren {

namespace {

class LabelTest : public QtTest {
  protected:
    void show(const QString& text, int width) {
        label.setStringValue(text);
        label.resize(width, 20);
        label.show();
    }

    QString toolTip() {
        QToolTip::hideText();
        EXPECT_TRUE(waitUntil([] { return QToolTip::text().isEmpty(); }));
        QHelpEvent help(QEvent::ToolTip, {5, 5}, label.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(&label, &help);
        return QToolTip::text();
    }

    Label label;
};

} // namespace

TEST_F(LabelTest, ShowsMarkupAndBreaksAsOnePlainLine) {
    const int height = label.sizeHint().height();
    const QString broken = QString::fromUtf8("&lt;Re\nview\r\u2028of\t<b>all</b>");
    show(broken, 20);
    EXPECT_EQ(label.sizeHint().height(), height);
    EXPECT_EQ(label.sizeHint().width(), label.fontMetrics().horizontalAdvance("&lt;Re view  of <b>all</b>"));
    EXPECT_EQ(label.stringValue(), broken);
    EXPECT_TRUE(toolTip().contains("&lt;b&gt;all&lt;/b&gt;"));
}

TEST_F(LabelTest, TellsWhatDoesNotFitAndNothingElseInAToolTipThatFitsTheScreen) {
    show(QStringLiteral("Review"), 300);
    EXPECT_EQ(toolTip(), QString());
    for (const char* text : {"one_word", "two words "}) {
        show(QString::fromLatin1(text).repeated(1000), 100);
        EXPECT_TRUE(toolTip().contains(QString::fromLatin1(text).repeated(2)));
        for (const QWidget* widget : QApplication::topLevelWidgets())
            EXPECT_TRUE(label.screen()->geometry().contains(widget->geometry())) << text;
    }
    const QImage elided = label.grab().toImage();
    label.setStringValue(label.stringValue() + QStringLiteral("different at the end"));
    EXPECT_EQ(label.grab().toImage(), elided);
}

TEST_F(LabelTest, NeverCutsACharacterInTwo) {
    label.setStringValue("x" + QString::fromUtf8("\U0001F389").repeated(600));
    EXPECT_TRUE(label.accessibleName().isValidUtf16());
}

} // namespace velloren
