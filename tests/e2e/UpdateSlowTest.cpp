// The one slow case of the update check: a server that takes the request and never answers. The
// transfer fails 60 seconds after it started, and the check ends in its alert.
#include "FaultServer.hpp"
#include "HostTest.hpp"

namespace {

class UpdateSlowTest : public xn_test::SharedFolderTest {};

TEST_F(UpdateSlowTest, ANeverAnsweringServerFailsAfterSixtySeconds) {
    xn_test::FaultServer server;
    ASSERT_TRUE(server.Start([](const std::string&) { return xn_test::Reply{200, "", "", 0, 0, true}; }));
    setenv("http_proxy", server.Address().c_str(), 1);
    achost::Host host(options);
    ASSERT_TRUE(xn_test::Started(host, MORAVEL_LIBRARY));
    const auto start = std::chrono::steady_clock::now();
    double failedAfter = 0;
    EXPECT_EQ("",
              xn_test::RunLines(
                  host,
                  {"menu 4", "wait download",
                   "expect alert \"The update server cannot be reached. Check your Internet "
                   "connection and try again later.\" \"\"",
                   "ok", "expect dialog 32755 closed"},
                  [&](const achost::Host& shown) {
                      if (shown.OpenAlert() != nullptr && failedAfter == 0)
                          failedAfter =
                              std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
                  }));
    unsetenv("http_proxy");
    EXPECT_GE(failedAfter, 59.9);
    EXPECT_LT(failedAfter, 75.0);
    EXPECT_EQ(1u, server.Paths().size());
}

} // namespace
