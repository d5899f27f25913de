// The settings file format on real files: what Save writes, what Load keeps, and the size guards.
#include "SettingsTestSupport.hpp"

#include <filesystem>
#include <vector>

namespace xn_test {
namespace {

const XN_AddonSettings_Type kShared = XN_AddonSettings_AllAddons;

struct Record {
    std::string key;
    std::string value;
};

std::vector<Record> SharedRecords() {
    std::vector<Record> records;
    for (long i = 0; i < XN_AddonSettings_GetCount(kShared); ++i) {
        XN_String key, value;
        XN_AddonSettings_Get(kShared, i, &key, &value);
        records.push_back({Utf8(key), Utf8(value)});
    }
    return records;
}

void ExpectRecords(const std::vector<Record>& expected) {
    const std::vector<Record> actual = SharedRecords();
    ASSERT_EQ(expected.size(), actual.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i].key, actual[i].key) << "record " << i;
        EXPECT_EQ(expected[i].value, actual[i].value) << "record " << i;
    }
}

using SettingsFormatTest = SharedFolderTest;

TEST_F(SettingsFormatTest, SavesTheTwoRecordImage) {
    XN_AddonSettings_Set(kShared, "AutoUpdate", "1", true);
    XN_AddonSettings_Set(kShared, "Language_str", "ita", true);
    ASSERT_TRUE(XN_AddonSettings_Save(kShared));
    EXPECT_EQ("$AutoUpdate: 1\n$Language_str: ita\n", ReadPlain(SharedPath()));
    // On disk the halves are exchanged: "$" (0x24) is stored as 0x42.
    EXPECT_EQ('\x42', TempFolder::Read(SharedPath())[0]);
}

TEST_F(SettingsFormatTest, ValuesWithLineBreaksRoundTrip) {
    struct Case {
        const char* name;
        std::string value;
        std::string written; // the record's plain bytes
        std::string readBack;
    } cases[] = {
        {"LF", "a\nb", "$k: a\n#b\n", "a\nb"},
        {"CR", "a\rb", "$k: a\r#b\n", "a\rb"},
        {"CR LF", "a\r\nb", "$k: a\r\n#b\n", "a\r\nb"},
        {"trailing LF", "a\n", "$k: a\n#\n", "a\n"},
        {"only a line break", "\n", "$k: \n#\n", "\n"},
        {"empty", "", "$k: \n", ""},
        {"colon and dollar", "$x: y", "$k: $x: y\n", "$x: y"},
        // The byte after "#" is not looked at: an empty line reads back with a "#" kept in it.
        {"empty line", "a\n\nb", "$k: a\n#\n#b\n", "a\n\n#b"},
        {"non-ASCII", "é\nü", "$k: é\n#ü\n", "é\nü"},
        {"two CR LF", "a\r\n\r\nb", "$k: a\r\n#\r\n#b\n", "a\r\n\r\nb"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        XN_AddonSettings_Clear(kShared);
        XN_AddonSettings_Set(kShared, "k", XN_String(c.value.c_str()), true);
        ASSERT_TRUE(XN_AddonSettings_Save(kShared));
        EXPECT_EQ(c.written, ReadPlain(SharedPath()));
        ASSERT_TRUE(XN_AddonSettings_Load(kShared, false));
        ExpectRecords({{"k", c.readBack}});
    }
}

TEST_F(SettingsFormatTest, LoadKeepsWhatTheReaderRulesKeep) {
    struct Case {
        const char* name;
        std::string plain;
        bool loads;
        std::vector<Record> records;
    } cases[] = {
        {"empty file", "", true, {}},
        {"no file", "REMOVE", true, {}},
        {"two records", "$a: 1\n$b: 2\n", true, {{"a", "1"}, {"b", "2"}}},
        {"key cut at its first colon, the byte after it skipped", "$a:b: c\n", true, {{"a", ": c"}}},
        {"any byte after the colon is skipped", "$a:xy\n", true, {{"a", "y"}}},
        {"duplicate keys both kept", "$a: 1\n$a: 2\n", true, {{"a", "1"}, {"a", "2"}}},
        {"last record without its line feed is dropped", "$a: 1\n$b: 2", true, {{"a", "1"}}},
        {"record cut right after the colon", "$a: 1\n$b:", true, {{"a", "1"}}},
        {"trailing line break before the next record", "$a: x\n#\n$b: 1\n", true, {{"a", "x\n"}, {"b", "1"}}},
        {"continuation at the very end", "$a: 1\n#", true, {}},
        {"first byte not a dollar", "a: 1\n", false, {}},
        {"dollar as the last byte", "$a: 1\n$", false, {{"a", "1"}}},
        {"empty key", "$: 1\n", false, {}},
        {"key without colon", "$a: 1\n$b\n", false, {{"a", "1"}}},
        {"other byte after a line break", "$a: 1\n$b: 2\nc", false, {{"a", "1"}}},
        {"binary bytes", std::string("\x01\xff\x00\x7f", 4), false, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        XN_AddonSettings_Set(kShared, "stale", "x", true);
        WritePlain(SharedPath(), c.plain);
        if (c.plain == "REMOVE")
            std::filesystem::remove(SharedPath());
        EXPECT_EQ(c.loads, XN_AddonSettings_Load(kShared, false));
        ExpectRecords(c.records);
    }
}

// A store whose image is `size` bytes: one record "$k: " + value + "\n".
void SetImageSize(unsigned long size) {
    XN_AddonSettings_Clear(kShared);
    XN_AddonSettings_Set(kShared, "k", XN_String(std::string(size - 5, 'v').c_str()), true);
}

TEST_F(SettingsFormatTest, ImagesUpToTheLimitSaveAndLoad) {
    SetImageSize(XN_SETTINGS_IMAGE_MAX);
    ASSERT_TRUE(XN_AddonSettings_Save(kShared));
    EXPECT_EQ(XN_SETTINGS_IMAGE_MAX, static_cast<long>(TempFolder::Read(SharedPath()).size()));
    ASSERT_TRUE(XN_AddonSettings_Load(kShared, false));
    EXPECT_EQ(XN_SETTINGS_IMAGE_MAX - 5,
              static_cast<long>(Utf8(XN_AddonSettings_Get(kShared, "k", false)).size()));
}

TEST_F(SettingsFormatTest, SaveRefusesAnImageOverTheLimitAndKeepsTheFile) {
    WritePlain(SharedPath(), "$old: 1\n");
    SetImageSize(XN_SETTINGS_IMAGE_MAX + 1);
    EXPECT_FALSE(XN_AddonSettings_Save(kShared));
    EXPECT_EQ("$old: 1\n", ReadPlain(SharedPath()));
}

TEST_F(SettingsFormatTest, LoadRefusesAFileOverTheLimitKeepingTheRecordsBefore) {
    std::string plain = "$first: 1\n$second: ";
    plain += std::string(XN_SETTINGS_IMAGE_MAX, 'v') + "\n";
    WritePlain(SharedPath(), plain);
    EXPECT_FALSE(XN_AddonSettings_Load(kShared, false));
    ExpectRecords({{"first", "1"}});
}

TEST_F(SettingsFormatTest, FailedWritesLeaveTheOldFileByteForByte) {
    struct Case {
        const char* name;
        achost::FileOperation operation;
        GSErrCode code;
    } cases[] = {
        {"disk full while writing", achost::FileOperation::FileWrite, static_cast<GSErrCode>(0x81000200u)},
        {"file cannot be opened", achost::FileOperation::FileOpen, static_cast<GSErrCode>(0x81010102u)},
        {"file cannot be created", achost::FileOperation::FileStatus, static_cast<GSErrCode>(0x81010103u)},
    };
    const std::string old = Exchanged("$AutoUpdate: 1\n$Language_str: ita\n");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TempFolder::Write(SharedPath(), old);
        XN_AddonSettings_Set(kShared, "AutoUpdate", "0", true);
        achost::FailFileOperation(c.operation, c.code);
        EXPECT_FALSE(XN_AddonSettings_Save(kShared));
        achost::ClearFaults();
        EXPECT_EQ(old, TempFolder::Read(SharedPath()));
        EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(temp.Path()), {}))
            << "temporary file left";
    }
}

} // namespace
} // namespace xn_test
