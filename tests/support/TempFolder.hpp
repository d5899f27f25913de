// A fresh temporary folder per test, removed at the end, and a check that the test left nothing
// behind outside it: use `TempFolderTest` as a test's base class, or hold a `TempFolder` in a fixture
// of your own and call its `ExpectNothingLeftBehind` in TearDown. During the test TMPDIR points into a
// private folder that must be empty again at the end, and the working directory and every folder
// passed to `Watch` must hold the same entries at the end as at the start.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace xn_test {

class TempFolder {
public:
    TempFolder() {
        namespace fs = std::filesystem;
        const char* system = std::getenv("TMPDIR");
        if (system != nullptr)
            savedTmpDir = system;
        std::string name =
            (system != nullptr && *system != '\0' ? system : "/tmp") + std::string("/xn_test_XXXXXX");
        if (mkdtemp(name.data()) == nullptr) {
            ADD_FAILURE() << "cannot create a temporary folder as " << name;
            return;
        }
        root = name;
        folder = root + "/work";
        privateTmp = root + "/tmp";
        fs::create_directory(folder);
        fs::create_directory(privateTmp);
        setenv("TMPDIR", privateTmp.c_str(), 1);
        Watch(fs::current_path().string());
    }

    ~TempFolder() {
        savedTmpDir ? setenv("TMPDIR", savedTmpDir->c_str(), 1) : unsetenv("TMPDIR");
        if (!root.empty())
            RemoveAll(root);
    }

    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // The test's own folder: absolute, existing, empty at the start.
    const std::string& Path() const { return folder; }
    // The absolute path of `relative` inside the test's folder.
    std::string PathOf(const std::string& relative) const { return folder + "/" + relative; }

    // `path` must hold the same entries (by name) when the test ends as now.
    void Watch(const std::string& path) { watched.emplace_back(path, Names(path)); }

    // Fails the current test for every file left in the private TMPDIR or added to a watched folder.
    void ExpectNothingLeftBehind() const {
        for (const std::string& left : Names(privateTmp))
            ADD_FAILURE() << "temporary file left behind: " << privateTmp << "/" << left;
        for (const auto& [path, before] : watched)
            for (const std::string& entry : Names(path))
                if (before.count(entry) == 0)
                    ADD_FAILURE() << "file left behind outside the test's folder: " << path << "/" << entry;
    }

    // Test helpers: whole-file bytes.
    static void Write(const std::string& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }
    static std::string Read(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    // False when this process ignores file permissions (run as root): tests that need a read-only
    // folder to refuse writing skip then.
    static bool PermissionsAreEnforced() { return geteuid() != 0; }

    // The names of the entries of a folder.
    static std::set<std::string> Names(const std::string& path) {
        std::set<std::string> names;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(path, error))
            names.insert(entry.path().filename().string());
        return names;
    }

private:
    // Gives back write and search rights that a test may have taken away, then removes everything.
    static void RemoveAll(const std::string& path) {
        namespace fs = std::filesystem;
        std::error_code error;
        fs::permissions(path, fs::perms::owner_all, fs::perm_options::add, error);
        for (auto it = fs::recursive_directory_iterator(path, error); !error && it != fs::end(it);
             it.increment(error))
            if (it->is_directory(error) && !it->is_symlink(error))
                fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, error);
        fs::remove_all(path, error);
    }

    std::string root;
    std::string folder;
    std::string privateTmp;
    std::optional<std::string> savedTmpDir;
    std::vector<std::pair<std::string, std::set<std::string>>> watched;
};

// A settings file's plain image <-> its bytes on disk, whose halves of each byte are exchanged.
inline std::string Exchanged(std::string bytes) {
    for (char& b : bytes)
        b = static_cast<char>(((static_cast<unsigned char>(b) >> 4) & 0x0F) |
                              ((static_cast<unsigned char>(b) << 4) & 0xF0));
    return bytes;
}
inline std::string ReadPlain(const std::string& path) {
    return Exchanged(TempFolder::Read(path));
}
inline void WritePlain(const std::string& path, const std::string& plain) {
    TempFolder::Write(path, Exchanged(plain));
}

// Base fixture: `temp` is a fresh folder for each test.
class TempFolderTest : public ::testing::Test {
protected:
    void TearDown() override { temp.ExpectNothingLeftBehind(); }

    TempFolder temp;
};

} // namespace xn_test
