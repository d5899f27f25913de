// The language dialog previews the selected language in its texts, but its OK button keeps the text
// of the language it opened in: run on the add-on whose Italian OK reads "Va bene".
#include "HostTest.hpp"

#include <gtest/gtest.h>

namespace {

using LanguageDialogTest = xn_test::SharedFolderTest;

TEST_F(LanguageDialogTest, OkKeepsTheOpeningLanguagesText) {
    achost::Host host(options);
    ASSERT_TRUE(xn_test::Started(host, ITALIAN_OK_ADDON));
    EXPECT_EQ("", xn_test::RunLines(
                      host, {"menu 3", "select 3 1", "expect item 2 \"Annulla\"", "expect item 1 \"OK\"",
                             "click 1", "menu 3", "expect item 1 \"Va bene\"", "select 3 2",
                             "expect item 2 \"Cancel\"", "expect item 1 \"Va bene\"", "click 2"}));
}

} // namespace
