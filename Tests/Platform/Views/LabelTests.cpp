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

    /// How wide the label would like to be, less what `text` takes up.
    int differenceTo(const char* text) {
        return label.sizeHint().width() - label.fontMetrics().horizontalAdvance(QString::fromUtf8(text));
    }

    Label label;
};

} // namespace

TEST_F(LabelTest, ShowsMarkupAsPlainText) {
    show(QStringLiteral("&lt;"), 20);
    EXPECT_EQ(differenceTo("&lt;"), 0);
    show(QStringLiteral("<b>bold</b>"), 20);
    EXPECT_EQ(differenceTo("<b>bold</b>"), 0);
    EXPECT_TRUE(toolTip().contains(QStringLiteral("&lt;b&gt;bold&lt;/b&gt;")));
}

TEST_F(LabelTest, StaysOneLineWhateverTheTextHolds) {
    const int height = label.sizeHint().height();
    const QString broken = QString::fromUtf8("Re\nview\r\u2028of\tall");
    show(broken, 300);
    EXPECT_EQ(label.sizeHint().height(), height);
    EXPECT_EQ(differenceTo("Re view  of all"), 0);
    EXPECT_EQ(label.stringValue(), broken);
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
