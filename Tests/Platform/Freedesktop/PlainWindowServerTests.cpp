#include "Platform/Freedesktop/Windowing/PlainWindowServer.h"
#include "Tests/Support/QtTest.h"

#include <QLocale>
#include <QScreen>
#include <QWidget>

namespace velloren {

namespace {

using PlainWindowServerTest = QtTest;

/// For the screen of all tests here.
const bool isScaled = qputenv("QT_SCALE_FACTOR", "2");

} // namespace

TEST_F(PlainWindowServerTest, TakesTheNumberOfAHostForTheScreensOwnPixels) {
    QWidget window;
    std::optional<PopoverSite> site;
    PlainWindowServer().findSite(window, {390, 290, 20, 20}, [&](const PopoverSite& found) { site = found; });
    ASSERT_TRUE(site);
    EXPECT_EQ(site->anchor.center(), QPoint(200, 150)) << isScaled;
}

TEST_F(PlainWindowServerTest, TakesTheEndOfTheBarForThePlaceOfAnIconThatNobodyClicked) {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    PlainWindowServer server;
    QWidget window;
    for (const auto& [language, corner] :
         {std::pair("en", screen.topRight()), {"ar", screen.topLeft()}, {"fr", screen.topRight()}}) {
        QLocale::setDefault(QLocale(QString::fromLatin1(language)));
        std::optional<PopoverSite> site;
        server.findSite(window, {}, [&](const PopoverSite& found) { site = found; });
        ASSERT_TRUE(site);
        EXPECT_EQ(site->anchor.topLeft(), corner) << language;
    }
    QLocale::setDefault(QLocale::system());
}

} // namespace velloren
