#include "Platform/Views/Fonts.h"
#include "Platform/Views/Label.h"
#include "Tests/Support/QtTest.h"

#include <QFontDatabase>
#include <QHelpEvent>
#include <QScreen>
#include <QToolTip>

#include <algorithm>

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
    label.setStringValue("x" + QString::fromUtf8("\U0001F389").repeated(600));
    EXPECT_TRUE(label.accessibleName().isValidUtf16()) << "no character is cut in two";
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
    for (const char* text : {"two words ", "<b>&lt;</b> "}) {
        show(QString::fromLatin1(text).repeated(10).trimmed(), 100);
        (void)toolTip();
        for (const QWidget* widget : QApplication::topLevelWidgets())
            EXPECT_LT(widget->height(), 2 * widget->fontMetrics().height()) << "one line fits: " << text;
    }
    const QImage elided = label.grab().toImage();
    label.setStringValue(label.stringValue() + QStringLiteral("different at the end"));
    EXPECT_EQ(label.grab().toImage(), elided);
}

TEST_F(LabelTest, NamesTheFontsOfOtherScriptsBehindTheUsualOneAndFewOfThem) {
    const auto familiesOf = [this](const QString& text) {
        label.setStringValue(text);
        return label.font().families();
    };
    const QStringList usual = familiesOf(QStringLiteral("Review – “naïve”"));
    EXPECT_EQ(usual, QApplication::font().families());
    fonts::prepareFor({QString::fromUtf8("产\xff\xfe").repeated(100'000)});
    const QStringList families = familiesOf(QString::fromUtf8("Review 产品 \U0001F389 اجتماع"));
    EXPECT_TRUE(QFontDatabase::hasFamily(families.value(0))) << "no alias";
    for (const auto system : {QFontDatabase::SimplifiedChinese, QFontDatabase::Arabic})
        EXPECT_TRUE(std::any_of(families.begin() + 1, families.end(), [&](const QString& family) {
            return QFontDatabase::writingSystems(family).contains(system);
        })) << system;
    EXPECT_LE(familiesOf(QString::fromUtf8("产ا\u0e01\u05d0\u0915\u0995\u10d0\xed\xa0\x80")).size(), 5);
    EXPECT_EQ(familiesOf(QStringLiteral("Review")), usual);
}

} // namespace velloren
