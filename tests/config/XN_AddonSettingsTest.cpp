// The store's operations: lookups, setters, numbers, persistence and the two independent stores.
#include "SettingsTestSupport.hpp"

namespace xn_test {
namespace {

const XN_AddonSettings_Type kOwn = XN_AddonSettings_Addon;
const XN_AddonSettings_Type kShared = XN_AddonSettings_AllAddons;

std::string Value(XN_AddonSettings_Type type, const char* key) {
    return Utf8(XN_AddonSettings_Get(type, key, false));
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

TEST_F(AddonSettingsTest, OnlyLoadSetSaveAndSavePersistEachStoreToItsFile) {
    XN_AddonSettings_Set(kOwn, "memory", "1", true);
    EXPECT_TRUE(XN_AddonSettings_LoadSetSave(kOwn, "kept", "2", true));
    EXPECT_TRUE(XN_AddonSettings_LoadSetSave(static_cast<XN_AddonSettings_Type>(7), "shared", "3", true));
    XN_AddonSettings_Remove(kOwn, "memory");
    EXPECT_EQ("$memory: 1\n$kept: 2\n", ReadPlain(OwnPath()));
    EXPECT_EQ("$shared: 3\n", ReadPlain(SharedPath()));
    ASSERT_TRUE(XN_AddonSettings_Save(kOwn));
    EXPECT_EQ("$kept: 2\n", ReadPlain(OwnPath()));
}

TEST_F(AddonSettingsTest, OnlyAForcedLoadSeesAnotherWritersChanges) {
    XN_AddonSettings_LoadSetSave(kShared, "a", "mine", true);
    WritePlain(SharedPath(), "$a: theirs\n");
    ASSERT_TRUE(XN_AddonSettings_Load(kShared, true));
    EXPECT_EQ("mine", Utf8(XN_AddonSettings_Get(kShared, "a", true)));
    ASSERT_TRUE(XN_AddonSettings_Load(kShared, false));
    EXPECT_EQ("theirs", Value(kShared, "a"));
}

} // namespace
} // namespace xn_test
