#include "tools/orblink_web/server/host_check.h"

#include <gtest/gtest.h>

namespace web {
namespace {

TEST(HostCheck, TakesAddressesLocalhostAndGivenNames)
{
    const std::vector<std::string> names = {"gateway.lan"};
    for (const char* host : {"127.0.0.1", "127.0.0.1:8080", "192.0.2.7:1", "[::1]", "[::1]:8080",
                             "localhost", "LocalHost:80", "gateway.lan", "GATEWAY.lan:8080"})
        EXPECT_TRUE(HostIsMeant(host, names)) << host;
}

TEST(HostCheck, TakesNothingElse)
{
    const std::vector<std::string> names = {"gateway.lan"};
    for (const char* host : {"",
                             ":",
                             ":80",
                             "evil.example",
                             "localhost.",
                             "localhost.evil",
                             "gateway.lan.evil",
                             "127.0.0.1.evil",
                             "127.1",
                             "2130706433",
                             "0x7f.0.0.1",
                             "::1",
                             "[::1",
                             "[]",
                             "[::1]x",
                             "[::1]:80x",
                             "localhost:80:80",
                             "localhost:123456",
                             "[localhost]",
                             "user@localhost"})
        EXPECT_FALSE(HostIsMeant(host, names)) << host;
    EXPECT_FALSE(HostIsMeant("gateway.lan", {}));
}

}  // namespace
}  // namespace web
