// The host utilities and the save-file dialog, called by a probe add-on inside the real host.
#include "HostTest.hpp"

#include <tuple>

namespace {

enum ProbeItem {
    kTitle = 1,
    kCheckEngine,
    kSetEngine,
    kOpenFolder,
    kLaunchDocByLoc,
    kLaunchDocByPath,
    kLaunchURL
};

class GeneralTest : public xn_test::SharedFolderTest {
protected:
    void TearDown() override {
        setenv("PATH", savedPath.c_str(), 1);
        unsetenv("XN_PROBE_ARGUMENT");
        SharedFolderTest::TearDown();
    }
    // Calls the probe's item with `argument`; what the call answered.
    std::string Probe(achost::Host& host, int item, const std::string& argument) {
        setenv("XN_PROBE_ARGUMENT", argument.c_str(), 1);
        std::string error;
        EXPECT_TRUE(host.ChooseMenuItem(32500, item, &error)) << error;
        return host.FindMenu(32500)->items[static_cast<size_t>(item) - 1].text;
    }
    const std::string savedPath = std::getenv("PATH");
};

// The project's title is its file name cut to 255 characters; an engine is chosen by name, the lowest
// number first, and changed only when needed.
TEST_F(GeneralTest, ProjectTitleAndRenderingEngine) {
    const std::string name255(255, 'n');
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"untitled project", "", "true true "},
        {"saved project", "/projects/Studio Rossi.pln", "true false Studio Rossi.pln"},
        {"255 characters kept", "/p/" + name255, "true false " + name255},
        {"300 characters cut to 255", "/p/" + name255 + std::string(45, 'x'), "true false " + name255},
    };
    options.engines = {"Photo Engine Pro", "Sketch Engine", "Photo Engine"};
    achost::Host host(options);
    ASSERT_TRUE(xn_test::Started(host, GENERAL_PROBE));
    for (const auto& [name, project, shown] : cases) {
        SCOPED_TRACE(name);
        host.SetProject(project);
        EXPECT_EQ(shown, Probe(host, kTitle, ""));
    }
    // In the same run, each step sees the engine the steps before it left current.
    const std::tuple<const char*, int, const char*, std::string, int, int> steps[] = {
        {"check another engine", kCheckEngine, "sketch", "0", 1, 0},
        {"check with an empty name", kCheckEngine, "", "1", 1, 0},
        {"set the current engine: no change", kSetEngine, "ENGINE", "true", 1, 0},
        {"set another engine", kSetEngine, "sketch", "true", 2, 1},
        {"two engines match: the lower number", kSetEngine, "photo engine", "true", 1, 2},
        {"no engine matches", kSetEngine, "Nothing", "false", 1, 2},
        {"check ignores case", kCheckEngine, "PRO", "1", 1, 2},
    };
    for (const auto& [name, item, argument, answer, current, changes] : steps) {
        SCOPED_TRACE(name);
        EXPECT_EQ(answer, Probe(host, item, argument));
        EXPECT_EQ(current, host.CurrentEngine());
        EXPECT_EQ(changes, host.EngineChanges());
    }
}

TEST_F(GeneralTest, OnlyExistingTargetsOfTheRightKindAreOpened) {
    temp.Write(temp.PathOf("doc.pdf"), "%PDF");
    std::filesystem::create_directories(temp.PathOf("Folder"));
    const std::string url300 = "http://www.norvane.example/" + std::string(273, 'u');
    const std::tuple<const char*, int, std::string, std::string, std::string> cases[] = {
        {"a file is not a folder", kOpenFolder, temp.PathOf("doc.pdf"), "false", ""},
        {"a folder", kOpenFolder, temp.PathOf("Folder"), "true", temp.PathOf("Folder")},
        {"a missing document", kLaunchDocByLoc, temp.PathOf("missing.pdf"), "false", ""},
        {"a folder is not a document", kLaunchDocByLoc, temp.PathOf("Folder"), "false", ""},
        {"a document", kLaunchDocByLoc, temp.PathOf("doc.pdf"), "true", temp.PathOf("doc.pdf")},
        {"an address of 300 characters goes as 255", kLaunchURL, url300, "true", url300.substr(0, 255)},
    };
    for (const auto& [name, item, argument, answer, opened] : cases) {
        SCOPED_TRACE(name);
        achost::Host host(options);
        ASSERT_TRUE(xn_test::Started(host, GENERAL_PROBE));
        EXPECT_EQ(answer, Probe(host, item, argument));
        EXPECT_EQ(opened.empty() ? std::vector<std::string>{} : std::vector<std::string>{opened},
                  host.Opened());
    }
}

// A launching session hands the target to xdg-open as its one argument; only an address reports
// the desktop's failure.
TEST_F(GeneralTest, LaunchingPassesTheTargetAsOneArgumentToXdgOpen) {
    const std::string odd = temp.PathOf("it's a \"quoted\" file; $HOME.pdf");
    temp.Write(odd, "%PDF");
    const std::tuple<const char*, int, std::string, int, std::string> cases[] = {
        {"a document with quotes and spaces", kLaunchDocByPath, odd, 0, "true"},
        {"a document the desktop fails to open", kLaunchDocByPath, odd, 4, "true"},
        {"an address", kLaunchURL, "http://www.norvane.example/a b", 0, "true"},
        {"an address the desktop fails to open", kLaunchURL, "http://www.norvane.example/", 4, "false"},
    };
    options.launch = true;
    for (const auto& [name, item, argument, exitCode, answer] : cases) {
        SCOPED_TRACE(name);
        // First on PATH: an xdg-open that appends each argument as a line to xdg-open.log.
        const std::string script = temp.PathOf("bin/xdg-open");
        std::filesystem::create_directories(temp.PathOf("bin"));
        temp.Write(script, "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\" >> '" +
                               temp.PathOf("xdg-open.log") + "'; done\nexit " + std::to_string(exitCode) +
                               "\n");
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        setenv("PATH", (temp.PathOf("bin") + ":" + savedPath).c_str(), 1);
        achost::Host host(options);
        ASSERT_TRUE(xn_test::Started(host, GENERAL_PROBE));
        EXPECT_EQ(answer, Probe(host, item, argument));
        EXPECT_EQ(argument + "\n", temp.Read(temp.PathOf("xdg-open.log")));
        std::filesystem::remove(temp.PathOf("xdg-open.log"));
    }
}

// The default path gives the dialog its folder and file name only when it names a file.
TEST_F(GeneralTest, SaveFileOffersTheDefaultPathAndAnswersTheChosenFile) {
    const std::tuple<const char*, std::string, std::string, std::string, std::string, std::string> cases[] = {
        {"folder and name", "/srv/out/report.txt", "/srv/out", "report.txt", "\"/x/y.txt\"", "/x/y.txt"},
        {"a relative answer is taken from the folder", "/srv/out/report.txt", "/srv/out", "report.txt",
         "\"sub/z.txt\"", "/srv/out/sub/z.txt"},
        {"a bare name", "report.txt", "", "report.txt", "\"/x/y.txt\"", "/x/y.txt"},
        {"a folder without a name: neither", "/srv/out/", "", "", "cancel", "cancelled"},
    };
    for (const auto& [name, defaultPath, folder, fileName, answer, result] : cases) {
        SCOPED_TRACE(name);
        achost::Host host(options);
        ASSERT_TRUE(xn_test::Started(host, GENERAL_PROBE));
        setenv("XN_PROBE_ARGUMENT", defaultPath.c_str(), 1);
        achost::FileRequest seen;
        EXPECT_EQ("",
                  xn_test::RunLines(host, {"menu 8", "answer save " + answer}, [&](const achost::Host& h) {
                      if (h.OpenFileDialog() != nullptr)
                          seen = *h.OpenFileDialog();
                  }));
        EXPECT_EQ("Save it", seen.title);
        EXPECT_EQ(folder, seen.folder);
        EXPECT_EQ(fileName, seen.fileName);
        EXPECT_EQ(std::vector<std::string>{"Text Files (*.txt) [TXT]"}, seen.filters);
        EXPECT_EQ(result, host.FindMenu(32500)->items[7].text);
    }
}

// A script sets the project and reads the engine; a save answer needs a save dialog.
TEST_F(GeneralTest, SessionLinesSetTheProjectAndExpectTheEngine) {
    const std::tuple<const char*, std::vector<std::string>, std::string, std::string> cases[] = {
        {"a project, then untitled",
         {"project \"/p/Casa Bianca.pln\"", "menu 1", "project untitled"},
         "",
         "true false Casa Bianca.pln"},
        {"another engine expected",
         {"expect engine \"Sketch Engine\""},
         "driver:1: expected the current engine \"Sketch Engine\", saw \"Internal Engine\"",
         "ArchiCADProjectTitle"},
        {"an answer with no dialog",
         {"answer save cancel"},
         "driver:1: 'answer save cancel' needs an open save dialog, and none is open",
         "ArchiCADProjectTitle"},
    };
    for (const auto& [name, lines, failure, title] : cases) {
        SCOPED_TRACE(name);
        achost::Host host(options);
        ASSERT_TRUE(xn_test::Started(host, GENERAL_PROBE));
        EXPECT_EQ(failure, xn_test::RunLines(host, lines));
        EXPECT_EQ(title, host.FindMenu(32500)->items[0].text);
    }
}

} // namespace
