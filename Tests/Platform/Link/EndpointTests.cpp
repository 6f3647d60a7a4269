#include "Platform/Link/Link.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velloren {

TEST(Endpoint, TakesExactlyOneUnixSocketAddress) {
    const std::pair<std::string, std::string> names[] = {
        {"unix:path=/run/user/1000/velloren/a.socket", "/run/user/1000/velloren/a.socket"},
        {"unix:abstract=velloren,guid=0123456789abcdef0123456789abcdef", std::string("\0velloren", 9)},
        {"unix:path=/tmp/a%20b%3bc%2cd%3de%25f/%c3%a9", "/tmp/a b;c,d=e%f/\xc3\xa9"},
        {"unix:path=/" + std::string(106, 'a'), "/" + std::string(106, 'a')},
    };
    for (const auto& [address, name] : names) {
        const auto endpoint = Endpoint::parse(address);
        ASSERT_TRUE(endpoint) << address;
        EXPECT_EQ(endpoint->socketName(), name);
        EXPECT_EQ(endpoint->address(), address);
        if (name.front() == '/') {
            EXPECT_EQ(Endpoint::parse(Endpoint::ofSocketPath(name)->address())->socketName(), name);
        }
    }
}

TEST(Endpoint, RefusesEverythingElse) {
    const std::vector<std::string> others{
        "", "/tmp/a", "unix:", "UNIX:path=/tmp/a", " unix:path=/tmp/a", "unix:tmpdir=/tmp",
        "unix:runtime=yes", "unixexec:path=/bin/sh", "tcp:host=localhost,port=1", "autolaunch:",
        // another one hidden behind the first
        "unix:path=/tmp/a;unixexec:path=/bin/sh", "unix:path=/tmp/a,path=/tmp/b",
        "unix:path=/tmp/a,abstract=b", "unix:path=/tmp/a,argv1=-c",
        // bad escapes
        "unix:path=/tmp/%zz", "unix:path=/tmp/%2", "unix:path=/tmp/%00", "unix:path=/tmp/a b",
        // names that fit no socket
        "unix:path=relative", "unix:path=", "unix:abstract=", "unix:path=/" + std::string(107, 'a'),
        "unix:path=/" + std::string(1000000, 'a')};
    for (const std::string& address : others)
        EXPECT_FALSE(Endpoint::parse(address)) << address.substr(0, 60);
}

} // namespace velloren
