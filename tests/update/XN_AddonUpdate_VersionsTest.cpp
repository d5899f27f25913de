// The versions file read from the host's shared folder: which lines make records, every field of
// each record, description texts, and the reason given for each skipped line.
#include "TempFolder.hpp"
#include "Utf8.hpp"

#include "XN_AddonUpdate_Versions.hpp"
#include "achost/SharedFolder.hpp"

#include <tuple>

namespace xn_test {
namespace {

// One line per record, every field with "|" between: messages, add-ons, libraries, then skips.
struct Parsed {
    XN_List<XN_AddonUpdate_Message> messages;
    XN_List<XN_AddonUpdate_Addon> addons;
    XN_List<XN_AddonUpdate_Library> libraries;
    std::string skipped;

    std::string Describe() const {
        std::string all;
        for (long i = 0; i < messages.GetCount(); ++i)
            all += "M " + Utf8(messages[i].fromDate) + "|" + Utf8(messages[i].toDate) + "|" +
                   Utf8(messages[i].text) + "|" + Utf8(messages[i].link) + "\n";
        for (long i = 0; i < addons.GetCount(); ++i) {
            const XN_AddonUpdate_Addon& a = addons[i];
            std::string languages;
            for (long l = 0; l < a.languages.GetCount(); ++l)
                languages += std::to_string(a.languages[l]);
            all += "A " + Utf8(a.name) + "|" + Utf8(a.versionText) + "|" + std::to_string(a.major) + "." +
                   std::to_string(a.minor) + "." + std::to_string(a.revision) + "." +
                   std::to_string(a.build) + "|" + std::to_string(a.hostVersion) + "|" + Utf8(a.date) + "|" +
                   Utf8(a.dateText) + "|" + languages + "|" + Utf8(a.text) + "\n";
        }
        for (long i = 0; i < libraries.GetCount(); ++i)
            all += "L " + Utf8(libraries[i].name) + "|" + Utf8(libraries[i].date) + "|" +
                   Utf8(libraries[i].dateText) + "|" + Utf8(libraries[i].text) + "\n";
        return all + skipped;
    }
};

void NoteSkip(long index, const XN_String&, XN_AddonUpdate_SkipReason reason, void* userData) {
    const char* const names[] = {"indented", "stray #",      "one word", "few words",
                                 "parts",    "not a number", "host tag", "date"};
    static_cast<Parsed*>(userData)->skipped +=
        "skip " + std::to_string(index + 1) + " " + names[reason] + "\n";
}

class VersionsFileTest : public TempFolderTest {
protected:
    void SetUp() override { achost::SetSharedFolder(temp.Path()); }
    void TearDown() override {
        achost::SetSharedFolder("");
        TempFolderTest::TearDown();
    }
    std::string TempFile() const { return temp.PathOf("__updxn__.tmp"); }
};

TEST_F(VersionsFileTest, ParsesEachKindOfLine) {
    const std::string addon = "A 19.0.4.2200 (AC190) 03/08/2018";
    const std::string parsedAddon = "A A|19.0.4.2200|19.0.4.2200|19|20180803|03/08/2018||";
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"comments and blank lines only", "* x\n\n \t\n*y", ""},
        {"languages matched ignoring case, other words ignored", addon + " ita x FRA rus",
         "A A|19.0.4.2200|19.0.4.2200|19|20180803|03/08/2018|026|\n"},
        {"numbers kept to 16 bits", "A 70000.1.2.65536 (AC700000) 03/08/2018",
         "A A|70000.1.2.65536|4464.1.2.0|4464|20180803|03/08/2018||\n"},
        {"empty version part passes as 0", "A 19..4.2200 (AC190) 03/08/2018",
         "A A|19..4.2200|19.0.4.2200|19|20180803|03/08/2018||\n"},
        {"date word's length unchecked, tabs separate", "A\t1.2.3.4.x (AC200)  05-06-2007yz",
         "A A|1.2.3.4.x|1.2.3.4|20|20070605|05-06-2007yz||\n"},
        {"library wins over add-on, more words ignored", "L 01/02/2003 (AC190) 03/08/2018",
         "L L|20030201|01/02/2003|\n"},
        {"library date of 11 characters", "L 01/02/20031", "skip 1 few words\n"},
        {"indented record line skipped", " " + addon, "skip 1 indented\n"},
        {"three-part version skipped", "A 19.0.4 (AC190) 03/08/2018", "skip 1 parts\n"},
        {"letter in version skipped", "A 19.0.4a.1 (AC190) 03/08/2018", "skip 1 not a number\n"},
        {"host tag without parentheses skipped", "A 19.0.4.2200 AC190 03/08/2018", "skip 1 host tag\n"},
        {"month-first or short date skipped", "A 19.0.4.2200 (AC190) 3/8/2018", "skip 1 date\n"},
        {"one word skipped", "A", "skip 1 one word\n"},
        {"description: two characters dropped, empty lines dropped while leading, next line parsed",
         addon + "\n#\n# \n#xa\n#\n#  b\nnext", parsedAddon + "a\n\n b\nskip 7 one word\n"},
        {"\"#\" line after a comment follows no record", addon + "\n* c\n# d",
         parsedAddon + "\nskip 3 stray #\n"},
        {"message split at its first link",
         "XMESSAGE 01/01/2018 31/12/2018\n# New\n# see http://a/b http://c",
         "M 20180101|20181231|New\nsee |http://a/b http://c\n"},
        {"message word is case-sensitive", "Message\n# hi", "skip 1 one word\nskip 2 stray #\n"},
        {"message without dates or link", "MESSAGE\n# http", "M ||http|\n"},
        {"CR LF, lone CR, byte-order mark and UTF-8",
         "\xEF\xBB\xBFL\xC3\xA9 01/01/2020\r\n# \xD0\x96\rM 02/02/2002",
         "L L\xC3\xA9|20200101|01/01/2020|\xD0\x96\nL M|20020202|02/02/2002|\n"},
    };
    for (const auto& [name, file, expected] : cases) {
        SCOPED_TRACE(name);
        Parsed parsed, linted;
        TempFolder::Write(TempFile(), file);
        ASSERT_TRUE(XN_AddonUpdate_ReadVersionsFile(parsed.messages, parsed.addons, parsed.libraries));
        ASSERT_TRUE(XN_AddonUpdate_ReadVersionsFile(XN_Location(XN_String(TempFile().c_str())),
                                                    linted.messages, linted.addons, linted.libraries,
                                                    NoteSkip, &linted));
        std::remove(TempFile().c_str());
        EXPECT_EQ(expected, linted.Describe());
        EXPECT_EQ(linted.Describe(), parsed.Describe() + linted.skipped);
    }
}

// The lists are appended to, never emptied; a missing file or folder leaves them untouched.
TEST_F(VersionsFileTest, AppendsAndLeavesTheListsAloneWithoutAFile) {
    Parsed parsed;
    for (const char* file : {"L 01/01/2001", "M 02/02/2002"}) {
        TempFolder::Write(TempFile(), file);
        EXPECT_TRUE(XN_AddonUpdate_ReadVersionsFile(parsed.messages, parsed.addons, parsed.libraries));
        std::remove(TempFile().c_str());
    }
    EXPECT_FALSE(XN_AddonUpdate_ReadVersionsFile(parsed.messages, parsed.addons, parsed.libraries));
    achost::SetSharedFolder(temp.PathOf("no/such"));
    EXPECT_FALSE(XN_AddonUpdate_ReadVersionsFile(parsed.messages, parsed.addons, parsed.libraries));
    EXPECT_EQ("L L|20010101|01/01/2001|\nL M|20020202|02/02/2002|\n", parsed.Describe());
}

// Records move bitwise inside a list's block; a copy of the list owns its own language lists.
TEST(VersionRecordTest, ListCopiesAreIndependent) {
    Parsed parsed;
    for (int i = 0; i < 3; ++i) {
        XN_AddonUpdate_Addon addon;
        XN_AddonUpdate_SplitAddonVersion(XN_String("A 1.2.3.4 (AC190) 01/02/2003 ita"), addon);
        parsed.addons.AddData(addon, 0);
    }
    Parsed copy;
    copy.addons = parsed.addons;
    parsed.addons[2].languages.AddData(2, -1);
    parsed.addons.DeleteData(0);
    EXPECT_EQ(3, copy.addons.GetCount());
    EXPECT_EQ(std::string::npos, copy.Describe().find("|02|"));
    EXPECT_EQ(
        "A A|1.2.3.4|1.2.3.4|19|20030201|01/02/2003|0|\nA A|1.2.3.4|1.2.3.4|19|20030201|01/02/2003|02|\n",
        parsed.Describe());
}

} // namespace
} // namespace xn_test
