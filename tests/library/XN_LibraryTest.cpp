// The object library and library-part lookup, called by a probe add-on inside the real host: the
// probe's copy sits in Addon/ of the test's folder, beside the suite library Addon/MVL_Library when a
// case puts one there.
#include "achost/Faults.hpp"

#include "HostTest.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

namespace {

namespace fs = std::filesystem;
using achost::HostCall;

enum ProbeItem {
    kLoad = 1,
    kLoadUnchecked,
    kLibraries,
    kByName,
    kByFile,
    kByIndex,
    kSearch,
    kIndex,
    kIndexFullLib,
    kIndexFullLibNoCheck,
    kLocationByIndex,
    kLocationByFile,
    kGetIndex,
    kGetIndexNoCheck,
    kAsk
};

// Chooses one item, then answers what it shows: each alert with ok, each folder dialog with the next
// of `folders` (cancel when none is left). Records them in order: "Probe: RESULT" for the probe's
// report, the large text of other alerts, "folder: TITLE" for a folder dialog.
class ProbeSession : public achost::FrontEnd {
public:
    ProbeSession(int item, std::vector<std::string> folders) : item(item), folders(std::move(folders)) {}
    bool NextAction(const achost::Host& host, achost::Action* action) override {
        std::string line;
        if (const achost::Alert* alert = host.OpenAlert()) {
            shown.push_back(alert->title.empty() ? alert->largeText : alert->title + ": " + alert->largeText);
            line = "ok";
        } else if (const achost::FileRequest* request = host.OpenFileDialog()) {
            shown.push_back(request->kind + ": " + request->title);
            line = folders.empty() ? "answer folder cancel" : "answer folder \"" + folders.front() + "\"";
            if (!folders.empty())
                folders.erase(folders.begin());
        } else if (item != 0) {
            line = "menu " + std::to_string(item);
            item = 0;
        } else
            return false;
        std::string error;
        return achost::ParseAction(line, action, &error) == achost::ParseResult::Parsed;
    }
    bool Outcome(const achost::Action& action, bool ok, const std::string& message) override {
        EXPECT_TRUE(ok) << action.source << ": " << message;
        return ok;
    }
    std::vector<std::string> shown;

private:
    int item;
    std::vector<std::string> folders;
};

class LibraryTest : public xn_test::SharedFolderTest {
protected:
    void SetUp() override {
        SharedFolderTest::SetUp();
        fs::create_directories(temp.PathOf("Addon"));
        fs::copy_file(LIBRARY_PROBE, temp.PathOf("Addon/library_probe.so"));
        // Indices in the order the host reads Parts: Chair 1, Door 2, Sub/A.B 3, c 4.
        for (const auto& [file, text] : {std::pair<std::string, std::string>{"Parts/Chair.gsm", "PEN 1\n"},
                                         {"Parts/Door.gsm", "! type: Door\nPEN 1\n"},
                                         {"Parts/Sub/A.B.gsm", " ! TYPE : object\n"},
                                         {"Parts/c.gsm", ""},
                                         {"Extra/Bench.gsm", ""}})
            Put(file, text);
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
    // The suite library beside the probe, holding Stool.gsm, or none.
    void SuiteLibrary(bool onDisk) {
        fs::remove_all(temp.PathOf("Addon/MVL_Library"));
        if (onDisk)
            Put("Addon/MVL_Library/Stool.gsm", "");
    }
    // A host with the probe started and `active` (relative to the test's folder) as its libraries.
    std::unique_ptr<achost::Host> Start(const std::vector<std::string>& active,
                                        const std::vector<std::string>& missing = {}) {
        achost::HostOptions withLibraries = options;
        for (const std::string& folder : active) {
            fs::create_directories(temp.PathOf(folder));
            withLibraries.libraries.push_back(temp.PathOf(folder));
        }
        withLibraries.missing = missing;
        auto host = std::make_unique<achost::Host>(withLibraries);
        std::string error;
        EXPECT_TRUE(host->Start(temp.PathOf("Addon/library_probe.so"), &error)) << error;
        return host;
    }
    std::vector<std::string> Run(achost::Host& host, int item, const std::string& argument, int type,
                                 const std::vector<std::string>& folders = {}) {
        setenv("XN_PROBE_ARGUMENT", argument.c_str(), 1);
        setenv("XN_PROBE_TYPE", std::to_string(type).c_str(), 1);
        ProbeSession session(item, folders);
        achost::RunSession(host, session);
        return session.shown;
    }
    std::vector<std::string> Folders(const achost::Host& host) {
        std::vector<std::string> folders;
        for (const std::string& folder : host.ActiveLibraries())
            folders.push_back(folder.substr(temp.Path().size() + 1));
        return folders;
    }
};

TEST_F(LibraryTest, SuiteLibraryIsAddedUnlessAFolderOfItsNameIsActive) {
    const struct {
        const char* name;
        std::vector<std::string> active;
        bool onDisk;
        int item;
        std::optional<HostCall> fault;
        std::string shown;
        int additions;
        std::vector<std::string> after;
    } cases[] = {
        {"active under another parent, other case",
         {"Other/mvl_LIBRARY"},
         true,
         kLoad,
         {},
         "true",
         0,
         {"Other/mvl_LIBRARY"}},
        {"the exact path in another case",
         {"ADDON/MVL_library"},
         true,
         kLoad,
         {},
         "true",
         0,
         {"ADDON/MVL_library"}},
        {"not active: added last", {"Parts"}, true, kLoad, {}, "true", 1, {"Parts", "Addon/MVL_Library"}},
        {"absent from disk: the host is not asked", {}, false, kLoad, {}, "true", 0, {}},
        {"unchecked: handed over again",
         {"Addon/MVL_Library"},
         true,
         kLoadUnchecked,
         {},
         "true",
         1,
         {"Addon/MVL_Library"}},
        {"unchecked, absent: not asked", {}, false, kLoadUnchecked, {}, "true", 0, {}},
        {"the host refuses", {}, true, kLoad, HostCall::AddLibrary, "false", 1, {}},
        {"no list from the host: checked as empty",
         {"Addon/MVL_Library"},
         true,
         kLoad,
         HostCall::GetLibraries,
         "true",
         1,
         {"Addon/MVL_Library"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        achost::ScopedFaults faults;
        SuiteLibrary(c.onDisk);
        auto host = Start(c.active);
        if (c.fault)
            achost::FailHostCall(*c.fault, APIERR_NOTMINE);
        EXPECT_EQ(std::vector<std::string>{"Probe: " + c.shown}, Run(*host, c.item, "", 0));
        EXPECT_EQ(c.additions, host->LibraryAdditions());
        EXPECT_EQ(c.after, Folders(*host));
    }
}

TEST_F(LibraryTest, LibrariesListTheEmbeddedLibraryFirst) {
    const std::string probe = fs::canonical(temp.PathOf("Addon/library_probe.so")).string();
    const struct {
        const char* name;
        bool builtIn;
        std::vector<std::string> active;
        bool fails;
        std::string shown;
    } cases[] = {
        {"an empty list", false, {}, false, "true"},
        {"the embedded library first",
         true,
         {"Parts", "Extra"},
         false,
         "true " + probe + " | " + temp.PathOf("Parts") + " | " + temp.PathOf("Extra")},
        {"a host error", true, {"Parts"}, true, "false"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        achost::ScopedFaults faults;
        c.builtIn ? setenv("XN_PROBE_BUILTIN", "1", 1) : unsetenv("XN_PROBE_BUILTIN");
        auto host = Start(c.active);
        if (c.fails)
            achost::FailHostCall(HostCall::GetLibraries, APIERR_GENERAL);
        EXPECT_EQ(std::vector<std::string>{"Probe: " + c.shown}, Run(*host, kLibraries, "", 0));
    }
}

// Parts/ active, "Ghost" a missing definition (index 5).
TEST_F(LibraryTest, PartsAreFoundByNameFileAndIndexMissingDefinitionsNever) {
    const struct {
        const char* name;
        int item;
        std::string argument;
        int type;
        std::string shown;
    } cases[] = {
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
    auto host = Start({"Parts"}, {"Ghost"});
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(std::vector<std::string>{"Probe: " + c.shown}, Run(*host, c.item, c.argument, c.type));
    }
}

// Parts/ active (with the suite library too when `suiteActive`), "Ghost" missing; the suite library
// beside the probe holds Stool (index 6) when `onDisk`.
TEST_F(LibraryTest, FullLookupLoadsTheSuiteLibraryThenAsksTheUser) {
    const std::string ask = "folder: MoravelLibrary: Find the library";
    const struct {
        const char* name;
        int item;
        std::string argument;
        bool onDisk, suiteActive;
        std::vector<std::string> folders;
        const char *message, *quiet;
        std::vector<std::string> shown;
        int additions;
    } cases[] = {
        {"found after loading the suite library",
         kIndexFullLib,
         "Stool",
         true,
         false,
         {},
         "",
         nullptr,
         {"Probe: 6"},
         1},
        {"found in the folder picked",
         kIndexFullLib,
         "Bench",
         false,
         false,
         {"Extra"},
         "",
         nullptr,
         {ask, "Probe: 6"},
         1},
        {"cancelled", kIndexFullLib, "Bench", false, false, {}, "", nullptr, {ask, "Probe: -1"}, 0},
        {"a file picked: refused",
         kIndexFullLib,
         "Bench",
         false,
         false,
         {"Parts/c.gsm"},
         "",
         nullptr,
         {ask, "Probe: -1"},
         1},
        {"a missing definition stays -1",
         kIndexFullLib,
         "Ghost",
         true,
         false,
         {"Extra"},
         "",
         nullptr,
         {ask, "Probe: -1"},
         2},
        {"checked: the active suite library is kept",
         kIndexFullLib,
         "None",
         true,
         true,
         {},
         "",
         nullptr,
         {ask, "Probe: -1"},
         0},
        {"unchecked: handed over again",
         kIndexFullLibNoCheck,
         "None",
         true,
         true,
         {},
         "",
         nullptr,
         {ask, "Probe: -1"},
         1},
        {"the alert with string 85",
         kGetIndex,
         "None",
         false,
         false,
         {},
         "",
         nullptr,
         {ask, "Part not found", "Probe: false -1"},
         0},
        {"the alert with the message",
         kGetIndexNoCheck,
         "None",
         false,
         false,
         {},
         "Ask your dealer",
         nullptr,
         {ask, "Ask your dealer", "Probe: false -1"},
         0},
        {"no alert",
         kGetIndex,
         "None",
         false,
         false,
         {},
         "Ask your dealer",
         "1",
         {ask, "Probe: false -1"},
         0},
        {"found: no alert", kGetIndex, "Door", false, false, {}, "", nullptr, {"Probe: true 2"}, 0},
        {"Ask titles with the add-on's name",
         kAsk,
         "Pick",
         false,
         false,
         {"Extra"},
         "",
         nullptr,
         {"folder: MoravelLibrary: Pick", "Probe: true"},
         1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        setenv("XN_PROBE_MESSAGE", c.message, 1);
        c.quiet != nullptr ? setenv("XN_PROBE_QUIET", c.quiet, 1) : unsetenv("XN_PROBE_QUIET");
        SuiteLibrary(c.onDisk);
        auto host = Start(c.suiteActive ? std::vector<std::string>{"Parts", "Addon/MVL_Library"}
                                        : std::vector<std::string>{"Parts"},
                          {"Ghost"});
        std::vector<std::string> picked;
        for (const std::string& folder : c.folders)
            picked.push_back(temp.PathOf(folder));
        EXPECT_EQ(c.shown, Run(*host, c.item, c.argument, 0, picked));
        EXPECT_EQ(c.additions, host->LibraryAdditions());
    }
}

} // namespace
