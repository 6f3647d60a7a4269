#include "Platform/Freedesktop/Windowing/PlainWindowServer.h"
#include "Tests/Support/QtTest.h"

#include <QLocale>
#include <QScreen>
#include <QWidget>

namespace velloren {

using PlainWindowServerTest = QtTest;

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
