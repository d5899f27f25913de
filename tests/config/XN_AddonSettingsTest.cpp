// The store's operations: lookups, setters, numbers, persistence and the two independent stores.
#include "SettingsTestSupport.hpp"

namespace xn_test {
namespace {

const XN_AddonSettings_Type kOwn = XN_AddonSettings_Addon;
const XN_AddonSettings_Type kShared = XN_AddonSettings_AllAddons;

using AddonSettingsTest = SharedFolderTest;

TEST_F(AddonSettingsTest, SetReportsTrueWhetherOrNotItStored) {
    XN_AddonSettings_Set(kOwn, "a", "1", true);
    EXPECT_TRUE(XN_AddonSettings_Set(kOwn, "absent", "x", false));
    EXPECT_EQ(1, XN_AddonSettings_GetCount(kOwn));
    EXPECT_FALSE(XN_AddonSettings_Get(kOwn, "absent", nullptr, false));
    EXPECT_TRUE(XN_AddonSettings_Set(kOwn, "a", "2", false));
    EXPECT_EQ("2", Utf8(XN_AddonSettings_Get(kOwn, "a", false)));
}

TEST_F(AddonSettingsTest, KeysAreExactAndTheFirstRecordWins) {
    WritePlain(OwnPath(), "$Key: 1\n$key: 2\n$Key: 3\n");
    ASSERT_TRUE(XN_AddonSettings_Load(kOwn, false));
    EXPECT_EQ("1", Utf8(XN_AddonSettings_Get(kOwn, "Key", false)));
    EXPECT_EQ("2", Utf8(XN_AddonSettings_Get(kOwn, "key", false)));
    EXPECT_EQ("", Utf8(XN_AddonSettings_Get(kOwn, "KEY", false)));
    XN_AddonSettings_Set(kOwn, "Key", "9", false);
    ASSERT_TRUE(XN_AddonSettings_Remove(kOwn, "Key"));
    EXPECT_EQ("3", Utf8(XN_AddonSettings_Get(kOwn, "Key", false)));
    EXPECT_FALSE(XN_AddonSettings_Remove(kOwn, "nothing"));
}

TEST_F(AddonSettingsTest, NumbersAreStoredAsTheirText) {
    XN_AddonSettings_SetLong(kOwn, "neg", -7, true);
    XN_AddonSettings_SetDouble(kOwn, "d", 2.5, true);
    XN_AddonSettings_Set(kOwn, "n", "42", true);
    EXPECT_EQ("-7", Utf8(XN_AddonSettings_Get(kOwn, "neg", false)));
    EXPECT_EQ("2.5", Utf8(XN_AddonSettings_Get(kOwn, "d", false)));
    long n = 0;
    ASSERT_TRUE(XN_AddonSettings_GetLong(kOwn, "n", &n, false));
    EXPECT_EQ(42, n);
    long untouched = 5;
    EXPECT_FALSE(XN_AddonSettings_GetLong(kOwn, "absent", &untouched, false));
    EXPECT_EQ(5, untouched);
    EXPECT_EQ(0, XN_AddonSettings_GetLong(kOwn, "absent", false));
    EXPECT_DOUBLE_EQ(2.5, XN_AddonSettings_GetDouble(kOwn, "d", false));
}

TEST_F(AddonSettingsTest, OnlyLoadSetSaveAndSavePersist) {
    XN_AddonSettings_Set(kOwn, "memory", "1", true);
    EXPECT_TRUE(XN_AddonSettings_LoadSetSave(kOwn, "kept", "2", true));
    EXPECT_EQ("$memory: 1\n$kept: 2\n", ReadPlain(OwnPath()));
    XN_AddonSettings_Remove(kOwn, "memory");
    XN_AddonSettings_Clear(kShared);
    EXPECT_EQ("$memory: 1\n$kept: 2\n", ReadPlain(OwnPath()));
    ASSERT_TRUE(XN_AddonSettings_Save(kOwn));
    EXPECT_EQ("$kept: 2\n", ReadPlain(OwnPath()));
}

TEST_F(AddonSettingsTest, TheTwoStoresUseTheirOwnFiles) {
    EXPECT_TRUE(XN_AddonSettings_LoadSetSave(kOwn, "own", "1", true));
    EXPECT_TRUE(XN_AddonSettings_LoadSetSave(static_cast<XN_AddonSettings_Type>(7), "shared", "2", true));
    EXPECT_EQ("$own: 1\n", ReadPlain(OwnPath()));
    EXPECT_EQ("$shared: 2\n", ReadPlain(SharedPath()));
    EXPECT_EQ("", Utf8(XN_AddonSettings_Get(kShared, "own", false)));
}

TEST_F(AddonSettingsTest, ForcedLoadSeesAnotherWritersChanges) {
    XN_AddonSettings_LoadSetSave(kShared, "a", "mine", true);
    WritePlain(SharedPath(), "$a: theirs\n");
    EXPECT_EQ("mine", Utf8(XN_AddonSettings_Get(kShared, "a", true)));
    ASSERT_TRUE(XN_AddonSettings_Load(kShared, true));
    EXPECT_EQ("mine", Utf8(XN_AddonSettings_Get(kShared, "a", true)));
    ASSERT_TRUE(XN_AddonSettings_Load(kShared, false));
    EXPECT_EQ("theirs", Utf8(XN_AddonSettings_Get(kShared, "a", true)));
}

} // namespace
} // namespace xn_test
