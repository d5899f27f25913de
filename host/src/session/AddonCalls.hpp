// Add-on code run by the host, named for the report of an add-on that crashes or throws.
#pragma once

#include "achost/Host.hpp"

#include <exception>
#include <string>

namespace achost {

// While one exists, the host is running the add-on's code that `what` names ("menu command 32500
// item 3"); calls nest. A crash report (InstallCrashReport) names the innermost call and those
// around it.
class AddonCall {
public:
    explicit AddonCall(std::string what);
    ~AddonCall();
    AddonCall(const AddonCall&) = delete;
    AddonCall& operator=(const AddonCall&) = delete;

    // The add-on file named in reports.
    static void SetAddon(const std::string& path);

    // Runs `code`, the add-on's, as a call named `what`. No exception may cross the interface and
    // the add-on's state is unknown after one: an exception that escapes `code` ends the process
    // with a report and the status kAddonFaultStatus.
    template <typename F>
    static auto Run(std::string what, F&& code) -> decltype(code()) {
        AddonCall call(std::move(what));
        try {
            return code();
        } catch (const std::exception& e) {
            Threw(("an exception (" + std::string(e.what()) + ")").c_str());
        } catch (...) {
            Threw("an exception");
        }
    }

    [[noreturn]] static void Threw(const char* what);
};

} // namespace achost
