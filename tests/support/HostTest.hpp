// Helpers for tests that run add-ons in the real host: options that make the add-on's wrong calls
// fail the test, driver sessions, programs run with their output, and a fixture with a shared folder
// of its own.
#pragma once

#include "TempFolder.hpp"
#include "achost/FrontEnd.hpp"
#include "achost/Host.hpp"
#include "achost/SharedFolder.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace xn_test {

// Host options under which each wrong call of the add-on fails the test, or lands in `collected`.
inline achost::HostOptions StrictOptions(std::vector<std::string>* collected = nullptr) {
    achost::HostOptions options;
    options.onViolation = [collected](const std::string& message) {
        if (collected != nullptr)
            collected->push_back(message);
        else
            ADD_FAILURE() << "add-on error: " << message;
    };
    return options;
}

// Starts `addon` in `host`; false, with the reason as a test failure, when it does not start.
inline bool Started(achost::Host& host, const std::string& addon) {
    std::string error;
    const bool started = host.Start(addon, &error);
    if (!started)
        ADD_FAILURE() << error;
    return started;
}

// Runs `lines` as one session of the C++ driver; returns the failure that ended it, or "".
inline std::string RunLines(achost::Host& host, const std::vector<std::string>& lines,
                            std::function<void(const achost::Host&)> onWait = nullptr) {
    achost::DriverFrontEnd driver;
    driver.onWait = std::move(onWait);
    for (const auto& line : lines)
        EXPECT_TRUE(driver.Add(line)) << line;
    EXPECT_EQ(driver.Failure().empty(), achost::RunSession(host, driver));
    return driver.Failure();
}

// Runs a shell command line; returns its exit code and appends what it printed to `output`.
inline int RunProgram(const std::string& command, std::string* output) {
    FILE* pipe = popen(command.c_str(), "r");
    char buffer[4096];
    while (fgets(buffer, sizeof buffer, pipe) != nullptr)
        *output += buffer;
    return WEXITSTATUS(pclose(pipe));
}

// A fresh folder per test whose "Shared" is the host's shared folder, and strict host options. The
// add-on's requests to its update server go to a loopback port that refuses them, unless the test
// serves them itself: no test ever reaches beyond this machine.
class SharedFolderTest : public TempFolderTest {
protected:
    void SetUp() override {
        achost::SetSharedFolder(temp.PathOf("Shared"));
        setenv("http_proxy", "http://127.0.0.1:1", 1);
        unsetenv("no_proxy");
        unsetenv("NO_PROXY");
    }
    void TearDown() override {
        unsetenv("http_proxy");
        achost::SetSharedFolder("");
        TempFolderTest::TearDown();
    }
#ifdef XN_SETTINGS_PROGRAM
    // Runs xn-settings VERB on `file` in the shared folder (the add-on's own settings file unless
    // given), with `arguments` after the file; returns what it printed on standard output. A failed
    // set fails the test.
    std::string Settings(const std::string& verb, const std::string& arguments,
                         const std::string& file = "MoravelLibrary_190.cfg") {
        std::filesystem::create_directories(temp.PathOf("Shared"));
        std::string output;
        const int exitCode = RunProgram(XN_SETTINGS_PROGRAM " " + verb + " " + temp.PathOf("Shared/" + file) +
                                            " " + arguments + " 2>/dev/null",
                                        &output);
        EXPECT_TRUE(exitCode == 0 || verb != "set") << "xn-settings " << verb << " " << arguments;
        return output;
    }
#endif
    achost::HostOptions options = StrictOptions();
};

} // namespace xn_test
