// xn-settings run as a program: its answers, its exit codes, and files the add-on's code reads.
#include "SettingsTestSupport.hpp"

#include <sys/stat.h>
#include <sys/wait.h>

namespace xn_test {
namespace {

struct Outcome {
    int exitCode;
    std::string out, err;
};

std::string Quoted(const std::string& argument) {
    std::string quoted = "'";
    for (const char c : argument)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

class SettingsToolTest : public TempFolderTest {
protected:
    // Runs xn-settings with `arguments`; the word FILE stands for the test's file, and an argument
    // starting with ">" redirects standard output elsewhere.
    Outcome Run(const std::vector<std::string>& arguments) {
        const std::string out = temp.PathOf("out.txt"), err = temp.PathOf("err.txt");
        std::string command = std::string(XN_SETTINGS_TOOL) + " >" + out + " 2>" + err;
        for (const std::string& argument : arguments)
            command += " " + (argument[0] == '>' ? argument : Quoted(argument == "FILE" ? File() : argument));
        const int status = std::system(command.c_str());
        Outcome outcome{WEXITSTATUS(status), TempFolder::Read(out), TempFolder::Read(err)};
        std::remove(out.c_str());
        std::remove(err.c_str());
        return outcome;
    }
    std::string File() const { return temp.PathOf("s.cfg"); }
};

TEST_F(SettingsToolTest, AnswersEachCommand) {
    const std::string big = "$a: " + std::string(XN_SETTINGS_IMAGE_MAX, 'v') + "\n";
    const struct {
        const char* name;
        const char* before; // plain image; null: no file
        std::vector<std::string> arguments;
        int exitCode;
        const char* out;
        const char* errPart;
        const char* after = nullptr; // plain image; null: as before
    } cases[] = {
        {"dump", "$a: x\n#y\r#\\\n$b: \n", {"dump", "FILE"}, 0, "a: x\\ny\\r\\\\\nb: \n", ""},
        {"bad record", "$a: 1\n$b\n", {"dump", "FILE"}, 1, "a: 1\n", "record 2 is malformed (byte offset 6)"},
        {"missing file", nullptr, {"dump", "FILE"}, 1, "", "s.cfg: no such file\n"},
        {"a folder",
         nullptr,
         {"get", temp.Path(), "a"},
         1,
         "",
         "work: cannot read the file: not a regular file (a folder)\n"},
        {"too large",
         big.c_str(),
         {"dump", "FILE"},
         1,
         "",
         "larger than 100000 bytes, which no add-on of the suite can read\nxn-settings: an add-on that loads "
         "this file first keeps a copy of it as"},
        {"get", "$a: x\n#y\n", {"get", "FILE", "a"}, 0, "x\ny\n", ""},
        {"get absent key", "$a: 1\n", {"get", "FILE", "A"}, 1, "", "s.cfg: no key \"A\"\n"},
        {"set replaces", "$a: 1\n$b: 2\n", {"set", "FILE", "a", "x\ny"}, 0, "", "", "$a: x\n#y\n$b: 2\n"},
        {"set appends", "$a: 1\n", {"set", "FILE", "c", "3"}, 0, "", "", "$a: 1\n$c: 3\n"},
        {"set creates the file", nullptr, {"set", "FILE", "c", "3"}, 0, "", "", "$c: 3\n"},
        {"set key with a colon", "$a: 1\n", {"set", "FILE", "a:b", "3"}, 1, "", "must not"},
        {"8-bit text to and from UTF-8",
         "$\xE9: \xFC\n",
         {"set", "FILE", "\xC3\xA9", "\xE2\x82\xAC"},
         0,
         "",
         "",
         "$\xE9: \x80\n"},
        {"dump in UTF-8", "$\xE9: \x80\n", {"dump", "FILE"}, 0, "é: €\n", ""},
        {"a value the file cannot hold", "$a: 1\n", {"set", "FILE", "a", "中"}, 1, "", "windows-1252 text"},
        {"not UTF-8", "$a: 1\n", {"set", "FILE", "a", "\xE9"}, 1, "", "value is not valid UTF-8"},
        {"set on a malformed file", "x", {"set", "FILE", "a", "1"}, 1, "", "malformed"},
        {"remove", "$a: 1\n$b: 2\n", {"remove", "FILE", "a"}, 0, "", "", "$b: 2\n"},
        {"no key given", "$a: 1\n", {"get", "FILE"}, 2, "", "missing KEY\nusage: xn-settings get FILE KEY"},
        {"unknown command", "$a: 1\n", {"show", "FILE"}, 2, "", "unknown command \"show\""},
        {"no command", "$a: 1\n", {}, 2, "", "usage: xn-settings dump|get|set|remove"},
        {"no folder",
         nullptr,
         {"set", temp.PathOf("none/s.cfg"), "a", "2"},
         1,
         "",
         "No such file or directory"},
        {"empty name", nullptr, {"dump", ""}, 2, "", "xn-settings: the file name is empty\n"},
        {"output cannot be written",
         "$a: 1\n",
         {"dump", "FILE", ">/dev/full"},
         2,
         "",
         "xn-settings: cannot write the output: No space left on device\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::remove(File().c_str());
        if (c.before != nullptr)
            WritePlain(File(), c.before);
        const Outcome outcome = Run(c.arguments);
        EXPECT_EQ(c.exitCode, outcome.exitCode);
        EXPECT_EQ(c.out, outcome.out);
        EXPECT_NE(std::string::npos, outcome.err.find(c.errPart)) << outcome.err;
        const char* after = c.after != nullptr ? c.after : c.before;
        EXPECT_EQ(after != nullptr ? after : "(no file)",
                  std::filesystem::exists(File()) ? ReadPlain(File()) : "(no file)");
    }
}

// A malformed file: dump tells that the add-ons keep a copy before rewriting it, and where it is.
TEST_F(SettingsToolTest, TellsOfTheCopyOfAnUnreadableFileAndWhyAFileCannotBeUsed) {
    WritePlain(File(), "$a: 1\nbad\n");
    EXPECT_NE(std::string::npos,
              Run({"dump", "FILE"}).err.find("keeps a copy of it as " + File() + ".unreadable"));
    WritePlain(File() + ".unreadable", "$a: 1\nbad\n");
    WritePlain(File(), "$a: 1\n");
    const Outcome outcome = Run({"dump", "FILE"});
    EXPECT_EQ(0, outcome.exitCode);
    EXPECT_NE(std::string::npos, outcome.err.find(File() + ".unreadable holds a copy")) << outcome.err;
    // A read-only file, and a working folder that is gone, get a reason.
    chmod(File().c_str(), 0444);
    const Outcome readOnly = Run({"set", "FILE", "a", "2"});
    EXPECT_EQ(1, readOnly.exitCode);
    EXPECT_NE(std::string::npos,
              readOnly.err.find("cannot write the file (nothing was changed): the file is read-only"))
        << readOnly.err;
    const std::string gone = temp.PathOf("gone");
    const std::string command = "mkdir " + Quoted(gone) + " && cd " + Quoted(gone) + " && rmdir " +
                                Quoted(gone) + " && " + XN_SETTINGS_TOOL + " dump s.cfg 2>" +
                                Quoted(temp.PathOf("err.txt"));
    EXPECT_EQ(2, WEXITSTATUS(std::system(command.c_str())));
    EXPECT_NE(std::string::npos,
              TempFolder::Read(temp.PathOf("err.txt")).find("the working folder: No such file"));
    std::remove(temp.PathOf("err.txt").c_str());
}

TEST_F(SettingsToolTest, ConcurrentWritersNeverLeaveAnUnreadableFile) {
    ASSERT_EQ(0, Run({"set", File(), "start", "0"}).exitCode);
    std::string script;
    for (const char* key : {"first", "second"})
        script += std::string("(for i in $(seq 1 25); do ") + XN_SETTINGS_TOOL + " set " + Quoted(File()) +
                  " " + key + " $i || exit 1; done) & ";
    const std::string done = temp.PathOf("writers.done");
    const std::string command = "(" + script + "wait; touch " + Quoted(done) + ") >/dev/null 2>&1 &";
    ASSERT_EQ(0, std::system(command.c_str()));
    int reads = 0;
    for (bool finished = false; !finished; ++reads) {
        finished = std::filesystem::exists(done);
        XN_List<XN_Setting> records;
        ASSERT_EQ(XN_SettingsFile_OK, XN_SettingsFile_Read(XN_Location(XN_String(File().c_str())), records))
            << "after " << reads << " reads";
    }
    std::remove(done.c_str());
    EXPECT_GT(reads, 1);
}

} // namespace
} // namespace xn_test
