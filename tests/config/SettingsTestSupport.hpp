// Shared by the config and tool tests: a fresh shared folder per test, and readable settings values.
#pragma once

#include "TempFolder.hpp"
#include "Utf8.hpp"

#include "XN_SettingsFile.hpp"
#include "achost/SharedFolder.hpp"

#include <string>

namespace xn_test {

// Each test gets its own empty shared folder, and both stores start empty and loaded from it.
class SettingsStoreTest : public TempFolderTest {
protected:
    void SetUp() override {
        achost::SetSharedFolder(temp.Path());
        XN_AddonSettings_Load(XN_AddonSettings_Addon, false);
        XN_AddonSettings_Load(XN_AddonSettings_AllAddons, false);
    }
    void TearDown() override {
        XN_AddonSettings_Clear(XN_AddonSettings_Addon);
        XN_AddonSettings_Clear(XN_AddonSettings_AllAddons);
        achost::SetSharedFolder("");
        TempFolderTest::TearDown();
    }
    std::string SharedPath() const { return temp.PathOf("Quillane.cfg"); }
    std::string OwnPath() const { return temp.PathOf("MoravelLibrary_190.cfg"); }
};

} // namespace xn_test
