// The shell's resource strings and command rules, run inside the real host by the probe add-on.
#include "ResourceCases.hpp"

#include "HostTest.hpp"

#include <tuple>

namespace {

constexpr Int32 kOtherMenuCommand = kResourceCaseCount + 1;
// Sends item 7 of the International menu, then shows the suite's shared setting "Probe" as held.
constexpr Int32 kOwnMenuCommand = kResourceCaseCount + 2;
// Shows XN_Location::AddOnLocation(true) and (false), with "|" between them.
constexpr Int32 kOwnLocation = kResourceCaseCount + 3;

class ShellTest : public xn_test::SharedFolderTest {
protected:
    void SetUp() override {
        xn_test::SharedFolderTest::SetUp();
        Settings("set", "AutoUpdate 0"); // automatic update checks off: the probe has no result dialog
        ASSERT_TRUE(xn_test::Started(host, PROBE_ADDON));
    }
    achost::Host host{options};
};

TEST_F(ShellTest, ResourceStringsFallBackToInternationalThenToMarkers) {
    std::string error;
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
// six runs the common steps, which keep it. The add-on's location is its library, or the library's
// folder.
TEST_F(ShellTest, ACommandForAnotherMenuDoesNothing) {
    std::string error;
    ASSERT_TRUE(host.ChooseMenuItem(kOtherMenuCommand, &error)) << error;
    EXPECT_FALSE(host.IsLoaded());
    ASSERT_TRUE(host.ChooseMenuItem(kOwnMenuCommand, &error)) << error;
    EXPECT_TRUE(host.IsLoaded());
    EXPECT_EQ(2, host.LoadCount());
    ASSERT_TRUE(host.ChooseMenuItem(kOwnLocation, &error)) << error;
    const std::string library = PROBE_ADDON;
    EXPECT_EQ(library.substr(0, library.rfind('/')) + "|" + library,
              host.RegisteredMenu()->items[kOwnLocation - 1].text);
}

// The first command of a host run re-reads the language, which reloads the suite's shared settings;
// later commands do not, and a reload starts a new run.
TEST_F(ShellTest, OnlyTheFirstCommandOfEachHostRunRereadsTheSettings) {
    const std::tuple<bool, const char*, const char*> steps[] = {
        {false, "first", "first"}, {false, "second", "first"}, {true, "third", "third"}};
    std::string error;
    for (const auto& [reloadFirst, stored, held] : steps) {
        SCOPED_TRACE(stored);
        if (reloadFirst) {
            ASSERT_TRUE(host.Reload(&error)) << error;
        }
        Settings("set", std::string("Probe ") + stored, "Quillane.cfg"); // as another add-on would
        ASSERT_TRUE(host.ChooseMenuItem(kOwnMenuCommand, &error)) << error;
        EXPECT_EQ(held, host.RegisteredMenu()->items[kOwnMenuCommand - 1].text);
    }
}

} // namespace
