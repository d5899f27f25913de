// A save cut short by the death of its process leaves the old records or the new ones, never a mix,
// and the next save clears what the dead one left beside the file.
#include "SettingsTestSupport.hpp"

#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <random>
#include <thread>

namespace {

constexpr int kRecords = 40;

// Value `k` of generation `g`: it names g, and its size changes with g, so that the bytes of two
// generations never read as one.
std::string ValueOf(long g, int k) {
    return std::to_string(g) + ":" + std::string(50 + (g * 7 + k) % 300, 'v');
}

void MakeGeneration(long g, XN_List<XN_Setting>& records) {
    records = XN_List<XN_Setting>();
    for (int k = 0; k < kRecords; ++k)
        records.AddData(XN_Setting(XN_String(("key" + std::to_string(k)).c_str(), XN_String::Encoding_UTF8),
                                   XN_String(ValueOf(g, k).c_str(), XN_String::Encoding_UTF8)),
                        -1);
}

// The generation every record of the file names; -1 when the file does not parse or mixes two.
long GenerationOf(const XN_Location& file) {
    XN_List<XN_Setting> records;
    if (XN_SettingsFile_Read(file, records, nullptr) != XN_SettingsFile_OK || records.GetCount() != kRecords)
        return -1;
    const long generation = std::stol(Utf8(records[0].value));
    for (int k = 0; k < kRecords; ++k)
        if (Utf8(records[k].value) != ValueOf(generation, k))
            return -1;
    return generation;
}

// Saves generation after generation until it is killed (or its parent is gone), telling `ready`
// each time a save begins.
[[noreturn]] void Writer(const XN_Location& file, long first, int ready) {
    const pid_t parent = getppid();
    XN_List<XN_Setting> records;
    for (long g = first; getppid() == parent; ++g) {
        MakeGeneration(g, records);
        if (write(ready, "s", 1) != 1)
            break;
        XN_SettingsFile_Write(file, records, nullptr);
    }
    _exit(0);
}

// The writers work in memory (/dev/shm) when the machine has it: syncing to a disk there costs
// nothing, so a thousand kills take seconds and land inside the writing and renaming, which is what
// the death of a process can cut short.
class SettingsCrashTest : public xn_test::TempFolderTest {
protected:
    void SetUp() override {
        std::string pattern = "/dev/shm/xn_crash_XXXXXX";
        folder = mkdtemp(&pattern[0]) != nullptr ? pattern : temp.Path();
    }
    void TearDown() override {
        if (folder != temp.Path())
            std::filesystem::remove_all(folder);
        TempFolderTest::TearDown();
    }
    std::string folder;
};

TEST_F(SettingsCrashTest, AKilledWriterLeavesTheOldOrTheNewRecords) {
    const XN_Location file(XN_String((folder + "/Quillane.cfg").c_str(), XN_String::Encoding_UTF8));
    XN_List<XN_Setting> records;
    // How long one save takes here: the kills fall anywhere in the first two saves of a writer.
    const auto start = std::chrono::steady_clock::now();
    for (long g = 0; g < 5; ++g) {
        MakeGeneration(g, records);
        ASSERT_TRUE(XN_SettingsFile_Write(file, records, nullptr));
    }
    const auto save = (std::chrono::steady_clock::now() - start) / 5;
    std::mt19937 random(20261124);
    long seen = GenerationOf(file);
    int advanced = 0;
    for (int kill = 0; kill < 1000; ++kill) {
        int ready[2];
        ASSERT_EQ(0, pipe(ready));
        const pid_t writer = fork();
        ASSERT_GE(writer, 0);
        if (writer == 0)
            Writer(file, seen + 1, ready[1]);
        char began = 0;
        ASSERT_EQ(1, read(ready[0], &began, 1)); // the first save has begun
        std::this_thread::sleep_for(save * (random() % 2000) / 1000);
        ::kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        close(ready[0]);
        close(ready[1]);
        const long now = GenerationOf(file);
        ASSERT_GE(now, seen) << "after kill " << kill << ": a mix of generations, or an older one";
        advanced += now > seen;
        seen = now;
    }
    // Some kills came after a save and some before: both ends of a save were met.
    EXPECT_GT(advanced, 0);
    EXPECT_LT(advanced, 1000);
    MakeGeneration(seen + 1, records);
    ASSERT_TRUE(XN_SettingsFile_Write(file, records, nullptr));
    EXPECT_EQ(std::set<std::string>{"Quillane.cfg"}, xn_test::TempFolder::Names(folder))
        << "a temporary file of a killed save was kept";
}

} // namespace
