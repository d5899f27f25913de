// The About and Information dialogs of the real add-on in the real host.
#include "IOBase.hpp"
#include "achost/Faults.hpp"

#include "HostTest.hpp"

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>
#include <tuple>

namespace {

namespace fs = std::filesystem;

const std::string kGuide1 = "01 - Libreria Moravel.pdf";

class DialogsTest : public xn_test::SharedFolderTest {
protected:
    // The built add-on's folder; or, with `guides`, a copy of the add-on in the test's folder with only
    // those guides beside it.
    std::string AddonIn(const std::vector<std::string>& guides) {
        const fs::path built = fs::path(MORAVEL_LIBRARY).parent_path();
        fs::create_directories(temp.PathOf("addon"));
        fs::copy_file(MORAVEL_LIBRARY, temp.PathOf("addon/MoravelLibrary.so"));
        for (const std::string& guide : guides)
            fs::copy_file(built / guide, temp.PathOf("addon/" + guide));
        return temp.PathOf("addon/MoravelLibrary.so");
    }
};

TEST_F(DialogsTest, AGuideMissingBesideTheAddonGivesTheAlertAndAboutStaysOpen) {
    const std::tuple<const char*, std::vector<std::string>, std::string> cases[] = {
        {"International",
         {},
         "Error: the guide cannot be opened. Make sure its PDF file is in the add-on's folder."},
        {"Italian",
         {"menu 3", "select 3 1", "click 1"},
         "Errore: impossibile aprire la guida. Verifica che il file PDF si trovi nella cartella "
         "dell'add-on."},
    };
    for (const auto& [name, language, alert] : cases) {
        SCOPED_TRACE(name);
        achost::Host host(options);
        ASSERT_TRUE(xn_test::Started(host, AddonIn({kGuide1})));
        std::vector<std::string> lines = language;
        lines.insert(lines.end(),
                     {"menu 1", "click 6", "expect opened \"/addon/" + kGuide1 + "\"", "click 7",
                      "expect alert \"" + alert + "\" \"\"", "ok", "expect dialog 32500", "click 1"});
        EXPECT_EQ("", xn_test::RunLines(host, lines));
        EXPECT_EQ(1u, host.Opened().size());
        fs::remove_all(temp.PathOf("addon"));
        fs::remove_all(temp.PathOf("Shared")); // each case a first run: no automatic update check is due
    }
}

// The saved file: six lines in the language in force, UTF-8 without a byte-order mark, replacing
// what the file held.
TEST_F(DialogsTest, InformationIsSavedAsSixLinesInTheLanguageInForce) {
    // Japanese is not offered by the shipped add-on: the same dialog in an add-on that sets it.
    const std::tuple<const char*, const char*, std::string, std::string, std::string> cases[] = {
        {"International", "int", MORAVEL_LIBRARY, "info.txt",
         "MoravelLibrary\nVersion: 19.0.4.2200\nDate: 03/08/2018\nSystem: Linux\nArchiCAD 19\n\n"},
        {"Italian, extension in mixed case", "ita", MORAVEL_LIBRARY, "info.TxT",
         "MoravelLibrary\nVersione: 19.0.4.2200\nData: 03/08/2018\nSistema: Linux\nArchiCAD 19\n\n"},
        {"Japanese", "5", ANY_LANGUAGE_ADDON, "情報.TXT",
         "MoravelLibrary\nバージョン： 19.0.4.2200\n日付： 03/08/2018\nシステム： Linux\nArchiCAD 19\n\n"},
    };
    for (const auto& [name, language, addon, file, content] : cases) {
        SCOPED_TRACE(name);
        Settings("set", std::string("Language_str ") + language);
        setenv("XN_LANGUAGE", language, 1);
        const std::string path = temp.PathOf(file);
        temp.Write(path, std::string(500, 'x'));
        achost::Host host(options);
        ASSERT_TRUE(xn_test::Started(host, addon));
        achost::FileRequest asked;
        EXPECT_EQ("", xn_test::RunLines(host,
                                        {"menu 6", "click 16", "answer save \"" + path + "\"", "click 16",
                                         "answer save \"" + path + "\"", "expect dialog 32501", "click 1"},
                                        [&](const achost::Host& h) {
                                            if (h.OpenFileDialog() != nullptr)
                                                asked = *h.OpenFileDialog();
                                        }));
        EXPECT_EQ(content, temp.Read(path));
        EXPECT_EQ(std::vector<std::string>{"Text Files (*.txt) [TXT]"}, asked.filters);
        fs::remove(path);
        unsetenv("XN_LANGUAGE");
    }
}

// A file whose third line cannot be written: the alert, the dialog stays open, and what was written
// stays (a file that cannot be made at all is in information.acs).
TEST_F(DialogsTest, AFileThatCannotBeWrittenGivesTheWriteAlert) {
    const std::string path = temp.PathOf("partial.txt");
    achost::ScopedFaults faults;
    achost::Host host(options);
    ASSERT_TRUE(xn_test::Started(host, MORAVEL_LIBRARY));
    bool armed = false;
    EXPECT_EQ("", xn_test::RunLines(
                      host,
                      {"menu 6", "click 16", "answer save \"" + path + "\"",
                       "expect alert \"The information could not be saved.\" \"The file could not "
                       "be written. Make sure the folder is writable and the disk is not full.\" \"\"",
                       "ok", "expect dialog 32501", "click 1"},
                      [&](const achost::Host& h) {
                          if (h.OpenFileDialog() != nullptr && !armed)
                              achost::FailFileOperation(achost::FileOperation::FileWrite,
                                                        GS::OChannel::WriteError, 3);
                          armed = armed || h.OpenFileDialog() != nullptr;
                      }));
    EXPECT_EQ("MoravelLibrary\nVersion: 19.0.4.2200\n", temp.Read(path));
}

// A person at the terminal: the add-on and its menu are shown, what the add-on opens is launched
// (here a recording xdg-open first on PATH) and printed, a save dialog asks for a path, and the end of
// the input ends the session.
TEST_F(DialogsTest, TheTerminalLaunchesWhatItOpensAndAsksForThePathToSave) {
    fs::create_directories(temp.PathOf("bin"));
    temp.Write(temp.PathOf("bin/xdg-open"),
               "#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" + temp.PathOf("log") + "'\n");
    fs::permissions(temp.PathOf("bin/xdg-open"), fs::perms::owner_all);
    const std::string guide = fs::path(MORAVEL_LIBRARY).parent_path() / kGuide1;
    std::string output;
    // About: the first guide, OK; Information: Save, a typed path, OK.
    EXPECT_EQ(0, xn_test::RunProgram("printf '1\\n6\\n1\\n6\\n16\\n" + temp.PathOf("info.txt") +
                                         "\\n1\\n' | PATH='" + temp.PathOf("bin") + "':\"$PATH\" " +
                                         ACHOST_PROGRAM " --shared-folder " + temp.PathOf("Shared") + " 2>&1",
                                     &output));
    EXPECT_EQ(0u,
              output.find("MoravelLibrary - MoravelLibrary 19.0 (AC190)\nmenu 32501 \"MoravelLibrary\" in "
                          "Design > Design Extras\n  1 [ ] About MoravelLibrary...\n"))
        << output;
    EXPECT_NE(std::string::npos, output.find("opened \"" + guide + "\"\n")) << output;
    EXPECT_EQ(guide + "\n", temp.Read(temp.PathOf("log")));
    EXPECT_NE(std::string::npos, output.find("save dialog \"Save Information\"")) << output;
    EXPECT_EQ(0u, temp.Read(temp.PathOf("info.txt")).find("MoravelLibrary\nVersion: 19.0.4.2200\n"));
}

// A person at a real terminal (a pseudo-terminal): the menu and its prompt are shown before anything is
// typed, a line is edited before it is sent (a typo rubbed out), and a path typed after the save
// dialog's prompt was shown is taken as typed.
TEST_F(DialogsTest, AtATerminalEachPromptIsShownBeforeTypingAndLinesAreEdited) {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_LE(0, child);
    if (child == 0) {
        const std::string shared = temp.PathOf("Shared");
        execl(ACHOST_PROGRAM, ACHOST_PROGRAM, "--no-update-server", "--shared-folder", shared.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    std::string screen;
    // Reads what the terminal shows until it ends with `prompt` (10 s at most).
    const auto shows = [&](const std::string& prompt) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (screen.size() < prompt.size() ||
               screen.compare(screen.size() - prompt.size(), prompt.size(), prompt) != 0) {
            pollfd ready = {terminal, POLLIN, 0};
            if (std::chrono::steady_clock::now() > limit || poll(&ready, 1, 100) < 0)
                return false;
            char bytes[4096];
            const ssize_t n = (ready.revents & POLLIN) != 0 ? read(terminal, bytes, sizeof bytes) : 0;
            if (n < 0)
                return false;
            screen.append(bytes, static_cast<size_t>(n));
        }
        return true;
    };
    const auto type = [&](const std::string& keys) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200)); // typed later, not ahead
        ASSERT_EQ(static_cast<ssize_t>(keys.size()), write(terminal, keys.data(), keys.size()));
    };
    const std::string path = temp.PathOf("info.txt");
    EXPECT_TRUE(shows("6 [ ] System Information...\r\n> ")) << screen;
    type("7\x7f"
         "6\r"); // 7 rubbed out: Information
    EXPECT_TRUE(shows("16 Button \"Save Information\"\r\n> ")) << screen;
    type("16\r");
    EXPECT_TRUE(shows("path (an empty line cancels)> ")) << screen;
    type(path + "\r");
    EXPECT_TRUE(shows("> ")) << screen;
    type("1\r\x04");
    int status = -1;
    for (int i = 0; i < 100 && waitpid(child, &status, WNOHANG) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    if (status == -1)
        kill(child, SIGKILL), waitpid(child, &status, 0);
    close(terminal);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << screen;
    EXPECT_EQ(0u, temp.Read(path).find("MoravelLibrary\nVersion: 19.0.4.2200\n")) << screen;
}

} // namespace
