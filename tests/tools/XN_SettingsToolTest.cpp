// xn-settings run as a program: its answers, its exit codes, and files the add-on's code reads.
#include "TempFolder.hpp"

#include "XN_SettingsFile.hpp"

#include <sys/wait.h>

namespace xn_test {
namespace {

struct Outcome {
    int exitCode;
    std::string out;
    std::string err;
};

std::string Quoted(const std::string& argument) {
    std::string quoted = "'";
    for (const char c : argument)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string Exchanged(std::string bytes) {
    for (char& c : bytes)
        c = static_cast<char>(((static_cast<unsigned char>(c) >> 4) & 0x0F) |
                              (static_cast<unsigned char>(c) << 4));
    return bytes;
}

class SettingsToolTest : public TempFolderTest {
protected:
    Outcome Run(const std::vector<std::string>& arguments) {
        std::string command = XN_SETTINGS_TOOL;
        for (const std::string& argument : arguments)
            command += " " + Quoted(argument);
        const std::string out = temp.PathOf("out.txt"), err = temp.PathOf("err.txt");
        const int status = std::system((command + " >" + out + " 2>" + err).c_str());
        Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, TempFolder::Read(out),
                        TempFolder::Read(err)};
        std::remove(out.c_str());
        std::remove(err.c_str());
        return outcome;
    }
    std::string File() const { return temp.PathOf("s.cfg"); }
    void WritePlain(const std::string& plain) { TempFolder::Write(File(), Exchanged(plain)); }
    std::string ReadPlain() { return Exchanged(TempFolder::Read(File())); }
};

TEST_F(SettingsToolTest, AnswersEachCommand) {
    struct Case {
        const char* name;
        std::string before; // plain image
        std::vector<std::string> arguments;
        int exitCode;
        std::string out;
        std::string errPart;
        std::string after; // plain image
    } cases[] = {
        {"dump shows line breaks escaped",
         "$a: x\n#y\r#\\\n$b: \n",
         {"dump", "FILE"},
         0,
         "a: x\\ny\\r\\\\\nb: \n",
         "",
         "$a: x\n#y\r#\\\n$b: \n"},
        {"dump of an empty file", "", {"dump", "FILE"}, 0, "", "", ""},
        {"dump names the malformed record",
         "$a: 1\n$b: 2\nx",
         {"dump", "FILE"},
         1,
         "a: 1\n",
         "record 2 is malformed (byte offset 12)",
         "$a: 1\n$b: 2\nx"},
        {"get prints the value as stored",
         "$a: x\n#y\n",
         {"get", "FILE", "a"},
         0,
         "x\ny\n",
         "",
         "$a: x\n#y\n"},
        {"get of an absent key", "$a: 1\n", {"get", "FILE", "A"}, 1, "", "no key \"A\"", "$a: 1\n"},
        {"set replaces a value",
         "$a: 1\n$b: 2\n",
         {"set", "FILE", "a", "x\ny"},
         0,
         "",
         "",
         "$a: x\n#y\n$b: 2\n"},
        {"set appends a new key", "$a: 1\n", {"set", "FILE", "c", "3"}, 0, "", "", "$a: 1\n$c: 3\n"},
        {"set refuses a key with a colon",
         "$a: 1\n",
         {"set", "FILE", "a:b", "3"},
         1,
         "",
         "must not",
         "$a: 1\n"},
        {"set leaves a malformed file alone", "x", {"set", "FILE", "a", "1"}, 1, "", "malformed", "x"},
        {"remove", "$a: 1\n$b: 2\n", {"remove", "FILE", "a"}, 0, "", "", "$b: 2\n"},
        {"remove of an absent key", "$a: 1\n", {"remove", "FILE", "b"}, 1, "", "no key", "$a: 1\n"},
        {"too many arguments",
         "$a: 1\n",
         {"get", "FILE", "a", "b"},
         2,
         "",
         "get takes 2 arguments",
         "$a: 1\n"},
        {"unknown command", "$a: 1\n", {"show", "FILE"}, 2, "", "unknown command \"show\"", "$a: 1\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        WritePlain(c.before);
        std::vector<std::string> arguments = c.arguments;
        for (std::string& argument : arguments)
            argument = argument == "FILE" ? File() : argument;
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(c.exitCode, outcome.exitCode);
        EXPECT_EQ(c.out, outcome.out);
        EXPECT_NE(std::string::npos, outcome.err.find(c.errPart)) << outcome.err;
        EXPECT_EQ(c.after, ReadPlain());
    }
}

TEST_F(SettingsToolTest, MissingAndOversizedFiles) {
    EXPECT_EQ(1, Run({"dump", File()}).exitCode);
    EXPECT_EQ(1, Run({"remove", File(), "a"}).exitCode);
    EXPECT_EQ(0, Run({"set", File(), "Language_str", "ita"}).exitCode);
    EXPECT_EQ("$Language_str: ita\n", ReadPlain());
    WritePlain("$a: " + std::string(XN_SETTINGS_IMAGE_MAX, 'v') + "\n");
    const Outcome outcome = Run({"dump", File()});
    EXPECT_EQ(1, outcome.exitCode);
    EXPECT_NE(std::string::npos, outcome.err.find("larger than 100000 bytes")) << outcome.err;
}

TEST_F(SettingsToolTest, EveryCommandHasHelp) {
    for (const char* command : {"dump", "get", "set", "remove"}) {
        SCOPED_TRACE(command);
        const Outcome outcome = Run({command, "--help"});
        EXPECT_EQ(0, outcome.exitCode);
        EXPECT_EQ(0u, outcome.out.find(std::string("usage: xn-settings ") + command));
    }
    EXPECT_EQ(0, Run({"--help"}).exitCode);
    EXPECT_EQ(2, Run({}).exitCode);
}

// The add-on reads at its next start the language the tool stored; Russian is not supported here and
// falls back to International, so menu 32501 is registered.
TEST_F(SettingsToolTest, TheAddOnStartsInTheStoredLanguage) {
    struct Case {
        const char* stored;
        const char* script;
    } cases[] = {
        {"ita", "expect registered 32500\nexpect menu 32506 3 \"Lingua...\"\nquit\n"},
        {"GER", "expect registered 32503\nexpect menu 32500 3 \"Sprache...\"\nquit\n"},
        {"rus", "expect registered 32501\nexpect menu 32506 3 \"Language...\"\nmenu 32506 3\nquit\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.stored);
        ASSERT_EQ(0, Run({"set", temp.PathOf("MoravelLibrary_190.cfg"), "Language_str", c.stored}).exitCode);
        TempFolder::Write(temp.PathOf("start.acs"), c.script);
        const std::string command = std::string(ACHOST_PROGRAM) + " --shared-folder " + Quoted(temp.Path()) +
                                    " --script " + Quoted(temp.PathOf("start.acs")) + " " + MORAVEL_LIBRARY +
                                    " >" + Quoted(temp.PathOf("achost.txt")) + " 2>&1";
        EXPECT_EQ(0, std::system(command.c_str())) << TempFolder::Read(temp.PathOf("achost.txt"));
    }
}

TEST_F(SettingsToolTest, ConcurrentWritersNeverLeaveAnUnreadableFile) {
    ASSERT_EQ(0, Run({"set", File(), "start", "0"}).exitCode);
    const std::string tool = XN_SETTINGS_TOOL;
    std::string script;
    for (const char* key : {"first", "second"})
        script += "(for i in $(seq 1 25); do " + tool + " set " + Quoted(File()) + " " + key +
                  " $i || exit 1; done) & ";
    script += "wait";
    const std::string done = temp.PathOf("writers.done");
    const std::string command = "(" + script + "; touch " + Quoted(done) + ") >/dev/null 2>&1 &";
    ASSERT_EQ(0, std::system(command.c_str()));
    int reads = 0;
    for (bool finished = false; !finished; ++reads) {
        finished = std::filesystem::exists(done);
        XN_List<XN_Setting> records;
        ASSERT_EQ(XN_SettingsFile_OK,
                  XN_SettingsFile_Read(XN_Location(XN_String(File().c_str())), records, nullptr, nullptr))
            << "after " << reads << " reads";
    }
    std::remove(done.c_str());
    EXPECT_GT(reads, 1);
}

} // namespace
} // namespace xn_test
