// The resource compiler: what it accepts, the file and line of what it rejects, and the embedded image.
#include "achost/ResourceCompiler.hpp"

#include "HostTest.hpp"

#include <tuple>

#include <sys/stat.h>

namespace {

using namespace std::string_literals;

bool Compile(const std::string& text, achost::ResourceSet* set, std::string* error) {
    return achost::CompileGrcText(text, "t.grc", FIXTURE_IMAGES, set, error);
}

TEST(ResourceCompilerTest, RejectsMalformedInputWithFileAndLine) {
    const std::tuple<std::string, std::string> cases[] = {
        {"'STR#' 1 \"d\" {\n \"abc\n}", "t.grc:2: unterminated string"},
        {"/* never closed\n\n", "t.grc:1: unterminated comment"},
        {"'ABCD' 1 \"d\" { }", "t.grc:1: unknown resource type 'ABCD'"},
        {"'STR' 1 \"d\" { }", "t.grc:1: a resource type is four characters in single quotes, like 'STR#'"},
        {"'STR#' 1 \"d\" {\n\"a\"\n", "t.grc:1: missing '}' to close the body opened at line 1"},
        {"'STR#' 1 \"d\" \"e\" { }", "t.grc:1: expected one quoted description between the ID and '{'"},
        {"'STR#' 5 \"d\" { }\n'STR#' 5 \"d\" { }", "t.grc:2: duplicate 'STR#' 5 (first defined at line 1)"},
        {"'STR#' 1 \"d\" {\n\"a\"\n abc }", "t.grc:3: 'STR#' items are quoted strings, found 'abc'"},
        {"'STR#' MENU_ID \"d\" { }", "t.grc:1: unknown resource ID 'MENU_ID'"},
        {"'STR#' 40000 \"d\" { }", "t.grc:1: expected a resource ID from 1 to 32767"},
        {"\n'MDID' 1 \"d\" { 1 2 }", "t.grc:2: the 'MDID' resource must have ID 32500"},
        {"'MDID' 32500 \"d\" { 1 }", "t.grc:1: an 'MDID' is { <developer ID> <local ID> }"},
        {"'GICN' 1 \"d\" { \"nothere\" 0 0 0 }",
         "t.grc:1: icon image 'nothere.png' not found in " FIXTURE_IMAGES},
        {"'GICN' 1 \"d\" {\n \"dot\" 0 256 0 }", "t.grc:2: expected a colour value 0..255, found '256'"},
        {"'GDLG' 1 Modal 0 0 10 10 \"t\" {\nButton 1 1 5 5 LargePlain \"OK\"\nButon 1 1 5 5 }",
         "t.grc:3: unknown dialog item type 'Buton'"},
        {"'GDLG' 1 Dialog 0 0 10 10 \"t\" { }",
         "t.grc:1: a dialog starts with its kind: Modal, Modeless, Palette or TabPage"},
        {"'GDLG' 1 Modal | wobbly 0 0 10 10 \"t\" { }", "t.grc:1: unknown dialog flag 'wobbly'"},
        {"'GDLG' 1 Modal 0 0 10 \"t\" { }",
         "t.grc:1: a dialog header is <kind> [| flag ...] <left> <top> <width> <height> \"title\""},
        {"'DLGH' 1 Anchor { 1 \"tip\" }", "t.grc:1: 'DLGH' entries are <item> \"tooltip\" <name>"},
        {"'STR#' 1 \"d\" { \"a\\q\" }", "t.grc:1: unknown escape '\\q' in string"},
        {"'STR#' 1 \"d\" { \"\xC3\" }", "t.grc:1: string is not valid UTF-8"},
        {"'STR#' 1 \"d\" { \"\xED\xA0\x80\" }", "t.grc:1: string is not valid UTF-8"},     // a surrogate
        {"'STR#' 1 \"d\" { \"\xE0\x80\xAF\" }", "t.grc:1: string is not valid UTF-8"},     // overlong
        {"'STR#' 1 \"d\" { \"\xF4\x90\x80\x80\" }", "t.grc:1: string is not valid UTF-8"}, // > U+10FFFF
        {"'STR#' 1 \"d\" { \"a\x1B[2Jb\" }", "t.grc:1: string holds the control character \\x1B"},
        {"'STR#' 1 \"d\" {\n\"" + std::string(254, 'a') + "\xF0\x9F\x98\x80\" }",
         "t.grc:2: string of 256 characters: at most 255 fit a resource string"},
        {"#define A 1\n#define A 1\n", "t.grc:2: A is defined already, at line 1"},
        {"\n'STR#' 1 \"d\" { \"a\0\" }"s, "t.grc:2: a NUL byte: this is not a text file"},
        {"'STR#' 1 \"d\" { \x01 }", "t.grc:1: unexpected character '\\x01'"},
        {"#if 0\n", "t.grc:1: unsupported preprocessor line '#if'"},
        {"'STR#' 1 \"d\" { \"a\" } }", "t.grc:1: expected a resource type like 'STR#', found '}'"},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        achost::ResourceSet set;
        std::string error;
        EXPECT_FALSE(Compile(text, &set, &error));
        EXPECT_EQ(expected, error);
    }
    achost::ResourceSet set;
    std::string error;
    EXPECT_TRUE(Compile("'STR#' 1 \"d\" { \"" + std::string(255, 'a') + "\" }", &set, &error)) << error;
}

const char kGood[] =
    "\xEF\xBB\xBF// A resource file with every kind of resource\n"
    "#include \"Ids.h\"\n"
    "#define DIALOG 32734\n"
    "'STR#' 32510 \"Texts\" { /* [1] */ \"One\" \"Tab\\tand \\\"quote\\\"\"\n \"\" }\n"
    "'GICN' 32600 \"Dot\" { \"dot\" 255 0 255 }\n"
    "'MDID' 32500 \"Id\" { 0xFFFFFFFF 7 }\n"
    "'GDLG' DIALOG Modal | grow | close 40 40 483 282 \"Language\" {\n"
    "  Button 10 250 80 20 LargePlain \"OK\"\n"
    "  PopupControl 10 10 100 20 90 2\n"
    "  NoIcon \"first\"\n"
    "  SingleSelList 10 40 200 150 SmallPlain PartialItems 18\n"
    "}\n"
    "'DLGH' DIALOG DLG_Language { 1 \"\" Button_0 2 \"\" PopUp_0 3 \"\" SingleSelListBox_0 }\n";

TEST(ResourceCompilerTest, ReadsEveryResourceKindIntoAnImageThatReadsBackAndRefusesABrokenOne) {
    achost::ResourceSet set;
    std::string error;
    ASSERT_TRUE(Compile(kGood, &set, &error)) << error;
    const std::vector<std::string> strings = {"One", "Tab\tand \"quote\"", ""};
    EXPECT_EQ(strings, set.Strings(32510));
    EXPECT_EQ("Tab\tand \"quote\"", set.String(32510, 2));
    EXPECT_EQ(std::nullopt, set.String(32510, 4));
    EXPECT_EQ(std::nullopt, set.String(32510, 0));
    EXPECT_EQ(std::nullopt, set.Strings(32511));
    EXPECT_EQ(xn_test::TempFolder::Read(FIXTURE_IMAGES "/dot.png"),
              set.Find(achost::ResType("GICN"), 32600)->data);
    EXPECT_EQ(0xFFFFFFFF, set.Find(achost::ResType("MDID"), 32500)->body[0][0].number);
    const achost::Resource* dialog = set.Find(achost::ResType("GDLG"), 32734);
    ASSERT_NE(nullptr, dialog);
    EXPECT_EQ(3u, dialog->body.size() - 1); // three items, the popup's entry line kept apart
    EXPECT_EQ("Language", dialog->header.back().text);
    EXPECT_EQ(9, dialog->body[0][0].line);
    // The embedded image reads back to the same set, and no truncation of it reads.
    achost::ResourceSet back;
    const std::string image = set.ToImage();
    ASSERT_TRUE(achost::ResourceSet::FromImage(image, &back));
    EXPECT_EQ(image, back.ToImage());
    for (size_t size = 0; size < image.size(); ++size)
        ASSERT_FALSE(achost::ResourceSet::FromImage(image.substr(0, size), &back)) << size;
    EXPECT_FALSE(achost::ResourceSet::FromImage(image + "x", &back));
    // An image is checked as the compiler checks its text: the host never builds a dialog or copies a
    // string the compiler would have refused.
    const std::tuple<const char*, std::function<void(achost::Resource&)>, std::string> rows[] = {
        {"GDLG", [](achost::Resource& r) { r.body.insert(r.body.begin(), std::vector<achost::ResToken>()); },
         "'GDLG' 32734: an empty dialog item line"},
        {"STR#", [](achost::Resource& r) { r.body[0][0].text.assign(1200, 'x'); },
         "'STR#' 32510 (line 4): string of 1200 characters: at most 255 fit a resource string"},
        {"GICN", [](achost::Resource& r) { r.data = "GIF89a"; },
         "'GICN' 32600 (line 6): the icon's image is not a PNG file"},
    };
    for (const auto& [name, breakIt, expected] : rows) {
        SCOPED_TRACE(name);
        achost::ResourceSet broken;
        for (const auto& [key, resource] : set.All()) {
            achost::Resource copy = resource;
            if (achost::ResTypeName(copy.type) == name)
                breakIt(copy);
            broken.Add(std::move(copy));
        }
        std::string problem;
        EXPECT_FALSE(achost::ResourceSet::FromImage(broken.ToImage(), &back, &problem));
        EXPECT_EQ(expected, problem);
    }
}

class ResourceToolTest : public xn_test::TempFolderTest {
protected:
    // Runs achost-grc on `grc`; an option in `options` overrides the one given before it.
    int Run(const std::string& grc, std::string* output, const std::string& options = "") {
        return xn_test::RunProgram(std::string(ACHOST_GRC_TOOL) + " " + grc + " --images " FIXTURE_IMAGES +
                                       " --output " + temp.PathOf("r.bin") + " --asm " + temp.PathOf("r.S") +
                                       " " + options + " 2>&1",
                                   output);
    }
};

// A failure names the file at fault and leaves no output behind, not even a part of one; an icon
// image that is not a regular file is refused without waiting on it or reading it.
TEST_F(ResourceToolTest, FailsTheBuildWithFileAndLineOrWritesTheImageAndItsEmbedding) {
    const std::string bad = temp.PathOf("bad.grc"), good = temp.PathOf("good.grc"),
                      icon = temp.PathOf("icon.grc");
    xn_test::TempFolder::Write(bad, "'STR#' 1 \"d\" {\n  \"ok\"\n  \"broken\n}\n");
    xn_test::TempFolder::Write(good, "'STR#' 1 \"d\" { \"ok\" }\n");
    xn_test::TempFolder::Write(icon, "'GICN' 1 \"d\" { \"icon\" 0 0 0 }\n");
    for (const char* folder : {"fifo", "zero", "folder"})
        std::filesystem::create_directory(temp.PathOf(folder));
    ASSERT_EQ(0, mkfifo(temp.PathOf("fifo/icon.png").c_str(), 0600));
    std::filesystem::create_symlink("/dev/zero", temp.PathOf("zero/icon.png"));
    std::filesystem::create_directory(temp.PathOf("folder/icon.png"));
    const std::set<std::string> before = xn_test::TempFolder::Names(temp.Path());
    const std::string notRegular = " is not a regular file (a device, a FIFO or a socket)\n";
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {bad, "", bad + ":3: unterminated string\n"},
        {temp.Path(), "", temp.Path() + ":0: is a folder, not a resource file\n"},
        {good, "--output " + temp.PathOf("none/r.bin"),
         "achost-grc: " + temp.PathOf("none/r.bin") + ": cannot create it: No such file or directory\n"},
        {good, "--asm " + temp.PathOf("none/r.S"),
         "achost-grc: " + temp.PathOf("none/r.S") + ": cannot create it: No such file or directory\n"},
        {icon, "--images " + temp.PathOf("fifo"),
         icon + ":1: icon image 'icon.png' in " + temp.PathOf("fifo") + notRegular},
        {icon, "--images " + temp.PathOf("zero"),
         icon + ":1: icon image 'icon.png' in " + temp.PathOf("zero") + notRegular},
        {icon, "--images " + temp.PathOf("folder"),
         icon + ":1: icon image 'icon.png' in " + temp.PathOf("folder") + " is a folder, not an image\n"},
    };
    for (const auto& [grc, options, message] : rows) {
        SCOPED_TRACE(grc + " " + options);
        std::string output;
        EXPECT_EQ(1, Run(grc, &output, options));
        EXPECT_EQ(message, output);
        EXPECT_EQ(before, xn_test::TempFolder::Names(temp.Path()));
    }
    // A good file: the image and its embedding.
    std::string output;
    ASSERT_EQ(0, Run(FIXTURE_GRC, &output)) << output;
    achost::ResourceSet set;
    EXPECT_TRUE(achost::ResourceSet::FromImage(xn_test::TempFolder::Read(temp.PathOf("r.bin")), &set));
    EXPECT_EQ("\t.section .achost.resources,\"\",@progbits\n\t.incbin \"" + temp.PathOf("r.bin") +
                  "\"\n\t.section .note.GNU-stack,\"\",@progbits\n",
              xn_test::TempFolder::Read(temp.PathOf("r.S")));
}

} // namespace
