// The settings file format on real files: what Save writes, what Load keeps, and the size guards.
#include "SettingsTestSupport.hpp"

#include <filesystem>
#include <vector>

namespace xn_test {
namespace {

const XN_AddonSettings_Type kShared = XN_AddonSettings_AllAddons;
using Records = std::vector<std::pair<std::string, std::string>>;

Records SharedRecords() {
    Records records;
    for (long i = 0; i < XN_AddonSettings_GetCount(kShared); ++i) {
        XN_String key, value;
        XN_AddonSettings_Get(kShared, i, &key, &value);
        records.emplace_back(Utf8(key), Utf8(value));
    }
    return records;
}

using SettingsFormatTest = SharedFolderTest;

TEST_F(SettingsFormatTest, SavesTheTwoRecordImage) {
    XN_AddonSettings_Set(kShared, "AutoUpdate", "1", true);
    XN_AddonSettings_Set(kShared, "Language_str", "ita", true);
    ASSERT_TRUE(XN_AddonSettings_Save(kShared));
    EXPECT_EQ("$AutoUpdate: 1\n$Language_str: ita\n", ReadPlain(SharedPath()));
    EXPECT_EQ('\x42', TempFolder::Read(SharedPath())[0]) << "\"$\" (0x24) with its halves exchanged";
}

TEST_F(SettingsFormatTest, ValuesWithLineBreaksRoundTrip) {
    const struct {
        const char* name;
        std::string value, written, readBack;
    } cases[] = {
        {"LF", "a\nb", "$k: a\n#b\n", "a\nb"},
        {"CR", "a\rb", "$k: a\r#b\n", "a\rb"},
        {"CR LF", "a\r\nb", "$k: a\r\n#b\n", "a\r\nb"},
        {"two CR LF", "a\r\n\r\nb", "$k: a\r\n#\r\n#b\n", "a\r\n\r\nb"},
        {"trailing LF", "a\n", "$k: a\n#\n", "a\n"},
        {"empty", "", "$k: \n", ""},
        {"colon and dollar", "$x: y", "$k: $x: y\n", "$x: y"},
        {"empty line keeps a \"#\" (the byte after \"#\" is not examined)", "a\n\nb", "$k: a\n#\n#b\n",
         "a\n\n#b"},
        {"non-ASCII", "é\nü", "$k: é\n#ü\n", "é\nü"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        XN_AddonSettings_Clear(kShared);
        XN_AddonSettings_Set(kShared, "k", XN_String(c.value.c_str()), true);
        ASSERT_TRUE(XN_AddonSettings_Save(kShared));
        EXPECT_EQ(c.written, ReadPlain(SharedPath()));
        ASSERT_TRUE(XN_AddonSettings_Load(kShared, false));
        EXPECT_EQ((Records{{"k", c.readBack}}), SharedRecords());
    }
}

TEST_F(SettingsFormatTest, LoadKeepsWhatTheReaderRulesKeep) {
    const struct {
        const char* name;
        const char* plain; // null: no file
        size_t size;
        bool loads;
        Records records;
    } cases[] = {
        {"no file", nullptr, 0, true, {}},
        {"empty file", "", 0, true, {}},
        {"key cut at its first colon, any byte after it skipped",
         "$a:b: c\n$d: 1\n",
         14,
         true,
         {{"a", ": c"}, {"d", "1"}}},
        {"last record without its line feed", "$a: 1\n$b: 2", 11, true, {{"a", "1"}}},
        {"record cut right after the colon", "$a: 1\n$b:", 9, true, {{"a", "1"}}},
        {"continuation at the very end", "$a: 1\n#", 7, true, {}},
        {"trailing line break before the next record",
         "$a: x\n#\n$b: 1\n",
         14,
         true,
         {{"a", "x\n"}, {"b", "1"}}},
        {"binary, no dollar first", "\x01\xff\x00\x7f", 4, false, {}},
        {"dollar as the last byte", "$a: 1\n$", 7, false, {{"a", "1"}}},
        {"empty key", "$: 1\n", 5, false, {}},
        {"key without colon", "$a: 1\n$b\n", 9, false, {{"a", "1"}}},
        {"other byte after a line break", "$a: 1\n$b: 2\nc", 13, false, {{"a", "1"}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        XN_AddonSettings_Set(kShared, "stale", "x", true);
        std::filesystem::remove(SharedPath());
        if (c.plain != nullptr)
            WritePlain(SharedPath(), std::string(c.plain, c.size));
        EXPECT_EQ(c.loads, XN_AddonSettings_Load(kShared, false));
        EXPECT_EQ(c.records, SharedRecords());
    }
}

TEST_F(SettingsFormatTest, ImagesOverTheLimitAreRefusedOnBothSides) {
    WritePlain(SharedPath(), "$old: 1\n");
    XN_AddonSettings_Set(kShared, "k", XN_String(std::string(XN_SETTINGS_IMAGE_MAX - 4, 'v').c_str()), true);
    EXPECT_FALSE(XN_AddonSettings_Save(kShared));
    EXPECT_EQ("$old: 1\n", ReadPlain(SharedPath()));

    XN_AddonSettings_Set(kShared, "k", XN_String(std::string(XN_SETTINGS_IMAGE_MAX - 5, 'v').c_str()), true);
    ASSERT_TRUE(XN_AddonSettings_Save(kShared));
    ASSERT_TRUE(XN_AddonSettings_Load(kShared, false));
    EXPECT_EQ(XN_SETTINGS_IMAGE_MAX - 5,
              static_cast<long>(Utf8(XN_AddonSettings_Get(kShared, "k", false)).size()));

    WritePlain(SharedPath(), "$first: 1\n$second: " + std::string(XN_SETTINGS_IMAGE_MAX - 19, 'v') + "\n");
    EXPECT_FALSE(XN_AddonSettings_Load(kShared, false));
    EXPECT_EQ((Records{{"first", "1"}}), SharedRecords());
}

TEST_F(SettingsFormatTest, AFailedWriteLeavesTheOldFileByteForByte) {
    const std::string old = Exchanged("$AutoUpdate: 1\n$Language_str: ita\n");
    TempFolder::Write(SharedPath(), old);
    XN_AddonSettings_Set(kShared, "AutoUpdate", "0", true);
    achost::FailFileOperation(achost::FileOperation::FileWrite,
                              static_cast<GSErrCode>(0x81000200u)); // disk full
    EXPECT_FALSE(XN_AddonSettings_Save(kShared));
    achost::ClearFaults();
    EXPECT_EQ(old, TempFolder::Read(SharedPath()));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(temp.Path()), {}))
        << "temporary file left";
}

} // namespace
} // namespace xn_test
