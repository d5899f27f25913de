// The add-on's entry points on their failure paths, in the real host: each passes its failure back
// and leaves the later steps undone (the library is registered only once RegisterInterface succeeded).
#include "HostTest.hpp"

#include <tuple>

namespace {

using EntryPointTest = xn_test::SharedFolderTest;

TEST_F(EntryPointTest, EachEntryPointPassesItsFailureBackAndStops) {
    // storedLanguage: the older numeric "Language" in the add-on's own file
    const std::tuple<const char*, const char*, int, const char*, const char*> cases[] = {
        {"CheckEnvironment for another kind of host", MORAVEL_LIBRARY, 1, nullptr,
         "did not register: CheckEnvironment answered 0"},
        {"RegisterInterface for a language without a menu", MORAVEL_LIBRARY, 0, "-1",
         "RegisterInterface of " MORAVEL_LIBRARY " failed with error 0x81060065 (APIERR_BADID, a resource, "
         "menu or item ID that does not exist)"},
        {"Initialize without one language's menu", NO_GERMAN_MENU_ADDON, 0, nullptr,
         "Initialize of " NO_GERMAN_MENU_ADDON " failed with error 0x81060065"},
    };
    std::filesystem::create_directories(temp.PathOf("Shared"));
    for (const auto& [name, addon, hostKind, storedLanguage, expected] : cases) {
        SCOPED_TRACE(name);
        std::filesystem::remove(temp.PathOf("Shared/MoravelLibrary_190.cfg"));
        if (storedLanguage != nullptr)
            Settings("set", std::string("Language ") + storedLanguage);
        options.hostKind = static_cast<API_ApplicationTypeID>(hostKind);
        achost::Host host(options);
        std::string error;
        EXPECT_FALSE(host.Start(addon, &error));
        EXPECT_NE(std::string::npos, error.find(expected)) << error;
        EXPECT_EQ(hostKind == 0 ? "MoravelLibrary" : "", host.AddonName());
        EXPECT_EQ(addon == std::string(NO_GERMAN_MENU_ADDON), host.BuiltInLibraryRegistered());
        EXPECT_EQ(0, host.ResourceStringReads()) << "menu item texts written";
        // The achost program says which add-on failed, in which entry point, with which error.
        if (hostKind == 0) {
            std::string output;
            EXPECT_NE(0, xn_test::RunProgram(ACHOST_PROGRAM " --shared-folder " + temp.PathOf("Shared") +
                                                 " --list-menus " + addon + " 2>&1",
                                             &output));
            EXPECT_NE(std::string::npos, output.find(expected)) << output;
        }
    }
}

} // namespace
