// The real add-on in the real host: through the C++ driver, and through the achost program.
#include "HostTest.hpp"

#include <tuple>

#include <sys/stat.h>

namespace {

using AddonTest = xn_test::SharedFolderTest;

// The language dialog: each closing stores what it should in the add-on's own settings file.
TEST_F(AddonTest, LanguageDialogStoresOnlyAConfirmedChange) {
    const std::tuple<const char*, std::vector<std::string>, std::string> cases[] = {
        {"Cancel after a selection", {"menu 3", "select 3 1", "click 2"}, ""},
        {"OK on the language in force", {"menu 3", "click 1"}, ""},
    };
    for (const auto& [name, lines, stored] : cases) {
        SCOPED_TRACE(name);
        achost::Host host(options);
        ASSERT_TRUE(xn_test::Started(host, MORAVEL_LIBRARY));
        EXPECT_EQ("", xn_test::RunLines(host, lines));
        EXPECT_EQ(stored, Settings("get", "Language_str"));
    }
}

class AchostProgramTest : public xn_test::TempFolderTest {
protected:
    // Runs a shell command in which ACHOST stands for achost with its shared folder in the temporary
    // folder; standard input is empty unless piped. Returns the exit code and what it printed on both
    // streams, unless the command redirects standard output.
    int Run(std::string command, std::string* output) {
        command.replace(command.find("ACHOST"), 6,
                        "env XDG_DATA_HOME=" + temp.PathOf("data") + " " ACHOST_PROGRAM);
        return xn_test::RunProgram("exec 2>&1 </dev/null; " + command, output);
    }
};

TEST_F(AchostProgramTest, EachBadInputGetsOneMessageAndAnExitCode) {
    const std::string noAddon = temp.PathOf("none.so"), wrong = temp.PathOf("wrong.acs"),
                      malformed = temp.PathOf("malformed.acs"), fifo = temp.PathOf("fifo");
    temp.Write(wrong, "expect registered 32501\nmenu 2\nexpect menu 32501 1 \"About Something Else...\"\n"
                      "expect menu 32501 2 \"never reached\"\n");
    // A byte-order mark and a carriage return: what editors may write.
    temp.Write(malformed, "\xEF\xBB\xBF"
                          "expect registered 32501\r\nmenu 98037 3\nexpect registered 32500\n");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    std::filesystem::copy_file(MORAVEL_LIBRARY, temp.PathOf("MoravelLibrary.so"));
    std::filesystem::create_directory(temp.PathOf("lib"));
    temp.Write(temp.PathOf("lib/MoravelLibrary.so"), "not a library");
    const std::string usage =
        "usage: achost [--shared-folder DIR] [--host-kind N] [--command DEVID:LOCALID:CMD[:VERSION]]...\n"
        "              [--update-folder DIR | --no-update-server] [--project FILE] [--engine NAME]...\n"
        "              [--library DIR]... [--missing NAME]... [--launch] [--script FILE] [ADDON]\n"
        "       achost --list-menus [ADDON]\n"
        "       achost --help\n";
    const std::tuple<const char*, std::string, int, std::string> cases[] = {
        {"wrong expectation", "ACHOST --script " + wrong + " " MORAVEL_LIBRARY, 1,
         wrong +
             ":3: expected menu 32501 item 1 \"About Something Else...\", saw \"About MoravelLibrary...\"\n"},
        {"a script read as it runs stops at its malformed line",
         "ACHOST --script " + malformed + " " MORAVEL_LIBRARY, 2,
         malformed + ":2: number out of range: RESID is 1 to 32767, not 98037 (menu RESID ITEM)\n"},
        {"missing script", "ACHOST --script " + temp.PathOf("no.acs") + " " MORAVEL_LIBRARY, 2,
         temp.PathOf("no.acs") + ":0: cannot read the script: No such file or directory\n"},
        {"folder as script", "ACHOST --script " + temp.PathOf("") + " " MORAVEL_LIBRARY, 2,
         temp.PathOf("") + ":0: is a folder, not a script\n"},
        {"FIFO as script (never waits for a writer)", "ACHOST --script " + fifo + " " MORAVEL_LIBRARY, 2,
         fifo + ":0: is not a regular file (only standard input may be a pipe or a terminal)\n"},
        {"binary file as script", "ACHOST --script " ACHOST_PROGRAM " " MORAVEL_LIBRARY, 2,
         ACHOST_PROGRAM ":1: control byte \\x7F at column 1 (a script is text)\n"},
        {"endless line on standard input", "yes | tr -d '\\n' | ACHOST --script - " MORAVEL_LIBRARY, 2,
         "-:1: line longer than 1048576 bytes\n"},
        {"endless script on standard input",
         "(yes 'expect registered 32501' | head -n 20000; echo quit; yes) | timeout 120 ACHOST --script "
         "/dev/stdin " MORAVEL_LIBRARY,
         0, ""},
        {"missing add-on", "ACHOST " + noAddon, 2, "achost: cannot read " + noAddon + ": no such file\n"},
        {"FIFO as add-on (never waits for a writer)", "ACHOST " + fifo, 2,
         "achost: " + fifo + " is not a regular file (a device, a FIFO or a socket)\n"},
        {"folder as add-on", "ACHOST " + temp.Path(), 2,
         "achost: " + temp.Path() + " is a folder, not a shared library\n"},
        {"not an add-on", "ACHOST " ACHOST_API_LIBRARY, 2,
         "achost: " ACHOST_API_LIBRARY " is not an add-on: it does not export CheckEnvironment, "
         "RegisterInterface, Initialize, FreeData\n"},
        // Without a slash the dynamic loader would load lib/MoravelLibrary.so, which is not a library.
        {"the add-on file exactly as named",
         "cd " + temp.Path() + " && LD_LIBRARY_PATH=lib ACHOST --list-menus MoravelLibrary.so >/dev/null", 0,
         ""},
        {"another host kind", "ACHOST --host-kind 1 " MORAVEL_LIBRARY, 2,
         "achost: " MORAVEL_LIBRARY " did not register: CheckEnvironment answered 0\n"},
        {"host kind not a number", "ACHOST --host-kind abc", 2,
         "achost: --host-kind takes a number from 0 to 2147483647, not 'abc'\n" + usage},
        {"empty shared folder", "ACHOST --shared-folder ''", 2,
         "achost: --shared-folder needs a value\n" + usage},
        {"a file as shared folder", "ACHOST --shared-folder " + wrong, 2,
         "achost: --shared-folder " + wrong + " is not a folder\n" + usage},
        {"a command version beyond 32 bits", "ACHOST --command 1:1:ABCD:99999999999", 2,
         "achost: --command takes DEVID:LOCALID:CMD[:VERSION], not '1:1:ABCD:99999999999'\n" + usage},
        {"repeated option", "ACHOST --script a --script b", 2, "achost: --script is given twice\n" + usage},
        {"unknown option", "ACHOST --fast", 2, "achost: unknown option --fast\n" + usage},
        {"update folder without a server", "ACHOST --no-update-server --update-folder " + temp.Path(), 2,
         "achost: --update-folder and --no-update-server exclude each other\n" + usage},
        {"missing update folder", "ACHOST --update-folder " + noAddon + " " MORAVEL_LIBRARY, 2,
         "achost: the update folder " + noAddon + " is not a folder\n"},
        {"missing library folder", "ACHOST --library " + noAddon + " " MORAVEL_LIBRARY, 2,
         "achost: --library: \"" + noAddon +
             "\" cannot be a library: there is no such folder (0x81010200)\n"},
        {"empty engine name", "ACHOST --engine ''", 2,
         "achost: --engine takes an engine's menu name, not an empty text\n" + usage},
        {"full disk", "ACHOST --list-menus " MORAVEL_LIBRARY " >/dev/full", 2,
         "achost: cannot write the output: No space left on device\n"},
    };
    for (const auto& [name, command, exitCode, expected] : cases) {
        SCOPED_TRACE(name);
        std::string output;
        EXPECT_EQ(exitCode, Run(command, &output));
        EXPECT_EQ(expected, output);
    }
}

} // namespace
