// The real add-on in the real host with one host call made to fail at a time: whatever fails, the
// add-on answers with its failure value or carries on with a neutral result, and never crashes, hangs,
// leaks a handle or loses the settings file.
#include "achost/Faults.hpp"

#include "FaultServer.hpp"
#include "HostTest.hpp"

#include <regex>
#include <tuple>

namespace {

using achost::FileOperation;
using achost::HostCall;

// With the automatic update check off, so that only the commands run touch the file.
const std::string kGerman = "$Language_str: ger\n$AutoUpdate: 0\n";
const std::string kItalian = "$Language_str: ita\n$AutoUpdate: 0\n";
// Choose Italian in the language dialog and confirm.
const std::vector<std::string> kChooseItalian = {"menu 3", "select 3 1", "click 1"};
constexpr GSErrCode kAccessDenied = static_cast<GSErrCode>(0x81010102);
constexpr int kAtStart = -1;

class FaultMatrixTest : public xn_test::SharedFolderTest {
protected:
    struct Outcome {
        std::string startError;   // what Start reported ("" when the add-on loaded)
        short registeredMenu = 0; // the menu registered for the language read at start
        std::string stored;       // the plain settings file afterwards
        std::string session;      // the failure that ended the session, or ""
        bool fired = false;       // the fault fired
    };

    // One host run over a settings file holding German: `arm` is called before Start (kAtStart) or
    // before the action of index `armBefore`, then `lines` run. Checks what every run must hold: no
    // wrong call of the add-on, no handle left or misused.
    Outcome Run(const std::vector<std::string>& lines, int armBefore, const std::function<void()>& arm) {
        achost::ScopedFaults faults;
        std::filesystem::remove_all(temp.PathOf("Shared"));
        std::filesystem::create_directories(temp.PathOf("Shared"));
        xn_test::WritePlain(SettingsPath(), kGerman);
        const long handlesBefore = achost::LiveHandleCount();
        const long misusesBefore = achost::HandleMisuseCount();
        std::vector<std::string> violations;
        Outcome outcome;
        {
            achost::Host host(xn_test::StrictOptions(&violations));
            if (armBefore == kAtStart)
                arm();
            if (host.Start(MORAVEL_LIBRARY, &outcome.startError)) {
                outcome.registeredMenu = host.RegisteredMenu() != nullptr ? host.RegisteredMenu()->resID : 0;
                int waits = 0;
                outcome.session = xn_test::RunLines(host, lines, [&](const achost::Host&) {
                    if (waits++ == armBefore)
                        arm();
                });
            }
            outcome.fired = !achost::FaultPending();
        }
        outcome.stored = xn_test::ReadPlain(SettingsPath());
        EXPECT_EQ(handlesBefore, achost::LiveHandleCount());
        EXPECT_EQ(misusesBefore, achost::HandleMisuseCount());
        EXPECT_EQ(std::vector<std::string>(), violations);
        return outcome;
    }

    std::string SettingsPath() { return temp.PathOf("Shared/MoravelLibrary_190.cfg"); }
};

// Arms the n-th call of `which` to fail with `error`.
std::function<void()> Fail(HostCall which, GSErrCode error, int nth = 1) {
    return [=] { achost::FailHostCall(which, error, nth); };
}

TEST_F(FaultMatrixTest, EachFailingHostCallEndsInItsNeutralResult) {
    const std::string reg = "RegisterInterface of " MORAVEL_LIBRARY " failed with error 0x8106";
    const std::string init = "Initialize of " MORAVEL_LIBRARY " failed with error 0x8106";
    const std::vector<std::string> none, dialog = {"menu 3"}, italian = kChooseItalian;
    const std::tuple<const char*, std::function<void()>, int, const std::vector<std::string>&, std::string,
                     short, const std::string&>
        cases[] = {
            // Loading: registration and initialisation pass the host's refusal back.
            {"menu registration refused", Fail(HostCall::RegisterMenu, APIERR_BADID), kAtStart, none,
             reg + "0065 (APIERR_BADID, a resource, menu or item ID that does not exist)", 0, kGerman},
            {"built-in library refused", Fail(HostCall::RegisterBuiltInLibrary, APIERR_GENERAL), kAtStart,
             none, reg + "0001 (APIERR_GENERAL, a general failure)", 0, kGerman},
            {"menu handler refused", Fail(HostCall::InstallMenuHandler, APIERR_REFUSEDCMD, 3), kAtStart, none,
             init + "0388 (APIERR_REFUSEDCMD, refused in this state)", 0, kGerman},
            // Loading: what cannot be read is taken as absent; the first command reads the settings again.
            // The shared store is read first, then the add-on's own.
            {"settings folder unknown at registration", Fail(HostCall::SpecialFolder, kAccessDenied, 2),
             kAtStart, italian, "", 32501, kItalian},
            {"menu texts refused at load", Fail(HostCall::MenuItemText, APIERR_BADID, 4), kAtStart, italian,
             "", 32503, kItalian},
            {"resource string missing at load", Fail(HostCall::ResourceString, 0, 2), kAtStart, italian, "",
             32503, kItalian},
            // Commands: the language stays as it was unless a confirmed choice was saved whole.
            {"language dialog refused", Fail(HostCall::ModalDialog, APIERR_GENERAL), 0, dialog, "", 32503,
             kGerman},
            {"dialog text missing", Fail(HostCall::ResourceString, 0, 3), 0, italian, "", 32503, kItalian},
            {"settings folder unknown at saving", Fail(HostCall::SpecialFolder, kAccessDenied), 2, italian,
             "", 32503, kGerman},
        };
    for (const auto& [name, arm, armBefore, lines, startError, registeredMenu, stored] : cases) {
        SCOPED_TRACE(name);
        const Outcome outcome = Run(lines, armBefore, arm);
        EXPECT_TRUE(outcome.fired);
        EXPECT_EQ("", outcome.session);
        EXPECT_EQ(startError, outcome.startError);
        EXPECT_EQ(registeredMenu, outcome.registeredMenu);
        EXPECT_EQ(stored, outcome.stored);
    }
}

// Every host call the add-on makes that can fail is failed in turn, in a session of each command (the
// update check against a server on this machine): the n-th call of each kind, for every n up to 8 and
// then every doubling, as far as the session reaches. The add-on loads or passes the failure back, the
// command goes on, stops or says so in an alert (a refused dialog leaves nothing to click), and the
// settings file holds whole records. Each kind must fail somewhere: a row that never fires tests
// nothing.
TEST_F(FaultMatrixTest, EachCallOfEachCommandFailsInTurn) {
    const auto file = [](FileOperation operation) {
        return [operation](int nth) { achost::FailFileOperation(operation, kAccessDenied, nth); };
    };
    const auto call = [](HostCall which) { return [which](int nth) { Fail(which, APIERR_GENERAL, nth)(); }; };
    const std::tuple<const char*, std::function<void(int)>> kinds[] = {
        {"BMAllocateHandle", [](int nth) { achost::FailAllocation(nth); }},
        {"BMReallocHandle", [](int nth) { achost::FailReallocation(nth); }},
        {"IO::File", file(FileOperation::FileStatus)},
        {"IO::File::Open", file(FileOperation::FileOpen)},
        {"IO::File::ReadBin", file(FileOperation::FileRead)},
        {"IO::File::WriteBin", file(FileOperation::FileWrite)},
        {"IO::File::GetDataLength", file(FileOperation::FileGetDataLength)},
        {"IO::File::Close", file(FileOperation::FileClose)},
        {"IO::Folder", file(FileOperation::FolderStatus)},
        {"IO::Location::ToPath", file(FileOperation::LocationToPath)},
        {"GetSpecialLocation", call(HostCall::SpecialFolder)},
        {"DGModalDialog", call(HostCall::ModalDialog)},
        {"DGModelessInit", call(HostCall::ModelessDialog)},
        {"DGAlert", call(HostCall::Alert)},
        {"ACAPI_Resource_GetLocUStr", call(HostCall::ResourceString)},
        {"ACAPI_Interface menu item", call(HostCall::MenuItemText)},
        {"ACAPI_GetOwnLocation", call(HostCall::OwnLocation)},
    };
    xn_test::FaultServer server;
    ASSERT_TRUE(server.Start([](const std::string&) {
        return xn_test::Reply{200, "MoravelLibrary 19.0.4.2200 (AC190) 04/08/2018\n"};
    }));
    setenv("http_proxy", server.Address().c_str(), 1);
    const std::string saved = temp.PathOf("info.txt");
    const std::vector<std::string> sessions[] = {
        kChooseItalian,
        {"menu 1", "click 6", "click 1"},
        {"menu 6", "click 16", "answer save \"report\"", "ok", "answer save \"" + saved + "\"", "click 1"},
        {"menu 4", "wait download", "close"},
        {"menu 5"},
    };
    // A setting whose read failed is taken as absent; whatever the commands stored, records stay whole.
    const std::regex kWhole("\\$Language_str: (ger|ita)\n(\\$[A-Za-z_0-9]+: [0-9]*\n)*");
    const std::regex kStopped("'.*' (needs an open (save dialog|dialog|alert), and none is open|is not "
                              "possible while (an alert|the save dialog) is open)");
    for (const auto& [name, arm] : kinds) {
        int fired = 0;
        for (const std::vector<std::string>& lines : sessions)
            for (int nth = 1;; nth = nth < 8 ? nth + 1 : 2 * nth) {
                SCOPED_TRACE(std::string(name) + " call " + std::to_string(nth) + " in " + lines[0]);
                std::filesystem::remove(saved);
                const Outcome outcome = Run(lines, kAtStart, [&arm = arm, nth] { arm(nth); });
                const bool loaded = outcome.startError.empty() ||
                                    outcome.startError.find(" failed with error ") != std::string::npos;
                const bool stopped = outcome.session.empty() || std::regex_search(outcome.session, kStopped);
                const bool whole = std::regex_match(outcome.stored, kWhole);
                EXPECT_TRUE(loaded) << outcome.startError;
                EXPECT_TRUE(stopped) << outcome.session;
                EXPECT_TRUE(whole) << outcome.stored;
                if (!outcome.fired || !loaded || !stopped || !whole)
                    break;
                ++fired;
            }
        EXPECT_GT(fired, 0) << name << " never failed: the row tests nothing";
    }
}

} // namespace
