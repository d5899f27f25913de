// achost validate: puts an add-on through a catalogue of named checks, each in a child process of
// its own watched by a timer, and reports one verdict per check. The catalogue is one table
// (ValidateChecks.cpp); the runner (Validate.cpp) forks, watches, reports and writes JSON and JUnit.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace achost::validate {

struct Options {
    std::string addon;
    int strictness = 5;            // 1..10: how much each check does
    unsigned long long seed = 0;   // every random choice of every check derives from it
    int repeat = 1;                // the catalogue runs this many times, with seeds seed, seed + 1, ...
    double timeout = 60;           // seconds each check may take before its process is killed
    std::string json, junit;       // report files, none when empty
    std::vector<std::string> only; // the checks to run (catalogue order); all when empty
    std::string sharedSettings = "Quillane.cfg"; // the suite's shared settings file, in the shared folder
};

// What a check tells the validator from its child process, line by line, so that what it said
// before a crash or a hang survives it.
class Reporter {
public:
    explicit Reporter(int fd) : fd(fd) {}
    // What the check does now; named when the process crashes or hangs, and in violations.
    void Step(const std::string& what);
    // A fault: the check fails with `what`.
    void Fail(const std::string& what);
    // The same, naming the step it happened in.
    void FailHere(const std::string& what);
    // A measurement shown with the verdict.
    void Note(const std::string& what);
    bool Failed() const { return failed; }
    const std::string& CurrentStep() const { return step; }

private:
    void Send(char kind, const std::string& text);
    int fd;
    bool failed = false;
    std::string step;
};

struct CheckContext {
    const Options& options;
    unsigned long long seed;
    std::string work; // a fresh folder of this check's own; the host's shared folder is work + "/Shared"
    Reporter& report;
};

struct Check {
    const char* name;
    const char* summary;
    void (*run)(CheckContext& context);
};

// `text` in double quotes, quotes and backslashes escaped, as texts are shown in scripts.
std::string Quoted(const std::string& text);

// A port of 127.0.0.1. Silent: a socket there takes connections and never answers, as a slow or
// stuck network does. Otherwise nobody listens on it: connections are refused, as when the network
// is down.
int LoopbackPort(bool silent);
int ClosedPort();
// Sends every HTTP request of this process through a proxy on the local `port`.
void UseProxy(int port);

// The suite's settings files: records "$key: value" in lines, every byte's two halves exchanged on
// disk. A record of an image, up to its line feed, with the lines that continue it (they start
// with "#").
struct SettingsRecord {
    std::string key;
    std::string bytes; // the record as stored, line feeds included
};
// Exchanges the two 4-bit halves of every byte: the file's bytes from the image's, and back.
std::string ExchangeHalves(std::string bytes);
std::vector<SettingsRecord> Records(const std::string& image);

// The suite's languages by number, as their settings store them.
constexpr int kLanguageCount = 7;
extern const char* const kLanguages[kLanguageCount];
// Stores language `language` (0 to kLanguageCount - 1) as "Language_str" in the add-on's own
// settings file in `folder`, which the suite names after the add-on and the host's release
// ("<name>_190.cfg" under release 19), keeping its other records. The add-on reads it when it
// starts. False, with why, when the file cannot be written.
bool StoreLanguage(const std::string& folder, const std::string& addonName, int language, std::string* error);

// Every check, in the order they run.
const std::vector<Check>& Catalogue();

// `achost validate ...` with the arguments after "validate"; the exit code.
int Validate(const std::vector<std::string>& arguments);

} // namespace achost::validate
