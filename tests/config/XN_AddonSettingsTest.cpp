// The settings store on real files: its operations, what Save writes, what Load keeps, the guards.
#include "SettingsTestSupport.hpp"

#include "HostTest.hpp"

#include <csignal>
#include <tuple>

#include <sys/resource.h>
#include <sys/stat.h>

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

using AddonSettingsTest = SettingsStoreTest;

// Keys are exact, the first record of a key wins, Set reports true and numbers are stored as text.
TEST_F(AddonSettingsTest, StoreOperations) {
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
    // The writer never writes a key the reader refuses: the call is refused instead.
    for (const char* key : {"", "a:b", "a\nb", "a\rb"}) {
        SCOPED_TRACE(key);
        EXPECT_FALSE(XN_AddonSettings_Set(kOwn, key, "x", true));
        EXPECT_FALSE(XN_AddonSettings_LoadSetSave(kOwn, key, "x", true));
    }
    EXPECT_FALSE(XN_AddonSettings_Set(kOwn, XN_String(), "x", true));
    EXPECT_EQ(2, XN_AddonSettings_GetCount(kOwn));
    EXPECT_EQ("$Key: 1\n$key: 2\n$Key: 3\n", ReadPlain(OwnPath()));
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
    // Values with line breaks round trip.
    const std::tuple<const char*, std::string, std::string, std::string> cases[] = {
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
    for (const auto& [name, value, written, readBack] : cases) {
        SCOPED_TRACE(name);
        XN_AddonSettings_Clear(kShared);
        XN_AddonSettings_Set(kShared, "k", XN_String(value.c_str()), true);
        ASSERT_TRUE(XN_AddonSettings_Save(kShared));
        EXPECT_EQ(written, ReadPlain(SharedPath()));
        ASSERT_TRUE(XN_AddonSettings_Load(kShared, false));
        EXPECT_EQ((Records{{"k", readBack}}), SharedRecords());
    }
}

TEST_F(AddonSettingsTest, LoadKeepsWhatTheReaderRulesKeepUpToTheSizeLimit) {
    using namespace std::string_literals;
    const std::tuple<const char*, std::optional<std::string>, bool, Records> cases[] = {
        {"no file", std::nullopt, true, {}},
        {"empty file", "", true, {}},
        {"key cut at the first colon, a byte skipped", "$a:b: c\n$d: 1\n", true, {{"a", ": c"}, {"d", "1"}}},
        {"last record without its line feed", "$a: 1\n$b: 2", true, {{"a", "1"}}},
        {"record cut right after the colon", "$a: 1\n$b:", true, {{"a", "1"}}},
        {"continuation at the very end", "$a: 1\n#", true, {}},
        {"line break before the next record", "$a: x\n#\n$b: 1\n", true, {{"a", "x\n"}, {"b", "1"}}},
        {"binary, no dollar first", "\x01\xff\x00\x7f"s, false, {}},
        {"dollar as the last byte", "$a: 1\n$", false, {{"a", "1"}}},
        {"empty key", "$: 1\n", false, {}},
        {"key without colon", "$a: 1\n$b\n", false, {{"a", "1"}}},
        {"other byte after a line break", "$a: 1\n$b: 2\nc", false, {{"a", "1"}}},
        {"a zero byte after a line break ends the record", "$a: 1\n\0$b: 2\n"s, false, {{"a", "1"}}},
    };
    for (const auto& [name, plain, loads, records] : cases) {
        SCOPED_TRACE(name);
        XN_AddonSettings_Set(kShared, "stale", "x", true);
        std::filesystem::remove(SharedPath());
        if (plain)
            WritePlain(SharedPath(), *plain);
        EXPECT_EQ(loads, XN_AddonSettings_Load(kShared, false));
        EXPECT_EQ(records, SharedRecords());
    }
    // An image is "$k: " + value + "\n": a value of XN_SETTINGS_IMAGE_MAX - 5 bytes fills the limit; one
    // byte more is refused on both sides.
    XN_AddonSettings_Clear(kShared);
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

// In an add-on, whose stores start unloaded: Get with loading fails while the file does not parse,
// and loads again next time; a failed forced reload keeps the loaded flag, so Get loads no more.
TEST_F(AddonSettingsTest, LoadingOnDemandAndAFailedReload) {
    achost::Host host(StrictOptions());
    ASSERT_TRUE(Started(host, COMM_PROBE));
    std::string error;
    // the file, the item chosen (2: Get "a" with loading, 3: forced reload), what it shows
    const std::tuple<const char*, Int32, const char*> steps[] = {
        {"$a: 1\n$b: 2\nbad", 2, "0 "},
        {"$a: 3\n", 2, "1 3"},
        {"$c: 4\n$a: 5\nbad", 3, "0"},
        {"$a: 6\n", 2, "0 "},
    };
    for (const auto& [plain, item, shown] : steps) {
        SCOPED_TRACE(plain);
        WritePlain(SharedPath(), plain);
        ASSERT_TRUE(host.ChooseMenuItem(32500, item, &error)) << error;
        EXPECT_EQ(shown, host.FindMenu(32500)->items[item - 1].text);
    }
}

TEST_F(AddonSettingsTest, SaveKeepsTheFileAsItWasOnlyNewer) {
    namespace fs = std::filesystem;
    fs::create_directory(temp.PathOf("real"));
    const std::string target = temp.PathOf("real/shared.cfg");
    WritePlain(target, "$old: 1\n");
    fs::create_symlink("real/shared.cfg", SharedPath());
    ASSERT_EQ(0, chmod(target.c_str(), 0640));
    const bool root = geteuid() == 0; // only root can give the file another owner
    if (root) {
        ASSERT_EQ(0, chown(target.c_str(), 4242, 4243));
    }
    XN_AddonSettings_Set(kShared, "k", "v", true);
    ASSERT_TRUE(XN_AddonSettings_Save(kShared));
    EXPECT_TRUE(fs::is_symlink(SharedPath()));
    EXPECT_EQ("$k: v\n", ReadPlain(target));
    struct stat info;
    ASSERT_EQ(0, stat(target.c_str(), &info));
    EXPECT_EQ(0640u, info.st_mode & 07777);
    if (root) {
        EXPECT_EQ(std::make_pair(4242u, 4243u), std::make_pair(info.st_uid, info.st_gid));
    }
    EXPECT_EQ((std::set<std::string>{"Quillane.cfg", "real"}), TempFolder::Names(temp.Path()));
    EXPECT_EQ(std::set<std::string>{"shared.cfg"}, TempFolder::Names(temp.PathOf("real")));
}

// Saving never blocks on or replaces what is not a regular file, nor a file made read-only; reading
// such a thing fails at once instead of blocking (a FIFO) or reading endless bytes (a device).
TEST_F(AddonSettingsTest, SaveRefusesWhatItMustNotReplace) {
    const std::string path = SharedPath();
    const XN_Location file(XN_String(path.c_str()));
    XN_List<XN_Setting> records;
    records.AddData(XN_Setting("k", "v"), -1);
    const std::pair<std::string, std::function<void()>> cases[] = {
        {"the file is read-only",
         [&] {
             WritePlain(path, "$old: 1\n");
             chmod(path.c_str(), 0444);
         }},
        {"not a regular file (a FIFO)", [&] { mkfifo(path.c_str(), 0666); }},
        {"not a regular file (a device)", [&] { std::filesystem::create_symlink("/dev/urandom", path); }},
        {"not a regular file (a folder)", [&] { std::filesystem::create_directory(path); }},
    };
    for (const auto& [why, make] : cases) {
        SCOPED_TRACE(why);
        make();
        struct stat before, after;
        ASSERT_EQ(0, lstat(path.c_str(), &before));
        std::string reason;
        EXPECT_FALSE(XN_SettingsFile_Write(file, records, &reason));
        EXPECT_EQ(why, reason);
        ASSERT_EQ(0, lstat(path.c_str(), &after));
        EXPECT_EQ(std::make_pair(before.st_ino, before.st_mode), std::make_pair(after.st_ino, after.st_mode));
        XN_List<XN_Setting> read; // read without blocking on the FIFO nor reading the device's bytes
        EXPECT_EQ(why == "the file is read-only", XN_SettingsFile_Read(file, read) == XN_SettingsFile_OK);
        EXPECT_EQ(std::set<std::string>{"Quillane.cfg"}, TempFolder::Names(temp.Path()));
        std::filesystem::remove(path);
    }
}

TEST_F(AddonSettingsTest, AFailedWriteLeavesTheOldFileAndNothingElse) {
    const std::string old = Exchanged("$AutoUpdate: 1\n$Language_str: ita\n");
    TempFolder::Write(SharedPath(), old);
    XN_AddonSettings_Set(kShared, "AutoUpdate", std::string(100, '0').c_str(), true);
    // A real failure of write(2): the file size limit, with its signal ignored.
    void (*previous)(int) = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &limit));
    const rlimit small{16, limit.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
    const bool saved = XN_AddonSettings_Save(kShared);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, previous);
    EXPECT_FALSE(saved);
    EXPECT_EQ(old, TempFolder::Read(SharedPath()));
    EXPECT_EQ(std::set<std::string>{"Quillane.cfg"}, TempFolder::Names(temp.Path()));
}

// Runs the save as a user without privileges when this process is root (who may write anywhere);
// true when it succeeded.
bool SaveAsUser(XN_AddonSettings_Type type) {
    if (geteuid() != 0)
        return XN_AddonSettings_Save(type);
    const pid_t child = fork();
    if (child == 0)
        _exit(setgid(65534) == 0 && setuid(65534) == 0 && XN_AddonSettings_Save(type) ? 0 : 1);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(AddonSettingsTest, WritesInPlaceWhenANewFileCouldNotTakeTheOldOnesPlace) {
    // needsRoot: the file must belong to someone else than the saver
    const std::tuple<const char*, mode_t, bool> cases[] = {
        {"the folder takes no new file", 0555, false},
        {"a new file could not get the old one's owner", 0777, true},
    };
    chmod(std::filesystem::path(temp.Path()).parent_path().c_str(), 0755);
    for (const auto& [name, folderMode, needsRoot] : cases) {
        SCOPED_TRACE(name);
        if (needsRoot && geteuid() != 0)
            continue;
        WritePlain(SharedPath(), "$old: 1 and a longer value than the new one\n");
        chmod(SharedPath().c_str(), 0666);
        struct stat before, after;
        ASSERT_EQ(0, stat(SharedPath().c_str(), &before));
        chmod(temp.Path().c_str(), folderMode);
        XN_AddonSettings_Clear(kShared);
        XN_AddonSettings_Set(kShared, "k", "new", true);
        EXPECT_TRUE(SaveAsUser(kShared));
        chmod(temp.Path().c_str(), 0755);
        EXPECT_EQ("$k: new\n", ReadPlain(SharedPath()));
        ASSERT_EQ(0, stat(SharedPath().c_str(), &after));
        EXPECT_EQ(std::make_pair(before.st_ino, before.st_uid), std::make_pair(after.st_ino, after.st_uid));
        EXPECT_EQ(std::set<std::string>{"Quillane.cfg"}, TempFolder::Names(temp.Path()));
    }
}

// Kept: a file with a malformed record is written back with only the records before it, one over the
// size limit with only the records within it. A copy of it as it was is kept first, replaced by the
// next such file.
TEST_F(AddonSettingsTest, AMalformedOrTooLargeFileIsKeptAsOneCopyBeforeItIsRewritten) {
    const std::string copy = SharedPath() + ".unreadable";
    const std::tuple<const char*, std::string> cases[] = {
        {"malformed", "$a: 1\n$b: 2\nbad\n"},
        {"too large", "$a: 1\n$b: " + std::string(XN_SETTINGS_IMAGE_MAX, 'v') + "\n"},
    };
    for (const auto& [name, plain] : cases) {
        SCOPED_TRACE(name);
        WritePlain(SharedPath(), plain);
        EXPECT_FALSE(XN_AddonSettings_Load(kShared, false));
        EXPECT_TRUE(XN_AddonSettings_LoadSetSave(kShared, "d", "4", true));
        EXPECT_EQ("$a: 1\n$d: 4\n", ReadPlain(SharedPath()));
        EXPECT_EQ(plain, ReadPlain(copy));
    }
    WritePlain(SharedPath(), "x");
    EXPECT_FALSE(XN_AddonSettings_Load(kShared, false));
    EXPECT_EQ("x", ReadPlain(copy));
    EXPECT_EQ((std::set<std::string>{"Quillane.cfg", "Quillane.cfg.unreadable"}),
              TempFolder::Names(temp.Path()));
}

} // namespace
} // namespace xn_test
