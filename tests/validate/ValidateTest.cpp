// achost validate run as a program on fixture add-ons, good and broken on purpose: each broken one
// fails the check that looks for its fault, with a message naming it, and the printed replay command
// sees the same fault again.
#include "HostTest.hpp"

#include <nlohmann/json.hpp>

#include <regex>
#include <tuple>

namespace {

using xn_test::RunProgram;

std::string Validate(const std::string& arguments, int* exitCode) {
    std::string output;
    *exitCode = RunProgram(std::string(ACHOST) + " validate " + arguments + " 2>&1", &output);
    return output;
}

// The text after `label` on the first line that has it.
std::string LineAfter(const std::string& output, const std::string& label) {
    const size_t at = output.find(label);
    if (at == std::string::npos)
        return "";
    const size_t start = at + label.size();
    return output.substr(start, output.find('\n', start) - start);
}

class ValidateTest : public xn_test::TempFolderTest {};

TEST_F(ValidateTest, EachFaultFailsItsCheckWithAMessageNamingIt) {
    const std::string options = "--strictness 4 --seed 7 --timeout 2 ";
    int exitCode = -1;
    const std::string good = Validate(options + BROKEN_GOOD, &exitCode);
    EXPECT_EQ(0, exitCode) << good;
    for (const char* seen :
         {"strictness 4, seed 7, repeat 1, timeout 2 s", "PASS exports", "PASS dialogs",
          "the add-on never rewrote Quillane.cfg: nothing was tested", "7 checks, 0 failed"})
        EXPECT_NE(std::string::npos, good.find(seen)) << seen << "\n" << good;
#if defined(__SANITIZE_ADDRESS__)
    const char* const memoryLeak =
        "LeakSanitizer found a leak after the last unload: 8192 byte(s) leaked in 16 "
        "allocation(s), by code unloaded since";
#else
    const char* const memoryLeak = "in the median load/unload cycle)";
#endif
    // messages: every one appears in the output
    const std::tuple<const char*, std::string, std::vector<const char*>> rows[] = {
        {BROKEN_MISSING_EXPORT, "exports", {"does not export FreeData"}},
        {BROKEN_EXTRA_EXPORT, "exports", {"exports more than its four entry points: FixtureExtraExport"}},
        {BROKEN_NEEDS_INITIALIZE, "protocol", {"crashed", "(while a command before Initialize (item 1))"}},
        {BROKEN_LEAKS, "lifecycle", {"1 memory handle was still allocated after 1"}},
        {BROKEN_LEAKS_MEMORY, "lifecycle", {memoryLeak}},
        {BROKEN_CRASHES_IN_DIALOG,
         "dialogs",
         {"crashed", "dialog 32600 opened by menu 32500 1, closed by click 2"}},
        {BROKEN_SETS_CLOSED_DIALOG, "dialogs", {"DGSetItemText: no dialog 1 is open"}},
        {BROKEN_HANGS, "menus", {"hung: no verdict within 2.00 s (while menu 32500 2)"}},
        {BROKEN_THROWS, "menus", {"threw an exception (fixture failure) out of menu command 32500 item 2"}},
        {BROKEN_MISSING_TEXT_IN_RUSSIAN, "menus", {"seen: menu 32500 item 2 reads \"_ERR_\" in rus\n"}},
        {BROKEN_USES_FAILED_HANDLE, "sessions", {"crashed", "memory handle allocation 17 failing"}},
        {BROKEN_DROPS_SHARED_SETTINGS, "settings", {"Quillane.cfg lost the record \"Tessaro_Language_str\""}},
    };
    for (const auto& [addon, check, messages] : rows) {
        SCOPED_TRACE(addon);
        const std::string output = Validate("--check " + check + " " + options + addon, &exitCode);
        EXPECT_EQ(1, exitCode) << output;
        EXPECT_NE(std::string::npos, output.find("FAIL " + check)) << output;
        for (const char* seen : messages)
            EXPECT_NE(std::string::npos, output.find(seen)) << seen << "\n" << output;
        // One command replays the failure: the same check, seed and strictness see the same fault.
        const std::string replay = LineAfter(output, "  replay: ");
        EXPECT_NE(std::string::npos, replay.find("--check " + check + " --strictness 4 --seed 7"));
        std::string again;
        EXPECT_EQ(1, RunProgram(replay + " 2>&1", &again)) << again;
        const std::regex time(" \\(\\d+\\.\\d+ s\\)");
        EXPECT_EQ(std::regex_replace(LineAfter(output, "  seen: "), time, ""),
                  std::regex_replace(LineAfter(again, "  seen: "), time, ""));
    }
}

// A session that meets a crashing add-on ends naming the add-on, the call and the signal (the report of
// one that throws is the validator's, above).
TEST_F(ValidateTest, AchostNamesTheAddonAndTheCallThatCrashed) {
    std::string output;
    // In a sanitizer build of achost the option lets the report run before the sanitizer's own;
    // elsewhere it does nothing.
    EXPECT_NE(0,
              RunProgram("exec 2>&1; printf 'menu 1\\nclick 2\\n' | ASAN_OPTIONS=$ASAN_OPTIONS"
                         ":allow_user_segv_handler=1 " ACHOST " --script - " BROKEN_CRASHES_IN_DIALOG " 2>&1",
                         &output));
    EXPECT_NE(std::string::npos,
              output.find("achost: the add-on " BROKEN_CRASHES_IN_DIALOG " crashed (SIGSEGV) "
                          "during the callback of dialog 32600 (message 4, item 2), within "
                          "menu command 32500 item 1"))
        << output;
}

TEST_F(ValidateTest, ReportsGoToJsonAndJUnitAndBadArgumentsAreNamed) {
    const std::string json = temp.PathOf("report.json"), junit = temp.PathOf("report.xml");
    int exitCode = -1;
    const std::string output =
        Validate("--strictness 1 --seed 3 --repeat 2 --json " + json + " --junit " + junit +
                     " --check exports --check dialogs " + BROKEN_SETS_CLOSED_DIALOG,
                 &exitCode);
    EXPECT_EQ(1, exitCode) << output;
    std::ifstream jsonFile(json);
    const nlohmann::json report = nlohmann::json::parse(jsonFile, nullptr, false);
    ASSERT_FALSE(report.is_discarded());
    EXPECT_EQ(3u, report["seed"]);
    EXPECT_FALSE(report["passed"].get<bool>());
    ASSERT_EQ(4u, report["checks"].size());
    const nlohmann::json& last = report["checks"][3];
    EXPECT_EQ("dialogs", last["name"]);
    EXPECT_EQ(4u, last["seed"]); // the second repetition's seed
    EXPECT_NE(std::string::npos, last["message"].get<std::string>().find("DGSetItemText"));
    EXPECT_NE(std::string::npos, last["replay"].get<std::string>().find("--seed 4"));
    std::ifstream xmlFile(junit);
    const std::string xml((std::istreambuf_iterator<char>(xmlFile)), std::istreambuf_iterator<char>());
    EXPECT_NE(std::string::npos, xml.find("<testsuites name=\"achost validate\" tests=\"4\" failures=\"2\""));
    EXPECT_NE(std::string::npos, xml.find("name=\"dialogs #2\""));
    EXPECT_NE(std::string::npos, xml.find("<failure message=\"DGSetItemText: no dialog 1 is open (while "
                                          "looking for dialogs: menu 32500 1)"));
    const std::tuple<const char*, const char*> rows[] = {
        {"--strictness 11 x.so", "--strictness takes a whole number from 1 to 10, not '11'"},
        {"--check nothing x.so", "there is no check 'nothing' (--list names them)"},
        {"--timeout", "--timeout needs a value"},
        {"", "name the add-on to validate"},
        {"/nonexistent/addon.so", "cannot read /nonexistent/addon.so"},
    };
    for (const auto& [arguments, message] : rows) {
        SCOPED_TRACE(arguments);
        int exitCode = -1;
        const std::string output = Validate(arguments, &exitCode);
        EXPECT_EQ(2, exitCode);
        EXPECT_NE(std::string::npos, output.find(message)) << output;
    }
}

} // namespace
