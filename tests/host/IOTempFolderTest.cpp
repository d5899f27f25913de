// The temporary-folder fixture every file test relies on: it must clean up and must catch leftovers.
#include "TempFolder.hpp"

#include <gtest/gtest-spi.h>

namespace {

namespace fs = std::filesystem;

TEST(TempFolder, IsFreshGoesWithWhatItHoldsAndReportsFilesLeftBehind) {
    std::string path;
    {
        xn_test::TempFolder temp;
        path = temp.Path();
        ASSERT_TRUE(fs::is_directory(path));
        EXPECT_TRUE(fs::is_empty(path));
        fs::create_directories(temp.PathOf("a/b"));
        xn_test::TempFolder::Write(temp.PathOf("a/b/f"), "x");
        fs::permissions(temp.PathOf("a"), fs::perms::owner_read | fs::perms::owner_exec);
    }
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE(fs::exists(fs::path(path).parent_path()));
    xn_test::TempFolder outer;
    const std::string watched = outer.PathOf("watched");
    fs::create_directory(watched);
    EXPECT_NONFATAL_FAILURE(
        {
            xn_test::TempFolder temp;
            temp.Watch(watched);
            xn_test::TempFolder::Write(watched + "/stray", "x");
            temp.ExpectNothingLeftBehind();
        },
        "stray");
    EXPECT_NONFATAL_FAILURE(
        {
            xn_test::TempFolder temp;
            xn_test::TempFolder::Write(std::string(std::getenv("TMPDIR")) + "/tmpfile", "x");
            temp.ExpectNothingLeftBehind();
        },
        "tmpfile");
    fs::remove(watched + "/stray");
}

} // namespace
