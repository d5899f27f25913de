// Shared by the config tests: a fresh shared folder per test, and the scrambled bytes of a file.
#pragma once

#include "TempFolder.hpp"

#include "XN_AddonSettings.hpp"
#include "achost/Faults.hpp"
#include "achost/SharedFolder.hpp"

#include <string>

namespace xn_test {

// The bytes with the two 4-bit halves of each exchanged: a plain image <-> its file bytes.
inline std::string Exchanged(const std::string& bytes) {
    std::string out(bytes);
    for (char& c : out) {
        const unsigned char b = static_cast<unsigned char>(c);
        c = static_cast<char>(((b >> 4) & 0x0F) | ((b << 4) & 0xF0));
    }
    return out;
}

inline std::string Utf8(const XN_String& text) {
    const XN_CString bytes = text.ToCStr(XN_String::Encoding_UTF8);
    return bytes.Get() != nullptr ? std::string(bytes.Get()) : std::string();
}

// Each test gets its own empty shared folder, and both stores start empty and loaded from it.
class SharedFolderTest : public TempFolderTest {
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
    // The plain image of a settings file, or writes one scrambled.
    std::string ReadPlain(const std::string& path) const { return Exchanged(TempFolder::Read(path)); }
    void WritePlain(const std::string& path, const std::string& plain) const {
        TempFolder::Write(path, Exchanged(plain));
    }

    achost::ScopedFaults faults;
};

} // namespace xn_test
