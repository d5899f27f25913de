// The shell's resource strings and command rules, run inside the real host by the probe add-on.
#include "ResourceCases.hpp"
#include "achost/Host.hpp"
#include "achost/SharedFolder.hpp"

#include "TempFolder.hpp"

#include <gtest/gtest.h>

namespace {

class ShellTest : public xn_test::TempFolderTest {
protected:
    void SetUp() override {
        achost::SetSharedFolder(temp.PathOf("Shared"));
        options.onViolation = [](const std::string& message) {
            ADD_FAILURE() << "add-on error: " << message;
        };
    }
    void TearDown() override {
        achost::SetSharedFolder("");
        xn_test::TempFolderTest::TearDown();
    }
    achost::HostOptions options;
};

TEST_F(ShellTest, ResourceStringsFallBackToInternationalThenToMarkers) {
    achost::Host host(options);
    std::string error;
    ASSERT_TRUE(host.Start(PROBE_ADDON, &error)) << error;
    for (int k = 0; k < kResourceCaseCount; ++k) {
        const ResourceCase& c = kResourceCases[k];
        SCOPED_TRACE("case " + std::to_string(k + 1) + ": " + c.expected);
        const int readsBefore = host.ResourceStringReads();
        ASSERT_TRUE(host.ChooseMenuItem(k + 1, &error)) << error;
        EXPECT_EQ(c.expected, host.RegisteredMenu()->items[k].text);
        EXPECT_EQ(c.stringReads, host.ResourceStringReads() - readsBefore);
    }
}

// A command meant for another menu does nothing, not even keep the add-on loaded; an item past the
// six runs the common steps, which keep it.
TEST_F(ShellTest, ACommandForAnotherMenuDoesNothing) {
    achost::Host host(options);
    std::string error;
    ASSERT_TRUE(host.Start(PROBE_ADDON, &error)) << error;
    ASSERT_TRUE(host.ChooseMenuItem(kResourceCaseCount + 1, &error)) << error;
    EXPECT_FALSE(host.IsLoaded());
    ASSERT_TRUE(host.ChooseMenuItem(kResourceCaseCount + 2, &error)) << error;
    EXPECT_TRUE(host.IsLoaded());
    EXPECT_EQ(2, host.LoadCount());
}

} // namespace
