// The reader of script and terminal lines, including the dialog verbs the host serves later.
#include "achost/Action.hpp"

#include <gtest/gtest.h>
#include <tuple>

namespace {

using achost::Verb;

TEST(ActionTest, ReadsNumbersStringsAndChoices) {
    const std::tuple<const char*, Verb, std::vector<Int64>, std::vector<std::string>> cases[] = {
        {"  menu 32501 5   # comment", Verb::MenuOf, {32501, 5}, {}},
        {"expect menu 32501 1 \"About \\\"it\\\" \\\\ # not a comment\"",
         Verb::ExpectMenuText,
         {32501, 1},
         {"About \"it\" \\ # not a comment"}},
        {"expect menu 32767 5 unchecked\r", Verb::ExpectMenuMark, {32767, 5}, {"unchecked"}},
        {"expect item 3 \"\"", Verb::ExpectItemText, {3}, {""}},
        {"expect alert \"Large\" \"Small\"", Verb::ExpectAlert, {}, {"Large", "Small"}},
        {"answer save \"/tmp/a b.txt\"", Verb::AnswerSave, {}, {"/tmp/a b.txt"}},
        {"answer folder cancel", Verb::AnswerFolder, {}, {"cancel"}},
        {"picture about.png", Verb::Picture, {}, {"about.png"}},
        {"expect list 3 selected 0", Verb::ExpectListSelected, {3, 0}, {}},
        {"expect dialog 32755 hidden", Verb::ExpectDialogState, {32755}, {"hidden"}},
        {"command 4294967295 0 \"SUIT\"", Verb::Command, {4294967295, 0}, {"SUIT"}},
        {"expect libraries", Verb::ExpectLibraries, {}, {}},
        {"expect libraries \"/a\" \"b c\" \"\"", Verb::ExpectLibraries, {}, {"/a", "b c", ""}},
    };
    for (const auto& [line, verb, numbers, texts] : cases) {
        SCOPED_TRACE(line);
        achost::Action action;
        std::string error;
        ASSERT_EQ(achost::ParseResult::Parsed, achost::ParseAction(line, &action, &error)) << error;
        EXPECT_EQ(verb, action.verb);
        EXPECT_EQ(numbers, action.numbers);
        EXPECT_EQ(texts, action.texts);
    }
    // What help shows as an example must be a line the reader takes, as the verb it explains.
    for (const auto& example : achost::ActionExamples()) {
        SCOPED_TRACE(example.second);
        achost::Action action;
        std::string error;
        ASSERT_EQ(achost::ParseResult::Parsed, achost::ParseAction(example.second, &action, &error)) << error;
        EXPECT_EQ(example.first, action.verb);
    }
}

TEST(ActionTest, ExplainsWhatItCannotRead) {
    const std::tuple<const char*, std::string, achost::ParseResult, std::string> cases[] = {
        {"comment", "   # only a comment", achost::ParseResult::Empty, ""},
        {"unknown verb", "fly 3", achost::ParseResult::Malformed,
         "unknown verb 'fly' (help lists the actions)"},
        {"a long verb is cut", std::string(100, 'x'), achost::ParseResult::Malformed,
         "unknown verb '" + std::string(40, 'x') + "...' (help lists the actions)"},
        {"missing number", "menu", achost::ParseResult::Malformed,
         "malformed 'menu' line; expected menu ITEM | menu RESID ITEM"},
        {"wrong keyword", "expect menu 1 2 maybe", achost::ParseResult::Malformed,
         "malformed 'expect menu' line; expected expect menu RESID ITEM \"TEXT\" | "
         "expect menu RESID ITEM checked|unchecked"},
        {"a number among the folders", "expect libraries \"/a\" 3", achost::ParseResult::Malformed,
         "malformed 'expect libraries' line; expected expect libraries \"DIR\"..."},
        {"unterminated", "expect title \"open", achost::ParseResult::Malformed, "unterminated string"},
        {"escape", "expect title \"a\\n\"", achost::ParseResult::Malformed,
         "unknown escape in string (only \\\" and \\\\)"},
        {"menu beyond 16 bits", "menu 98037 3", achost::ParseResult::Malformed,
         "number out of range: RESID is 1 to 32767, not 98037 (menu RESID ITEM)"},
        {"resource 0", "expect registered 0", achost::ParseResult::Malformed,
         "number out of range: RESID is 1 to 32767, not 0 (expect registered RESID)"},
        {"beyond 64 bits", "click 99999999999999999999999", achost::ParseResult::Malformed,
         "number out of range: N is 1 to 32767, not 99999999999999999999... (click N)"},
        {"identifier beyond 32 bits", "command 4294967296 1 \"SUIT\"", achost::ParseResult::Malformed,
         "number out of range: DEVID is 0 to 4294967295, not 4294967296 (command DEVID LOCALID \"CMD\")"},
        {"a command of five characters", "command 1 1 \"ABCDE\"", achost::ParseResult::Malformed,
         "a command is four characters, not \"ABCDE\""},
        {"control byte", std::string("menu\x01 3\x1b", 8), achost::ParseResult::Malformed,
         "control byte \\x01 at column 5 (a script is text)"},
        {"NUL byte", std::string("menu 3\0", 7), achost::ParseResult::Malformed,
         "control byte \\x00 at column 7 (a script is text)"},
    };
    for (const auto& [name, line, result, expected] : cases) {
        SCOPED_TRACE(name);
        achost::Action action;
        std::string error;
        EXPECT_EQ(result, achost::ParseAction(line, &action, &error));
        EXPECT_EQ(expected, error);
    }
}

} // namespace
