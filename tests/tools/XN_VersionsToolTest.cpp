// xn-versions run as a program on real files: its listings, its JSON and its exit codes.
#include "HostTest.hpp"

#include <nlohmann/json.hpp>

#include <tuple>

namespace xn_test {
namespace {

const char* const kSample = "MESSAGE 01/01/2018\n# Neu \xC3\xBC\n# see http://a/b\n"
                            "MyAddon 19.0.4.70000 (AC190) 03/08/2018 ita FRA\n#\n# Fixes\n"
                            "MyLibrary 03-08-2018\n Indented 19.0.4.2200 (AC190) 03/08/2018\n# orphan\n";

class VersionsToolTest : public TempFolderTest {
protected:
    // Runs xn-versions with `arguments`, FILE standing for the test's file; returns the exit code.
    int Run(std::string arguments, std::string& out, std::string& err) {
        const size_t at = arguments.find("FILE");
        if (at != std::string::npos)
            arguments.replace(at, 4, File());
        out.clear();
        const int exitCode = RunProgram(XN_VERSIONS_TOOL " " + arguments + " 2>" + temp.PathOf("err"), &out);
        err = TempFolder::Read(temp.PathOf("err"));
        std::remove(temp.PathOf("err").c_str());
        return exitCode;
    }
    std::string File() const { return temp.PathOf("v.txt"); }
};

TEST_F(VersionsToolTest, AnswersEachCommand) {
    // file: null, no file; out: of help, its first line
    const std::tuple<const char*, const char*, std::string, int, std::string, const char*> cases[] = {
        {"print", kSample, "print FILE", 0,
         "message from=20180101 to= link=http://a/b\n    Neu \xC3\xBC\n    see \n"
         "addon MyAddon 19.0.4.70000 = 19.0.4.4464 host=19 date=20180803 (03/08/2018) languages=ita,fra\n"
         "    Fixes\nlibrary MyLibrary date=20180803 (03-08-2018)\n",
         ""},
        {"lint lists skipped lines", kSample, "lint FILE", 1,
         File() + ":8: indented: a record line must begin with its name\n" +
             "     Indented 19.0.4.2200 (AC190) " + "03/08/2018\n" + File() +
             ":9: a \"#\" line that follows no record\n    # orphan\n",
         ""},
        {"lint of a clean file", "* c\n\nL 01/01/2001\n", "lint FILE", 0, "", ""},
        {"lint of a file that is not UTF-8", "L 01/01/2001\n# caf\xE9\n", "lint FILE", 1,
         File() + ": not UTF-8 text (nor marked as UTF-16 or UTF-32): no line of it is read\n", ""},
        {"print of a file that is not UTF-8", "L 01/01/2001\n# caf\xE9\n", "print FILE", 0, "",
         "no line of it is read\n"},
        {"help", nullptr, "print --help", 0, "usage: xn-versions print [--json] FILE\n", ""},
        {"missing file", nullptr, "print FILE", 2, "", "v.txt: no such file\n"},
        {"a folder", nullptr, "lint " + temp.Path(), 2, "", "cannot read the file\n"},
        {"unknown command", nullptr, "dump FILE", 2, "", "unknown command \"dump\""},
        {"json is for print", "", "lint --json FILE", 2, "", "unknown option \"--json\""},
        {"two files", "", "print FILE FILE", 2, "", "one FILE only"},
    };
    for (const auto& [name, file, arguments, exitCode, expected, errPart] : cases) {
        SCOPED_TRACE(name);
        if (file != nullptr)
            TempFolder::Write(File(), file);
        std::string out, err;
        EXPECT_EQ(exitCode, Run(arguments, out, err));
        std::remove(File().c_str());
        EXPECT_EQ(expected,
                  arguments.find("--help") != std::string::npos ? out.substr(0, out.find('\n') + 1) : out);
        EXPECT_NE(std::string::npos, err.find(errPart)) << err;
        EXPECT_EQ(*errPart == '\0', err.empty()) << err;
    }
    // print --json gives every field.
    TempFolder::Write(File(), kSample);
    std::string out, err;
    ASSERT_EQ(0, Run("print --json FILE", out, err)) << err;
    std::remove(File().c_str());
    EXPECT_EQ(nlohmann::json::parse(R"({
        "messages": [{"fromDate": "20180101", "toDate": "", "text": "Neu \u00fc\nsee ", "link": "http://a/b"}],
        "addons": [{"name": "MyAddon", "versionText": "19.0.4.70000", "major": 19, "minor": 0, "revision": 4,
                    "build": 4464, "hostVersion": 19, "date": "20180803", "dateText": "03/08/2018",
                    "languages": [0, 2], "text": "Fixes"}],
        "libraries": [{"name": "MyLibrary", "date": "20180803", "dateText": "03-08-2018", "text": ""}]})"),
              nlohmann::json::parse(out));
}

} // namespace
} // namespace xn_test
