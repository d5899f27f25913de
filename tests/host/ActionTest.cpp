// The reader of script and terminal lines, including the dialog verbs the host serves later.
#include "achost/Action.hpp"

#include <gtest/gtest.h>

namespace {

using achost::Verb;

TEST(ActionTest, ReadsEveryForm) {
    const struct {
        const char* line;
        Verb verb;
        std::vector<Int64> numbers;
        std::vector<std::string> texts;
    } cases[] = {
        {"menu 3", Verb::Menu, {3}, {}},
        {"  menu 32501 5   # comment", Verb::MenuOf, {32501, 5}, {}},
        {"expect menu 32501 1 \"About \\\"it\\\" \\\\ # not a comment\"",
         Verb::ExpectMenuText,
         {32501, 1},
         {"About \"it\" \\ # not a comment"}},
        {"expect menu 32501 5 unchecked", Verb::ExpectMenuMark, {32501, 5}, {"unchecked"}},
        {"expect registered 32501", Verb::ExpectRegistered, {32501}, {}},
        {"reload", Verb::Reload, {}, {}},
        {"expect item 3 \"\"", Verb::ExpectItemText, {3}, {""}},
        {"select 4 2", Verb::Select, {4, 2}, {}},
        {"expect alert \"Large\" \"Small\"", Verb::ExpectAlert, {}, {"Large", "Small"}},
        {"answer save \"/tmp/a b.txt\"", Verb::AnswerSave, {}, {"/tmp/a b.txt"}},
        {"answer folder cancel", Verb::AnswerFolder, {}, {"cancel"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        achost::Action action;
        std::string error;
        ASSERT_EQ(achost::ParseResult::Parsed, achost::ParseAction(c.line, &action, &error)) << error;
        EXPECT_EQ(c.verb, action.verb);
        EXPECT_EQ(c.numbers, action.numbers);
        EXPECT_EQ(c.texts, action.texts);
    }
}

TEST(ActionTest, ExplainsWhatItCannotRead) {
    const struct {
        const char* line;
        achost::ParseResult result;
        std::string error;
    } cases[] = {
        {"   # only a comment", achost::ParseResult::Empty, ""},
        {"fly 3", achost::ParseResult::Malformed, "unknown verb 'fly' (help lists the actions)"},
        {"menu", achost::ParseResult::Malformed,
         "malformed 'menu' line; expected menu ITEM | menu RESID ITEM"},
        {"expect menu 1 2 maybe", achost::ParseResult::Malformed,
         "malformed 'expect menu' line; expected expect menu RESID ITEM \"TEXT\" | "
         "expect menu RESID ITEM checked|unchecked"},
        {"answer save", achost::ParseResult::Malformed,
         "malformed 'answer save' line; expected answer save \"PATH\"|cancel"},
        {"expect title \"open", achost::ParseResult::Malformed, "unterminated string"},
        {"expect title \"a\\n\"", achost::ParseResult::Malformed,
         "unknown escape in string (only \\\" and \\\\)"},
        {"menu 99999999999", achost::ParseResult::Malformed,
         "malformed 'menu' line; expected menu ITEM | menu RESID ITEM"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        achost::Action action;
        std::string error;
        EXPECT_EQ(c.result, achost::ParseAction(c.line, &action, &error));
        EXPECT_EQ(c.error, error);
    }
}

} // namespace
