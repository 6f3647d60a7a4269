#include "Platform/Link/Link.h"

#include <gtest/gtest.h>

#include <string>

namespace velloren {

TEST(Endpoint, TakesExactlyOneUnixSocketAddress) {
    const auto path = Endpoint::parse("unix:path=/run/user/1000/velloren/a.socket");
    ASSERT_TRUE(path);
    EXPECT_EQ(path->socketName(), "/run/user/1000/velloren/a.socket");
    EXPECT_EQ(path->address(), "unix:path=/run/user/1000/velloren/a.socket");

    const auto abstract = Endpoint::parse("unix:abstract=velloren,guid=0123456789abcdef0123456789abcdef");
    ASSERT_TRUE(abstract);
    EXPECT_EQ(abstract->socketName(), std::string("\0velloren", 9));

    const auto escaped = Endpoint::parse("unix:path=/tmp/a%20b%2Cc");
    ASSERT_TRUE(escaped);
    EXPECT_EQ(escaped->socketName(), "/tmp/a b,c");
}

TEST(Endpoint, RefusesEveryOtherTransport) {
    for (const char* address :
         {"", "unix:", "unixexec:path=/bin/sh", "tcp:host=localhost,port=1",
          "nonce-tcp:host=localhost,port=1", "launchd:env=X", "autolaunch:", "unix:tmpdir=/tmp",
          "unix:dir=/tmp", "unix:runtime=yes", "UNIX:path=/tmp/a", " unix:path=/tmp/a", "/tmp/a"})
        EXPECT_FALSE(Endpoint::parse(address)) << address;
}

TEST(Endpoint, RefusesAListThatHidesAnotherTransport) {
    EXPECT_FALSE(Endpoint::parse("unix:path=/tmp/a;unixexec:path=/bin/sh"));
    EXPECT_FALSE(Endpoint::parse("unix:path=/tmp/a,path=/tmp/b"));
    EXPECT_FALSE(Endpoint::parse("unix:path=/tmp/a,abstract=b"));
    EXPECT_FALSE(Endpoint::parse("unix:path=/tmp/a,argv1=-c"));
}

TEST(Endpoint, RefusesBadEscapesAndNamesThatFitNoSocket) {
    EXPECT_FALSE(Endpoint::parse("unix:path=/tmp/%zz"));
    EXPECT_FALSE(Endpoint::parse("unix:path=/tmp/%2"));
    EXPECT_FALSE(Endpoint::parse("unix:path=/tmp/%00"));
    EXPECT_FALSE(Endpoint::parse("unix:path=/tmp/a b"));
    EXPECT_FALSE(Endpoint::parse("unix:path=relative"));
    EXPECT_FALSE(Endpoint::parse("unix:path="));
    EXPECT_FALSE(Endpoint::parse("unix:abstract="));
    EXPECT_FALSE(Endpoint::parse("unix:path=/" + std::string(200, 'a')));
    EXPECT_FALSE(Endpoint::parse("unix:path=/" + std::string(1000000, 'a')));
}

TEST(Endpoint, WritesAPathSoThatItReadsTheSame) {
    const std::string path = "/run/user/1000/a b;c,d=e%f/\xc3\xa9.socket";
    const auto endpoint = Endpoint::ofSocketPath(path);
    ASSERT_TRUE(endpoint);
    EXPECT_EQ(endpoint->socketName(), path);
    EXPECT_EQ(Endpoint::parse(endpoint->address()), endpoint);
}

} // namespace velloren
