// The versions file: line classification, the fields of each record, description texts, and whole
// files read from the host's shared folder.
#include "TempFolder.hpp"

#include "XN_AddonUpdate_Versions.hpp"
#include "achost/SharedFolder.hpp"

#include <string>
#include <vector>

namespace xn_test {
namespace {

std::string Utf8(const XN_String& text) {
    const XN_CString bytes = text.ToCStr(XN_String::Encoding_UTF8);
    return bytes.Get() != nullptr ? std::string(bytes.Get()) : std::string();
}

XN_String FromUtf8(const std::string& text) {
    return XN_String(text.c_str(), XN_String::Encoding_UTF8);
}

// One line per record: every field, "|" between them.
std::string Describe(const XN_AddonUpdate_Addon& a) {
    std::string languages;
    for (long i = 0; i < a.languages.GetCount(); ++i)
        languages += std::to_string(a.languages[i]);
    return "addon " + Utf8(a.name) + "|" + Utf8(a.versionText) + "|" + std::to_string(a.major) + "." +
           std::to_string(a.minor) + "." + std::to_string(a.revision) + "." + std::to_string(a.build) + "|" +
           std::to_string(a.hostVersion) + "|" + Utf8(a.date) + "|" + Utf8(a.dateText) + "|" + languages +
           "|" + Utf8(a.text);
}
std::string Describe(const XN_AddonUpdate_Library& l) {
    return "library " + Utf8(l.name) + "|" + Utf8(l.date) + "|" + Utf8(l.dateText) + "|" + Utf8(l.text);
}
std::string Describe(const XN_AddonUpdate_Message& m) {
    return "message " + Utf8(m.fromDate) + "|" + Utf8(m.toDate) + "|" + Utf8(m.text) + "|" + Utf8(m.link);
}

struct Parsed {
    XN_List<XN_AddonUpdate_Message> messages;
    XN_List<XN_AddonUpdate_Addon> addons;
    XN_List<XN_AddonUpdate_Library> libraries;
    std::vector<std::string> skipped; // "line number: reason"

    // Messages, then add-ons, then libraries, each in file order.
    std::vector<std::string> Records() const {
        std::vector<std::string> all;
        for (long i = 0; i < messages.GetCount(); ++i)
            all.push_back(Describe(messages[i]));
        for (long i = 0; i < addons.GetCount(); ++i)
            all.push_back(Describe(addons[i]));
        for (long i = 0; i < libraries.GetCount(); ++i)
            all.push_back(Describe(libraries[i]));
        return all;
    }
};

void NoteSkip(long index, XN_AddonUpdate_SkipReason reason, void* userData) {
    static_cast<Parsed*>(userData)->skipped.push_back(std::to_string(index + 1) + ": " +
                                                      XN_AddonUpdate_SkipReasonText(reason));
}

class VersionsFileTest : public TempFolderTest {
protected:
    void SetUp() override { achost::SetSharedFolder(temp.Path()); }
    void TearDown() override {
        achost::SetSharedFolder("");
        TempFolderTest::TearDown();
    }
    // Writes `bytes` as the downloaded file, reads it back as the update check does, removes it.
    bool ReadTemp(const std::string& bytes, Parsed& parsed) {
        TempFolder::Write(temp.PathOf("__updxn__.tmp"), bytes);
        const bool read = XN_AddonUpdate_ReadVersionsFile(parsed.messages, parsed.addons, parsed.libraries);
        std::remove(temp.PathOf("__updxn__.tmp").c_str());
        return read;
    }
};

TEST_F(VersionsFileTest, ParsesWholeFiles) {
    const std::string addonLine = "MyAddon 19.0.4.2200 (AC190) 03/08/2018 ita FRA";
    const std::string addon = "addon MyAddon|19.0.4.2200|19.0.4.2200|19|20180803|03/08/2018|02|";
    const struct {
        const char* name;
        std::string file;
        std::vector<std::string> records;
        std::vector<std::string> skipped;
    } cases[] = {
        {"only comments and blanks", "* head\n\n  \t\n*x\n", {}, {}},
        {"empty file", "", {}, {}},
        {"add-on with description", addonLine + "\n# one\n#  two\n", {addon + "one\n two"}, {}},
        {"leading empty description lines dropped, later ones kept",
         addonLine + "\n#\n# \n# a\n#\n# b\n",
         {addon + "a\n\nb"},
         {}},
        {"library ignores further words",
         "MyLibrary 03-08-2018 more words\n#x\n",
         {"library MyLibrary|20180803|03-08-2018|"},
         {}},
        {"message split at its link",
         "MESSAGE 01/01/2018 31/12/2018\n# New release\n# see http://example/page\n",
         {"message 20180101|20181231|New release\nsee |http://example/page"},
         {}},
        {"message without dates or link", "XMESSAGEX\n# hi\n", {"message ||hi|"}, {}},
        {"message word is case-sensitive",
         "Message\n# hi\n",
         {},
         {"1: a single word is no record", "2: a \"#\" line that follows no record"}},
        {"link at the very start", "MESSAGE\n# http://a http://b\n", {"message |||http://a http://b"}, {}},
        {"comment ends a description",
         addonLine + "\n* note\n# orphan\n",
         {addon},
         {"3: a \"#\" line that follows no record"}},
        {"indented record line skipped",
         " " + addonLine + "\n",
         {},
         {"1: indented: a record line must begin with its name"}},
        {"three-part version skipped",
         "MyAddon 19.0.4 (AC190) 03/08/2018\n",
         {},
         {"1: the version needs four dot-separated parts (a.b.c.d)"}},
        {"host tag without parentheses skipped",
         "MyAddon 19.0.4.2200 AC190 03/08/2018\n",
         {},
         {"1: the host tag must be \"(AC\" digits \")\", e.g. (AC190)"}},
        {"bad date skipped",
         "MyAddon 19.0.4.2200 (AC190) 3/8/2018\n",
         {},
         {"1: the date must be dd/mm/yyyy or dd-mm-yyyy"}},
        {"records around a bad line kept, CR LF and lone CR ends, any second character dropped",
         "A 01/02/2003\r\nnonsense\rB 1.2.3.4 (AC200) 05-06-2007x int\r\n#xt",
         {"addon B|1.2.3.4|1.2.3.4|20|20070605|05-06-2007x|1|t", "library A|20030201|01/02/2003|"},
         {"2: a single word is no record"}},
        {"UTF-8 with a byte-order mark",
         "\xEF\xBB\xBFL\xC3\xA9 01/01/2020\n# \xD0\x96\n",
         {"library L\xC3\xA9|20200101|01/01/2020|\xD0\x96"},
         {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Parsed parsed;
        ASSERT_TRUE(ReadTemp(c.file, parsed));
        EXPECT_EQ(c.records, parsed.Records());
        // The same file, through the entry point that reports what it skips.
        Parsed linted;
        TempFolder::Write(temp.PathOf("v.txt"), c.file);
        ASSERT_TRUE(XN_AddonUpdate_ReadVersionsFile(XN_Location(FromUtf8(temp.PathOf("v.txt"))),
                                                    linted.messages, linted.addons, linted.libraries,
                                                    NoteSkip, &linted));
        std::remove(temp.PathOf("v.txt").c_str());
        EXPECT_EQ(c.records, linted.Records());
        EXPECT_EQ(c.skipped, linted.skipped);
    }
}

TEST_F(VersionsFileTest, MissingFileOrFolderLeavesTheListsUntouched) {
    Parsed parsed;
    parsed.libraries.AddData(XN_AddonUpdate_Library(), -1);
    EXPECT_FALSE(XN_AddonUpdate_ReadVersionsFile(parsed.messages, parsed.addons, parsed.libraries));
    achost::SetSharedFolder(temp.PathOf("file"));
    TempFolder::Write(temp.PathOf("file"), "");
    EXPECT_FALSE(XN_AddonUpdate_ReadVersionsFile(parsed.messages, parsed.addons, parsed.libraries));
    std::remove(temp.PathOf("file").c_str());
    EXPECT_EQ(1, parsed.libraries.GetCount());
    EXPECT_EQ(0, parsed.addons.GetCount());
}

// Appends to what the caller passed rather than replacing it.
TEST_F(VersionsFileTest, AppendsToTheLists) {
    Parsed parsed;
    ASSERT_TRUE(ReadTemp("L 01/01/2001\n", parsed));
    ASSERT_TRUE(ReadTemp("M 02/02/2002\n", parsed));
    EXPECT_EQ((std::vector<std::string>{"library L|20010101|01/01/2001|", "library M|20020202|02/02/2002|"}),
              parsed.Records());
}

TEST(VersionLineTest, ClassifiesLines) {
    const struct {
        const char* name;
        const char* line;
        int kind;
    } cases[] = {
        {"add-on", "A 19.0.4.2200 (AC190) 03/08/2018", 1},
        {"library wins over add-on", "A 03-08-2018 (AC190) 03/08/2018", 2},
        {"library date with mixed separators", "L 03-08/2018", 2},
        {"library date of 11 characters", "L 03/08/20189", 0},
        {"empty version part reads as a digit run", "A 19..4.2200 (AC190) 03/08/2018", 1},
        {"fifth version part unchecked", "A 1.2.3.4.x (AC190) 03/08/2018", 1},
        {"letter in version", "A 1.2.3.4a (AC190) 03/08/2018", 0},
        {"date word runs on after the year", "A 1.2.3.4 (AC190) 03/08/2018rest", 1},
        {"date word too short", "A 1.2.3.4 (AC190) 03/08/201", 0},
        {"host tag without digits", "A 1.2.3.4 (AC) 03/08/2018", 1},
        {"host tag with a letter", "A 1.2.3.4 (ACx) 03/08/2018", 0},
        {"three words", "A 1.2.3.4 (AC190)", 0},
        {"one word", "A", 0},
        {"empty line", "", 0},
        {"indented line whose words fit one place on", " 1.2.3.4 (AC190) 03/08/2018", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        XN_List<XN_String> words;
        XN_String(c.line).SplitBySpaces(words);
        EXPECT_EQ(c.kind, XN_AddonUpdate_CheckVersionFormat(words));
    }
}

TEST(VersionLineTest, SplitsAddonLines) {
    const struct {
        const char* name;
        const char* line;
        const char* expected;
    } cases[] = {
        {"languages ignoring case, others ignored", "A 1.2.3.4 (AC200) 01/02/2003 RUS x Ita int",
         "addon A|1.2.3.4|1.2.3.4|20|20030201|01/02/2003|601|"},
        {"numbers kept to 16 bits", "A 70000.65535.65536.1 (AC700000) 01/02/2003",
         "addon A|70000.65535.65536.1|4464.65535.0.1|4464|20030201|01/02/2003||"},
        {"missing version parts are 0", "A 7 (AC190)", "addon A|7|7.0.0.0|19||||"},
        {"tabs separate words, a trailing blank adds nothing", "A\t1.2.3.4\t(AC190) 01/02/2003 ",
         "addon A|1.2.3.4|1.2.3.4|19|20030201|01/02/2003||"},
        {"empty line", "", "addon ||0.0.0.0|0||||"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        XN_AddonUpdate_Addon addon;
        XN_AddonUpdate_SplitAddonVersion(XN_String(c.line), addon);
        EXPECT_EQ(c.expected, Describe(addon));
    }
}

TEST(VersionLineTest, ReadTextAdvancesOverItsLines) {
    XN_List<XN_String> lines;
    XN_String("R\n# a\n#\n# b\nnext\n#-c").SplitLines(lines, true, true);
    long index = 0;
    EXPECT_EQ("a\n\nb", Utf8(XN_AddonUpdate_ReadText(index, lines)));
    EXPECT_EQ(3, index);
    index = 4;
    EXPECT_EQ("c", Utf8(XN_AddonUpdate_ReadText(index, lines)));
    EXPECT_EQ(5, index);
    EXPECT_EQ("", Utf8(XN_AddonUpdate_ReadText(index, lines)));
    EXPECT_EQ(5, index);
}

TEST(VersionLineTest, FormatsDatesDayFirst) {
    const struct {
        const char* date;
        const char* sortable;
    } cases[] = {{"03/08/2018", "20180803"}, {"31-12-1999xyz", "19991231"}, {"03/08", "0803"}, {"", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.date);
        XN_String date(c.date);
        EXPECT_EQ(c.sortable, Utf8(XN_AddonUpdate_FormatDate(date)));
    }
}

// Records live in lists that move them bitwise; copies of a list own their language lists.
TEST(VersionRecordTest, ListCopiesAreIndependent) {
    XN_List<XN_AddonUpdate_Addon> addons;
    for (int i = 0; i < 5; ++i) {
        XN_AddonUpdate_Addon addon;
        XN_AddonUpdate_SplitAddonVersion(XN_String("A 1.2.3.4 (AC190) 01/02/2003 ita rus"), addon);
        addons.AddData(addon, 0);
    }
    XN_List<XN_AddonUpdate_Addon> copy(addons);
    addons[4].languages.AddData(2, -1);
    addons[4].name = XN_String("B");
    addons.DeleteData(0);
    EXPECT_EQ("addon A|1.2.3.4|1.2.3.4|19|20030201|01/02/2003|06|", Describe(copy[4]));
    EXPECT_EQ("addon B|1.2.3.4|1.2.3.4|19|20030201|01/02/2003|062|", Describe(addons[3]));
}

} // namespace
} // namespace xn_test
