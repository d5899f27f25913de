// The settings store on real files: its operations, what Save writes, what Load keeps, the guards.
#include "SettingsTestSupport.hpp"

#include "achost/Faults.hpp"

#include <filesystem>
#include <vector>

namespace xn_test {
namespace {

const XN_AddonSettings_Type kOwn = XN_AddonSettings_Addon;
const XN_AddonSettings_Type kShared = XN_AddonSettings_AllAddons;
using Records = std::vector<std::pair<std::string, std::string>>;

std::string Value(XN_AddonSettings_Type type, const char* key) {
    return Utf8(XN_AddonSettings_Get(type, key, false));
}

Records SharedRecords() {
    Records records;
    for (long i = 0; i < XN_AddonSettings_GetCount(kShared); ++i) {
        XN_String key, value;
        XN_AddonSettings_Get(kShared, i, &key, &value);
        records.emplace_back(Utf8(key), Utf8(value));
    }
    return records;
}

using AddonSettingsTest = SharedFolderTest;

TEST_F(AddonSettingsTest, KeysAreExactTheFirstRecordWinsAndSetReportsTrue) {
    WritePlain(OwnPath(), "$Key: 1\n$key: 2\n$Key: 3\n");
    ASSERT_TRUE(XN_AddonSettings_Load(kOwn, false));
    EXPECT_EQ("1", Value(kOwn, "Key"));
    EXPECT_EQ("2", Value(kOwn, "key"));
    EXPECT_EQ("", Value(kOwn, "KEY"));
    EXPECT_TRUE(XN_AddonSettings_Set(kOwn, "absent", "x", false));
    EXPECT_EQ(3, XN_AddonSettings_GetCount(kOwn));
    EXPECT_TRUE(XN_AddonSettings_Set(kOwn, "Key", "9", false));
    ASSERT_TRUE(XN_AddonSettings_Remove(kOwn, "Key"));
    EXPECT_EQ("3", Value(kOwn, "Key"));
    EXPECT_FALSE(XN_AddonSettings_Remove(kOwn, "absent"));
}

TEST_F(AddonSettingsTest, NumbersAreStoredAsTheirText) {
    XN_AddonSettings_SetLong(kOwn, "n", -7, true);
    XN_AddonSettings_SetDouble(kOwn, "d", 2.5, true);
    EXPECT_EQ("-7", Value(kOwn, "n"));
    EXPECT_EQ("2.5", Value(kOwn, "d"));
    long n = 0, untouched = 5;
    ASSERT_TRUE(XN_AddonSettings_GetLong(kOwn, "n", &n, false));
    EXPECT_EQ(-7, n);
    EXPECT_FALSE(XN_AddonSettings_GetLong(kOwn, "absent", &untouched, false));
    EXPECT_EQ(5, untouched);
    EXPECT_EQ(0, XN_AddonSettings_GetLong(kOwn, "absent", false));
    EXPECT_DOUBLE_EQ(2.5, XN_AddonSettings_GetDouble(kOwn, "d", false));
}

// Changes live in memory until Save or LoadSetSave; a loaded store sees another writer's changes only
// when forced to load again.
TEST_F(AddonSettingsTest, PersistenceAndReloading) {
    XN_AddonSettings_Set(kOwn, "memory", "1", true);
    EXPECT_TRUE(XN_AddonSettings_LoadSetSave(kOwn, "kept", "2", true));
    XN_AddonSettings_Remove(kOwn, "memory");
    EXPECT_EQ("$memory: 1\n$kept: 2\n", ReadPlain(OwnPath()));
    ASSERT_TRUE(XN_AddonSettings_Save(kOwn));
    EXPECT_EQ("$kept: 2\n", ReadPlain(OwnPath()));
    const XN_AddonSettings_Type anyOther = static_cast<XN_AddonSettings_Type>(7);
    EXPECT_TRUE(XN_AddonSettings_LoadSetSave(anyOther, "AutoUpdate", "1", true));
    EXPECT_TRUE(XN_AddonSettings_LoadSetSave(kShared, "Language_str", "ita", true));
    EXPECT_EQ("$AutoUpdate: 1\n$Language_str: ita\n", ReadPlain(SharedPath()));
    EXPECT_EQ('\x42', TempFolder::Read(SharedPath())[0]) << "\"$\" (0x24) with its halves exchanged";
    WritePlain(SharedPath(), "$AutoUpdate: 0\n");
    ASSERT_TRUE(XN_AddonSettings_Load(kShared, true));
    EXPECT_EQ("1", Utf8(XN_AddonSettings_Get(kShared, "AutoUpdate", true)));
    ASSERT_TRUE(XN_AddonSettings_Load(kShared, false));
    EXPECT_EQ("0", Value(kShared, "AutoUpdate"));
}

TEST_F(AddonSettingsTest, ValuesWithLineBreaksRoundTrip) {
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
        {"an empty line keeps a \"#\": the byte after \"#\" is not examined", "a\n\nb", "$k: a\n#\n#b\n",
         "a\n\n#b"},
        {"8-bit bytes", "\xE9\n\xFC", "$k: \xE9\n#\xFC\n", "é\nü"},
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

TEST_F(AddonSettingsTest, LoadKeepsWhatTheReaderRulesKeep) {
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
        {"line break before the next record", "$a: x\n#\n$b: 1\n", 14, true, {{"a", "x\n"}, {"b", "1"}}},
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

// An image is "$k: " + value + "\n": a value of XN_SETTINGS_IMAGE_MAX - 5 bytes fills the limit.
TEST_F(AddonSettingsTest, OneByteOverTheLimitIsRefusedOnBothSides) {
    WritePlain(SharedPath(), "$old: 1\n");
    XN_AddonSettings_Set(kShared, "k", XN_String(std::string(XN_SETTINGS_IMAGE_MAX - 4, 'v').c_str()), true);
    EXPECT_FALSE(XN_AddonSettings_Save(kShared));
    EXPECT_EQ("$old: 1\n", ReadPlain(SharedPath()));
    XN_AddonSettings_Set(kShared, "k", XN_String(std::string(XN_SETTINGS_IMAGE_MAX - 5, 'v').c_str()), true);
    ASSERT_TRUE(XN_AddonSettings_Save(kShared));
    ASSERT_TRUE(XN_AddonSettings_Load(kShared, false));
    EXPECT_EQ(XN_SETTINGS_IMAGE_MAX - 5, static_cast<long>(Value(kShared, "k").size()));
    WritePlain(SharedPath(), "$first: 1\n$k: " + std::string(XN_SETTINGS_IMAGE_MAX - 14, 'v') + "\n");
    EXPECT_FALSE(XN_AddonSettings_Load(kShared, false));
    EXPECT_EQ((Records{{"first", "1"}}), SharedRecords());
}

TEST_F(AddonSettingsTest, AFailedWriteLeavesTheOldFileByteForByte) {
    const std::string old = Exchanged("$AutoUpdate: 1\n$Language_str: ita\n");
    TempFolder::Write(SharedPath(), old);
    XN_AddonSettings_Set(kShared, "AutoUpdate", "0", true);
    achost::ScopedFaults faults;
    achost::FailFileOperation(achost::FileOperation::FileWrite,
                              static_cast<GSErrCode>(0x81000200u)); // disk full
    EXPECT_FALSE(XN_AddonSettings_Save(kShared));
    EXPECT_EQ(old, TempFolder::Read(SharedPath()));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(temp.Path()), {}))
        << "temporary file left";
}

} // namespace
} // namespace xn_test
