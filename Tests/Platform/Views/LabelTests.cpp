#include "Platform/Views/Label.h"
#include "Tests/Support/QtTest.h"

#include <QHelpEvent>
#include <QToolTip>

namespace velloren {

namespace {

class LabelTest : public QtTest {
  protected:
    static QString toolTipOf(Label& label) {
        QToolTip::hideText();
        QHelpEvent help(QEvent::ToolTip, {5, 5}, label.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(&label, &help);
        return QToolTip::text();
    }

    static QImage picture(Label& label) {
        QImage image(label.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        label.render(&image);
        return image;
    }
};

} // namespace

TEST_F(LabelTest, ShowsMarkupAsPlainText) {
    Label plain;
    Label marked;
    plain.setStringValue(std::string("&lt;"));
    marked.setStringValue(std::string("<b>bold</b>"));
    EXPECT_EQ(marked.sizeHint().width(),
              marked.fontMetrics().horizontalAdvance(QStringLiteral("<b>bold</b>")));
    EXPECT_EQ(plain.sizeHint().width(), plain.fontMetrics().horizontalAdvance(QStringLiteral("&lt;")));

    marked.resize(20, 20);
    marked.show();
    EXPECT_TRUE(toolTipOf(marked).contains(QStringLiteral("&lt;b&gt;bold&lt;/b&gt;")));
}

TEST_F(LabelTest, StaysOneLineWhateverTheTextHolds) {
    Label oneLine;
    oneLine.setStringValue(std::string("Review"));
    Label broken;
    broken.setStringValue(std::string("Re\nview\r\u2028of\tall"));
    EXPECT_EQ(broken.sizeHint().height(), oneLine.sizeHint().height());
    EXPECT_EQ(broken.sizeHint().width(),
              broken.fontMetrics().horizontalAdvance(QStringLiteral("Re view  of all")));
    EXPECT_EQ(broken.stringValue(), QString::fromUtf8("Re\nview\r\u2028of\tall"));
}

TEST_F(LabelTest, ElidesATextOfTenThousandCharactersAndKeepsItWhole) {
    Label label;
    label.setStringValue(std::string(10000, 'W'));
    label.resize(100, 20);
    label.show();
    EXPECT_EQ(label.stringValue().size(), 10000);
    const QImage image = picture(label);
    Label filler;
    filler.setStringValue(std::string(10000, 'W') + "different at the end");
    filler.resize(100, 20);
    EXPECT_EQ(image, picture(filler)) << "the end of an elided text does not show";
    EXPECT_LT(toolTipOf(label).size(), 10000) << "a tool tip has to fit the screen";
}

TEST_F(LabelTest, HasNoToolTipForATextThatFits) {
    Label label;
    label.setStringValue(std::string("Review"));
    label.resize(300, 20);
    label.show();
    EXPECT_EQ(toolTipOf(label), QString());
}

TEST_F(LabelTest, NeverCutsACharacterInTwo) {
    Label label;
    std::string emoji;
    for (int index = 0; index < 600; ++index)
        emoji += "\U0001F389";
    label.setStringValue("x" + emoji);
    EXPECT_TRUE(label.accessibleName().isValidUtf16());
}

} // namespace velloren
