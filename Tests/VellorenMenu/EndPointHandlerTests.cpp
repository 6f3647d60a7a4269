#include "Tests/Support/FakeLink.h"
#include "VellorenMenu/EndPointHandler.h"
#include "VellorenMenu/URLs.h"

#include <gtest/gtest.h>

namespace velloren {

TEST(EndPointHandler, MakesItsOwnConnectionEachTimeAndDropsItWithItself) {
    FakeLink link;
    {
        const EndPointHandler first(link);
        const EndPointHandler second(link);
        EXPECT_EQ(link.connectionsMade, (std::vector<std::string>(2, "com.velloren.velloren-mac.agent")));
        EXPECT_EQ(first.serviceName, "com.velloren.velloren-mac.agent");
        EXPECT_NE(first.remoteObjectProxy, nullptr);
    }
    EXPECT_EQ(link.openConnections, 0);
}

TEST(EndPointHandler, HasNoProxyWhenTheFarEndDoesNotConform) {
    FakeLink link;
    link.conforming = false;
    EXPECT_EQ(EndPointHandler(link).remoteObjectProxy, nullptr);
}

TEST(EndPointHandler, StopsTheProcessWithoutAConnection) {
    FakeLink link;
    link.hasBus = false;
    EXPECT_DEATH(EndPointHandler handler(link), "fatal error: the connection to com.velloren");
}

TEST(ConnectionProtocol, MatchesItsRawValuesToTheLetter) {
    using Protocol = URLs::ConnectionProtocol;
    EXPECT_EQ(URLs::connectionProtocol("http://"), Protocol::http);
    EXPECT_EQ(URLs::connectionProtocol("https://"), Protocol::https);
    EXPECT_EQ(URLs::rawValue(Protocol::https), "https://");
    for (const char* other : {"", "HTTPS://", "https:/", "https://velloren.example", "ftp://"})
        EXPECT_FALSE(URLs::connectionProtocol(other)) << other;
}

} // namespace velloren
