#include "Platform/Freedesktop/Windowing/X11/X11WindowServer.h"
#include "Tests/Support/QtTest.h"

#include <QLocale>
#include <QScreen>

namespace velloren {

using X11WindowServerTest = QtTest;

TEST_F(X11WindowServerTest, TakesTheEndOfTheBarForThePlaceOfAnIconThatNobodyClicked) {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    X11WindowServer server(X11WindowServer::Session::Wayland);
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
