// The object library and library-part lookup, called by a probe add-on inside the real host: the
// probe's copy sits in Addon/ of the test's folder, beside the suite library Addon/MVL_Library (which
// holds Stool.gsm) when a case puts one there. Parts/ holds, in the host's order, Chair (index 1),
// Door (2, a door by its first line), Sub/A.B (3) and c (4); Extra/ holds Bench.
#include "achost/Faults.hpp"

#include "HostTest.hpp"

#include <sstream>
#include <tuple>

namespace {

namespace fs = std::filesystem;
using achost::HostCall;

enum { kLoad = 1, kLoadUnchecked, kLibraries, kByName, kByFile, kByIndex, kSearch, kIndex, kIndexFullLib };
enum { kIndexFullLibNoCheck = 10, kLocationByIndex, kLocationByFile, kGetIndex, kGetIndexNoCheck, kAsk };
// Where the suite library is: nowhere, beside the probe, or there and active.
enum Suite { kAbsent, kOnDisk, kActive };

// Chooses one item, then answers each alert with ok and each folder dialog with `folder` (cancel when
// empty). What it saw, joined by " / ": the probe's report, "alert TEXT", "ask TITLE".
class ProbeSession : public achost::FrontEnd {
public:
    ProbeSession(int item, std::string folder) : item(item), folder(std::move(folder)) {}
    bool NextAction(const achost::Host& host, achost::Action* action) override {
        std::string line = "ok", seen;
        if (const achost::Alert* alert = host.OpenAlert())
            seen = (alert->title == "Probe" ? "" : "alert ") + alert->largeText;
        else if (const achost::FileRequest* request = host.OpenFileDialog()) {
            seen = "ask " + request->title;
            line = "answer folder " + (folder.empty() ? "cancel" : "\"" + folder + "\"");
        } else if (item != 0)
            line = "menu " + std::to_string(std::exchange(item, 0));
        else
            return false;
        shown += (shown.empty() || seen.empty() ? "" : " / ") + seen;
        std::string error;
        return achost::ParseAction(line, action, &error) == achost::ParseResult::Parsed;
    }
    bool Outcome(const achost::Action& action, bool ok, const std::string& message) override {
        EXPECT_TRUE(ok) << action.source << ": " << message;
        return ok;
    }
    std::string shown;

private:
    int item;
    std::string folder;
};

class LibraryTest : public xn_test::SharedFolderTest {
protected:
    void SetUp() override {
        SharedFolderTest::SetUp();
        for (const char* file : {"Parts/Chair.gsm", "Parts/c.gsm", "Extra/Bench.gsm"})
            Put(file, "");
        Put("Parts/Door.gsm", "! type: Door\nPEN 1\n");
        Put("Parts/Sub/A.B.gsm", " ! TYPE : object\n");
        fs::create_directories(temp.PathOf("Addon"));
        fs::copy_file(LIBRARY_PROBE, temp.PathOf("Addon/library_probe.so"));
    }
    void TearDown() override {
        for (const char* name :
             {"XN_PROBE_ARGUMENT", "XN_PROBE_TYPE", "XN_PROBE_MESSAGE", "XN_PROBE_QUIET", "XN_PROBE_BUILTIN"})
            unsetenv(name);
        SharedFolderTest::TearDown();
    }
    void Put(const std::string& file, const std::string& text) {
        fs::create_directories(fs::path(temp.PathOf(file)).parent_path());
        temp.Write(temp.PathOf(file), text);
    }
    // A host with the probe started; `active` (comma-separated, in the test's folder) are its library
    // folders, the suite library last when `suite` is kActive; "Ghost" is a missing definition (index 5).
    std::unique_ptr<achost::Host> Start(const std::string& active, Suite suite = kAbsent) {
        fs::remove_all(temp.PathOf("Addon/MVL_Library"));
        if (suite != kAbsent)
            Put("Addon/MVL_Library/Stool.gsm", "");
        achost::HostOptions withLibraries = options;
        std::istringstream folders(active + (suite == kActive ? ",Addon/MVL_Library" : ""));
        for (std::string folder; std::getline(folders, folder, ',');)
            if (!folder.empty()) {
                fs::create_directories(temp.PathOf(folder));
                withLibraries.libraries.push_back(temp.PathOf(folder));
            }
        withLibraries.missing = {"Ghost"};
        auto host = std::make_unique<achost::Host>(withLibraries);
        xn_test::Started(*host, temp.PathOf("Addon/library_probe.so"));
        return host;
    }
    std::string Run(achost::Host& host, int item, const std::string& argument, int type = 0,
                    const std::string& folder = "") {
        setenv("XN_PROBE_ARGUMENT", argument.c_str(), 1);
        setenv("XN_PROBE_TYPE", std::to_string(type).c_str(), 1);
        ProbeSession session(item, folder.empty() ? "" : temp.PathOf(folder));
        achost::RunSession(host, session);
        return session.shown;
    }
    // The active libraries, relative to the test's folder and comma-separated.
    std::string Active(const achost::Host& host) {
        std::string listed;
        for (const std::string& folder : host.ActiveLibraries())
            listed += (listed.empty() ? "" : ",") + folder.substr(temp.Path().size() + 1);
        return listed;
    }
};

TEST_F(LibraryTest, SuiteLibraryIsAddedUnlessAFolderOfItsNameIsActive) {
    // fault: 0 none, 1 'ALIB' refused, 2 'GLIB' fails
    const std::tuple<const char*, const char*, Suite, int, int, const char*, int, const char*> cases[] = {
        {"active under another parent, other case", "Other/mvl_LIBRARY", kOnDisk, kLoad, 0, "true", 0,
         "Other/mvl_LIBRARY"},
        {"not active: added last", "Parts", kOnDisk, kLoad, 0, "true", 1, "Parts,Addon/MVL_Library"},
        {"absent from disk: the host is not asked", "", kAbsent, kLoad, 0, "true", 0, ""},
        {"unchecked: handed over again", "", kActive, kLoadUnchecked, 0, "true", 1, "Addon/MVL_Library"},
        {"unchecked, absent: not asked", "", kAbsent, kLoadUnchecked, 0, "true", 0, ""},
        {"the host refuses", "", kOnDisk, kLoad, 1, "false", 1, ""},
        {"no list from the host: taken as empty", "", kActive, kLoad, 2, "true", 1, "Addon/MVL_Library"},
    };
    for (const auto& [name, active, suite, item, fault, shown, additions, after] : cases) {
        SCOPED_TRACE(name);
        achost::ScopedFaults faults;
        auto host = Start(active, suite);
        if (fault != 0)
            achost::FailHostCall(fault == 1 ? HostCall::AddLibrary : HostCall::GetLibraries, APIERR_NOTMINE);
        EXPECT_EQ(shown, Run(*host, item, ""));
        EXPECT_EQ(additions, host->LibraryAdditions());
        EXPECT_EQ(after, Active(*host));
    }
}

TEST_F(LibraryTest, LibrariesListTheEmbeddedLibraryFirst) {
    achost::ScopedFaults faults;
    EXPECT_EQ("true", Run(*Start(""), kLibraries, ""));
    setenv("XN_PROBE_BUILTIN", "1", 1);
    auto host = Start("Parts,Extra");
    EXPECT_EQ("true " + fs::canonical(temp.PathOf("Addon/library_probe.so")).string() + " | " +
                  temp.PathOf("Parts") + " | " + temp.PathOf("Extra"),
              Run(*host, kLibraries, ""));
    achost::FailHostCall(HostCall::GetLibraries, APIERR_GENERAL);
    EXPECT_EQ("false", Run(*host, kLibraries, ""));
    // Reported between the folders, it still comes first, the folders in their order after it.
    options.builtInLibraryAt = 1;
    host.reset();
    EXPECT_EQ("true " + fs::canonical(temp.PathOf("Addon/library_probe.so")).string() + " | " +
                  temp.PathOf("Parts") + " | " + temp.PathOf("Extra"),
              Run(*Start("Parts,Extra"), kLibraries, ""));
}

TEST_F(LibraryTest, PartsAreFoundByNameFileAndIndexMissingDefinitionsNever) {
    const std::tuple<const char*, int, const char*, int, std::string> cases[] = {
        {"X.gsm searches X", kByName, "Door.gsm", APILib_DoorID, "true 2 Door"},
        {"X searches X, in any case and type", kByName, "door", API_ZombieLibID, "true 2 Door"},
        {"X.Y.gsm searches X.Y", kByName, "A.B.gsm", APILib_ObjectID, "true 3 A.B"},
        {"another type", kByName, "Door", APILib_WindowID, "false"},
        {"a file's name", kByFile, "/x/y/Chair.gsm", APILib_ObjectID, "true 1 Chair"},
        {"/a.b/c: the empty name", kByFile, "/a.b/c", API_ZombieLibID, "false"},
        {"an index", kByIndex, "4", 0, "true 4 c"},
        {"no such index", kByIndex, "99", 0, "false"},
        {"an unknown name: the host's error", kSearch, "Nothing", 0, "false -2130313113"},
        {"missing: Search", kSearch, "ghost", 0, "false -7003"},
        {"missing: LibPart by index", kByIndex, "5", 0, "false"},
        {"missing: Index", kIndex, "Ghost.gsm", 0, "-1"},
        {"missing: Location by index", kLocationByIndex, "5", 0, "false"},
        {"missing: Location by file", kLocationByFile, "/p/Ghost.gsm", 0, "false"},
        {"Index", kIndex, "Chair.gsm", APILib_ObjectID, "1"},
        {"Location by index", kLocationByIndex, "2", 0, "true " + temp.PathOf("Parts/Door.gsm")},
        {"Location by file", kLocationByFile, "/p/A.B.gsm", 0, "true " + temp.PathOf("Parts/Sub/A.B.gsm")},
    };
    auto host = Start("Parts");
    for (const auto& [name, item, argument, type, shown] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(shown, Run(*host, item, argument, type));
    }
}

// Stool, in the suite library, and Bench, in a folder picked, get index 6 once found.
TEST_F(LibraryTest, FullLookupLoadsTheSuiteLibraryThenAsksTheUser) {
    const std::string ask = "ask MoravelLibrary: Find / ";
    // message: null, no alert
    const std::tuple<const char*, int, const char*, Suite, const char*, const char*, std::string, int>
        cases[] = {
            {"found after loading the suite library", kIndexFullLib, "Stool", kOnDisk, "", "", "6", 1},
            {"found in the folder picked", kIndexFullLib, "Bench", kAbsent, "Extra", "", ask + "6", 1},
            {"cancelled", kIndexFullLib, "Bench", kAbsent, "", "", ask + "-1", 0},
            {"a file picked: refused", kIndexFullLib, "Bench", kAbsent, "Parts/c.gsm", "", ask + "-1", 1},
            {"a missing definition stays -1", kIndexFullLib, "Ghost", kOnDisk, "Extra", "", ask + "-1", 2},
            {"checked: the active suite library stays", kIndexFullLib, "None", kActive, "", "", ask + "-1",
             0},
            {"unchecked: handed over again", kIndexFullLibNoCheck, "None", kActive, "", "", ask + "-1", 1},
            {"the alert with string 85", kGetIndex, "None", kAbsent, "", "",
             ask + "alert Not found / false -1", 0},
            {"the alert with the message", kGetIndexNoCheck, "None", kAbsent, "", "Call us",
             ask + "alert Call us / false -1", 0},
            {"no alert", kGetIndex, "None", kAbsent, "", nullptr, ask + "false -1", 0},
            {"found: no alert", kGetIndex, "Door", kAbsent, "", "", "true 2", 0},
            {"Ask: the add-on's name, then the prompt", kAsk, "Pick", kAbsent, "Extra", "",
             "ask MoravelLibrary: Pick / true", 1},
        };
    for (const auto& [name, item, argument, suite, picked, message, shown, additions] : cases) {
        SCOPED_TRACE(name);
        setenv("XN_PROBE_MESSAGE", message != nullptr ? message : "", 1);
        message == nullptr ? setenv("XN_PROBE_QUIET", "1", 1) : unsetenv("XN_PROBE_QUIET");
        auto host = Start("Parts", suite);
        EXPECT_EQ(shown, Run(*host, item, argument, 0, picked));
        EXPECT_EQ(additions, host->LibraryAdditions());
    }
}

} // namespace
