// A save cut short by the death of its process leaves the old records or the new ones, never a mix,
// and the next save clears what the dead one left beside the file.
#include "SettingsTestSupport.hpp"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
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
    const long generation = std::stol(xn_test::Utf8(records[0].value));
    for (int k = 0; k < kRecords; ++k)
        if (xn_test::Utf8(records[k].value) != ValueOf(generation, k))
            return -1;
    return generation;
}

// Saves generation after generation until it is killed (or its parent is gone).
[[noreturn]] void Writer(const XN_Location& file, long first) {
    const pid_t parent = getppid();
    XN_List<XN_Setting> records;
    for (long g = first; getppid() == parent; ++g) {
        MakeGeneration(g, records);
        XN_SettingsFile_Write(file, records, nullptr);
    }
    _exit(0);
}

class SettingsCrashTest : public xn_test::TempFolderTest {};

TEST_F(SettingsCrashTest, AKilledWriterLeavesTheOldOrTheNewRecords) {
    const XN_Location file(XN_String(temp.PathOf("Quillane.cfg").c_str(), XN_String::Encoding_UTF8));
    XN_List<XN_Setting> records;
    MakeGeneration(0, records);
    ASSERT_TRUE(XN_SettingsFile_Write(file, records, nullptr));
    std::mt19937 random(20261124);
    long seen = 0;
    int advanced = 0;
    for (int kill = 0; kill < 1000; ++kill) {
        const pid_t writer = fork();
        ASSERT_GE(writer, 0);
        if (writer == 0)
            Writer(file, seen + 1);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
        ::kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        const long now = GenerationOf(file);
        ASSERT_GE(now, seen) << "after kill " << kill << ": a mix of generations, or an older one";
        advanced += now > seen;
        seen = now;
    }
    EXPECT_GT(advanced, 0); // some kills came after a save, so they were not all before the first one
    MakeGeneration(seen + 1, records);
    ASSERT_TRUE(XN_SettingsFile_Write(file, records, nullptr));
    const auto entries = std::filesystem::directory_iterator(temp.Path());
    EXPECT_EQ(1, std::distance(begin(entries), end(entries))) << "a temporary file of a killed save was kept";
}

} // namespace
