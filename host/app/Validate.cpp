// The validator's runner: arguments, one child process per check with a watchdog, verdict lines,
// the command that replays a failure, JSON and JUnit reports.
#include "Validate.hpp"

#include "achost/Host.hpp"
#include "achost/SharedFolder.hpp"

#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace achost::validate {

namespace {

const char kUsage[] = "usage: achost validate [--strictness 1..10] [--seed N] [--repeat N] [--timeout S]\n"
                      "                       [--json FILE] [--junit FILE] [--check NAME]... "
                      "[--shared-settings NAME] ADDON\n"
                      "       achost validate --list\n";

// The last step of every check that ran to its end.
const char kDone[] = "done";

struct Verdict {
    std::string check;
    int repetition = 1;
    unsigned long long seed = 0;
    bool passed = false;
    double seconds = 0;
    std::string message; // what was seen, for a failure
    std::vector<std::string> notes;
    std::string replay;
};

std::string Shell(const std::string& word) {
    if (!word.empty() &&
        word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                               "_-./=:+,") == std::string::npos)
        return word;
    std::string quoted = "'";
    for (char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string Self() {
    char self[4096] = {};
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    return n > 0 ? std::string(self, static_cast<size_t>(n)) : std::string("achost");
}

std::string Seconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f s", seconds);
    return text;
}

bool ParseNumber(const std::string& text, double low, double high, double* value) {
    char* end = nullptr;
    const double parsed = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(parsed >= low && parsed <= high))
        return false;
    *value = parsed;
    return true;
}

// Fills `options`; false with a message for anything malformed.
bool ParseArguments(const std::vector<std::string>& args, Options* options, bool* seedGiven, bool* list,
                    std::string* error) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool hasValue = i + 1 < args.size();
        double number = 0;
        if (arg == "--list") {
            *list = true;
            continue;
        }
        if (arg.size() > 2 && arg.compare(0, 2, "--") == 0 && !hasValue) {
            *error = arg + " needs a value";
            return false;
        }
        if (arg == "--strictness") {
            if (!ParseNumber(args[++i], 1, 10, &number) || number != static_cast<int>(number)) {
                *error = "--strictness takes a whole number from 1 to 10, not '" + args[i] + "'";
                return false;
            }
            options->strictness = static_cast<int>(number);
        } else if (arg == "--seed") {
            char* end = nullptr;
            const std::string& text = args[++i];
            options->seed = std::strtoull(text.c_str(), &end, 0);
            if (text.empty() || *end != '\0' || text[0] == '-') {
                *error = "--seed takes a non-negative number, not '" + text + "'";
                return false;
            }
            *seedGiven = true;
        } else if (arg == "--repeat") {
            if (!ParseNumber(args[++i], 1, 1000, &number) || number != static_cast<int>(number)) {
                *error = "--repeat takes a whole number from 1 to 1000, not '" + args[i] + "'";
                return false;
            }
            options->repeat = static_cast<int>(number);
        } else if (arg == "--timeout") {
            if (!ParseNumber(args[++i], 0.1, 86400, &number)) {
                *error = "--timeout takes seconds from 0.1 to 86400, not '" + args[i] + "'";
                return false;
            }
            options->timeout = number;
        } else if (arg == "--json")
            options->json = args[++i];
        else if (arg == "--junit")
            options->junit = args[++i];
        else if (arg == "--shared-settings")
            options->sharedSettings = args[++i];
        else if (arg == "--check") {
            const std::string& name = args[++i];
            bool known = false;
            for (const Check& check : Catalogue())
                known = known || name == check.name;
            if (!known) {
                *error = "there is no check '" + name + "' (--list names them)";
                return false;
            }
            options->only.push_back(name);
        } else if (arg[0] != '-' && options->addon.empty())
            options->addon = arg;
        else {
            *error = arg[0] == '-' ? "unknown option " + arg : "only one add-on at a time ('" + arg + "')";
            return false;
        }
    }
    if (options->addon.empty() && !*list) {
        *error = "name the add-on to validate";
        return false;
    }
    return true;
}

bool Selected(const Options& options, const Check& check) {
    if (options.only.empty())
        return true;
    for (const std::string& name : options.only)
        if (name == check.name)
            return true;
    return false;
}

std::string ReplayCommand(const Options& options, const std::string& check, unsigned long long seed) {
    std::ostringstream out;
    out << Shell(Self()) << " validate --check " << check << " --strictness " << options.strictness
        << " --seed " << seed << " --timeout " << options.timeout;
    if (options.sharedSettings != Options().sharedSettings)
        out << " --shared-settings " << Shell(options.sharedSettings);
    out << " " << Shell(options.addon);
    return out.str();
}

std::string SignalName(int signal) {
    switch (signal) {
    case SIGSEGV:
        return "SIGSEGV";
    case SIGABRT:
        return "SIGABRT";
    case SIGBUS:
        return "SIGBUS";
    case SIGFPE:
        return "SIGFPE";
    case SIGILL:
        return "SIGILL";
    case SIGKILL:
        return "SIGKILL";
    case SIGTERM:
        return "SIGTERM";
    default:
        return "signal " + std::to_string(signal);
    }
}

// The lines of the child's own output worth showing: the host's report of a crashing add-on, else
// what a sanitizer or the C++ runtime said.
std::string Diagnostics(const std::string& output) {
    std::istringstream in(output);
    std::string line, found, report;
    while (std::getline(in, line)) {
        if (line.rfind("achost: the add-on ", 0) == 0)
            report += (report.empty() ? "" : " | ") + line;
        else if (found.size() < 600 && (line.find("Sanitizer") != std::string::npos ||
                                        line.find("runtime error") != std::string::npos ||
                                        line.find("terminate called") != std::string::npos))
            found += (found.empty() ? "" : " | ") + line;
    }
    // The host's report names the add-on's call; a sanitizer's lines after it add only addresses.
    return report.empty() ? found : report;
}

// Runs one check in a child process and waits for it at most options.timeout seconds.
Verdict RunCheck(const Options& options, const Check& check, unsigned long long seed) {
    Verdict verdict;
    verdict.check = check.name;
    verdict.seed = seed;
    namespace fs = std::filesystem;
    std::string pattern = (fs::temp_directory_path() / "achost-validate-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        verdict.message = "cannot create a work folder in " + fs::temp_directory_path().string();
        return verdict;
    }
    const std::string work = pattern;
    int report[2], output[2];
    if (pipe(report) != 0 || pipe(output) != 0) {
        verdict.message = "cannot create a pipe";
        return verdict;
    }
    std::fflush(nullptr);
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        close(report[0]);
        close(output[0]);
        dup2(output[1], STDOUT_FILENO);
        dup2(output[1], STDERR_FILENO);
        close(output[1]);
        SetSharedFolder(work + "/Shared");
        UseProxy(ClosedPort()); // nothing a check does reaches beyond this machine

        Reporter reporter(report[1]);
        CheckContext context{options, seed, work, reporter};
        check.run(context);
        reporter.Step(kDone);
        std::fflush(nullptr);
        _exit(reporter.Failed() ? 1 : 0);
    }
    close(report[1]);
    close(output[1]);
    std::string reported, printed, pending;
    bool timedOut = false;
    const auto deadline = start + std::chrono::duration<double>(options.timeout);
    pollfd fds[2] = {{report[0], POLLIN, 0}, {output[0], POLLIN, 0}};
    int open = 2;
    while (open > 0 && child > 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            timedOut = true;
            break;
        }
        if (poll(fds, 2, static_cast<int>(left.count()) + 1) < 0)
            continue;
        for (pollfd& fd : fds) {
            if (fd.fd < 0 || fd.revents == 0)
                continue;
            char buffer[4096];
            const ssize_t n = read(fd.fd, buffer, sizeof buffer);
            if (n <= 0) {
                close(fd.fd);
                fd.fd = -1;
                --open;
                continue;
            }
            std::string& into = &fd == &fds[0] ? reported : printed;
            into.append(buffer, static_cast<size_t>(n));
            if (printed.size() > 1 << 20)
                printed.erase(0, printed.size() - (1 << 19));
        }
    }
    int status = 0;
    if (timedOut && child > 0)
        kill(child, SIGKILL);
    if (child > 0)
        waitpid(child, &status, 0);
    for (pollfd& fd : fds)
        if (fd.fd >= 0)
            close(fd.fd);
    verdict.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::error_code ignored;
    fs::remove_all(work, ignored);

    // The same fault seen again and again is named once, with its count.
    std::string step, failures;
    std::vector<std::pair<std::string, int>> faults;
    std::istringstream lines(reported);
    for (std::string line; std::getline(lines, line);) {
        if (line.size() < 2)
            continue;
        const std::string text = line.substr(2);
        if (line[0] == 'S')
            step = text;
        else if (line[0] == 'N')
            verdict.notes.push_back(text);
        else if (line[0] == 'F') {
            auto known =
                std::find_if(faults.begin(), faults.end(), [&](const auto& f) { return f.first == text; });
            if (known == faults.end())
                faults.emplace_back(text, 1);
            else
                ++known->second;
        }
    }
    for (size_t i = 0; i < faults.size() && i < 3; ++i)
        failures += (failures.empty() ? "" : "; ") + faults[i].first +
                    (faults[i].second > 1 ? " (" + std::to_string(faults[i].second) + " times)" : "");
    if (faults.size() > 3)
        failures += "; and " + std::to_string(faults.size() - 3) + " more";
    const std::string where = step.empty() ? "" : " (while " + step + ")";
    const std::string diagnostics = Diagnostics(printed);
    if (child < 0)
        verdict.message = "cannot start a process for the check";
    else if (timedOut)
        verdict.message = "hung: no verdict within " + Seconds(options.timeout) + where;
    else if (WIFSIGNALED(status))
        verdict.message = "crashed with " + SignalName(WTERMSIG(status)) + where;
    else if (step != kDone && WEXITSTATUS(status) == achost::kAddonFaultStatus)
        verdict.message = "an exception escaped the add-on" + where;
    else if (step != kDone) // the add-on, or a sanitizer, ended the process before the check did
        verdict.message =
            "crashed: its process ended with exit code " + std::to_string(WEXITSTATUS(status)) + where;
    if (!failures.empty())
        verdict.message = verdict.message.empty() ? failures : verdict.message + "; " + failures;
    if (!verdict.message.empty() && !diagnostics.empty())
        verdict.message += " [" + diagnostics + "]";
    verdict.passed = verdict.message.empty() && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return verdict;
}

std::string XmlEscaped(const std::string& text) {
    std::string escaped;
    for (unsigned char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&apos;";
            break;
        default:
            // Control characters other than tab and line breaks are not allowed in XML 1.0.
            if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
                escaped += "?";
            else
                escaped += static_cast<char>(c);
        }
    }
    return escaped;
}

bool WriteFile(const std::string& path, const std::string& contents) {
    std::ofstream out(path, std::ios::binary);
    out << contents;
    out.close();
    if (!out)
        std::cerr << "achost validate: cannot write " << path << "\n";
    return static_cast<bool>(out);
}

std::string JsonReport(const Options& options, const std::vector<Verdict>& verdicts) {
    nlohmann::json report = {{"addon", options.addon},     {"strictness", options.strictness},
                             {"seed", options.seed},       {"repeat", options.repeat},
                             {"timeout", options.timeout}, {"checks", nlohmann::json::array()}};
    bool passed = true;
    for (const Verdict& v : verdicts) {
        passed = passed && v.passed;
        nlohmann::json entry = {{"name", v.check},    {"repetition", v.repetition}, {"seed", v.seed},
                                {"passed", v.passed}, {"seconds", v.seconds},       {"notes", v.notes}};
        if (!v.passed) {
            entry["message"] = v.message;
            entry["replay"] = v.replay;
        }
        report["checks"].push_back(entry);
    }
    report["passed"] = passed;
    // Texts an add-on shows need not be valid UTF-8: replace what is not rather than fail.
    return report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string JUnitReport(const Options& options, const std::vector<Verdict>& verdicts) {
    int failures = 0;
    double total = 0;
    for (const Verdict& v : verdicts) {
        failures += v.passed ? 0 : 1;
        total += v.seconds;
    }
    std::ostringstream out;
    const std::string suite = XmlEscaped(std::filesystem::path(options.addon).filename().string());
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<testsuites name=\"achost validate\" tests=\"" << verdicts.size() << "\" failures=\"" << failures
        << "\" time=\"" << total << "\">\n"
        << "  <testsuite name=\"" << suite << "\" tests=\"" << verdicts.size() << "\" failures=\"" << failures
        << "\" time=\"" << total << "\">\n"
        << "    <properties>\n"
        << "      <property name=\"strictness\" value=\"" << options.strictness << "\"/>\n"
        << "      <property name=\"seed\" value=\"" << options.seed << "\"/>\n"
        << "      <property name=\"repeat\" value=\"" << options.repeat << "\"/>\n"
        << "      <property name=\"timeout\" value=\"" << options.timeout << "\"/>\n"
        << "    </properties>\n";
    for (const Verdict& v : verdicts) {
        const std::string name = v.check + (options.repeat > 1 ? " #" + std::to_string(v.repetition) : "");
        out << "    <testcase classname=\"" << suite << "\" name=\"" << XmlEscaped(name) << "\" time=\""
            << v.seconds << "\"";
        if (v.passed) {
            out << "/>\n";
            continue;
        }
        out << ">\n      <failure message=\"" << XmlEscaped(v.message) << "\">" << XmlEscaped(v.message)
            << "\nreplay: " << XmlEscaped(v.replay) << "</failure>\n    </testcase>\n";
    }
    out << "  </testsuite>\n</testsuites>\n";
    return out.str();
}

} // namespace

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (char c : text)
        quoted += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return quoted + "\"";
}

int LoopbackPort(bool silent) {
    const int s = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(s, reinterpret_cast<sockaddr*>(&address), size);
    if (silent)
        listen(s, 64); // the socket stays open for the life of the process
    getsockname(s, reinterpret_cast<sockaddr*>(&address), &size);
    if (!silent)
        close(s);
    return ntohs(address.sin_port);
}

int ClosedPort() {
    return LoopbackPort(false);
}

void UseProxy(int port) {
    const std::string proxy = "http://127.0.0.1:" + std::to_string(port);
    for (const char* name : {"http_proxy", "https_proxy", "HTTP_PROXY", "HTTPS_PROXY"})
        setenv(name, proxy.c_str(), 1);
    unsetenv("no_proxy");
    unsetenv("NO_PROXY");
}

void Reporter::Send(char kind, const std::string& text) {
    std::string line = std::string(1, kind) + " " + text;
    for (char& c : line)
        c = c == '\n' || c == '\r' ? ' ' : c;
    line += '\n';
    for (size_t done = 0; done < line.size();) {
        const ssize_t n = write(fd, line.data() + done, line.size() - done);
        if (n <= 0)
            return;
        done += static_cast<size_t>(n);
    }
}

void Reporter::Step(const std::string& what) {
    step = what;
    Send('S', what);
}

void Reporter::Fail(const std::string& what) {
    failed = true;
    Send('F', what);
}

void Reporter::FailHere(const std::string& what) {
    Fail(step.empty() ? what : what + " (while " + step + ")");
}

void Reporter::Note(const std::string& what) {
    Send('N', what);
}

int Validate(const std::vector<std::string>& arguments) {
    Options options;
    bool seedGiven = false, list = false;
    std::string error;
    if (!arguments.empty() && (arguments[0] == "--help" || arguments[0] == "-h"))
        return std::cout << kUsage, 0;
    if (!ParseArguments(arguments, &options, &seedGiven, &list, &error)) {
        std::cerr << "achost validate: " << error << "\n" << kUsage;
        return 2;
    }
    if (list) {
        for (const Check& check : Catalogue())
            std::cout << check.name << "\t" << check.summary << "\n";
        return 0;
    }
    if (access(options.addon.c_str(), R_OK) != 0) {
        std::cerr << "achost validate: cannot read " << options.addon << "\n";
        return 2;
    }
    // dlopen looks a bare file name up in the library path, not here.
    options.addon = std::filesystem::absolute(options.addon).lexically_normal().string();
    if (!seedGiven)
        options.seed =
            static_cast<unsigned long long>(std::chrono::system_clock::now().time_since_epoch().count()) %
            1000000007ull;
    std::cout << "achost validate " << options.addon << "\n"
              << "strictness " << options.strictness << ", seed " << options.seed << ", repeat "
              << options.repeat << ", timeout " << options.timeout << " s\n"
              << std::flush;
    std::vector<Verdict> verdicts;
    int failed = 0;
    for (int repetition = 1; repetition <= options.repeat; ++repetition) {
        const unsigned long long seed = options.seed + static_cast<unsigned long long>(repetition - 1);
        if (options.repeat > 1)
            std::cout << "repetition " << repetition << " (seed " << seed << ")\n";
        for (const Check& check : Catalogue()) {
            if (!Selected(options, check))
                continue;
            Verdict verdict = RunCheck(options, check, seed);
            verdict.repetition = repetition;
            verdict.replay = ReplayCommand(options, check.name, seed);
            std::cout << (verdict.passed ? "PASS " : "FAIL ") << check.name << " ("
                      << Seconds(verdict.seconds) << ")";
            for (const std::string& note : verdict.notes)
                std::cout << (&note == &verdict.notes.front() ? ": " : ", ") << note;
            if (!verdict.passed)
                std::cout << "\n  seen: " << verdict.message << "\n  replay: " << verdict.replay;
            std::cout << "\n" << std::flush;
            failed += verdict.passed ? 0 : 1;
            verdicts.push_back(std::move(verdict));
        }
    }
    std::cout << verdicts.size() << " checks, " << failed << " failed\n";
    bool written = true;
    if (!options.json.empty())
        written = WriteFile(options.json, JsonReport(options, verdicts)) && written;
    if (!options.junit.empty())
        written = WriteFile(options.junit, JUnitReport(options, verdicts)) && written;
    return failed == 0 && written ? 0 : 1;
}

} // namespace achost::validate
