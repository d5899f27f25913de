// xn-versions: shows a versions file as the add-on reads it, with the add-on's own parser, and lists
// the lines that parser passes over, so that a file can be checked before it is published.
//
// Texts are printed in UTF-8.
#include "XN_AddonUpdate_Versions.hpp"
#include "XN_Language.hpp"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

const char* const kUsage = "usage: xn-versions print [--json] FILE\n"
                           "       xn-versions lint FILE\n"
                           "       xn-versions COMMAND --help\n"
                           "Shows a versions file of the update server as the add-on reads it.\n";

const char* const kPrintHelp =
    "usage: xn-versions print [--json] FILE\n"
    "Prints the messages, add-ons and libraries of FILE, each list in file order, exactly as the\n"
    "add-on's parser reads them (dates in the sortable form yyyymmdd, version numbers kept to 16 bits).\n"
    "With --json, one object with the arrays \"messages\", \"addons\" and \"libraries\"; languages are\n"
    "given as indices (0 ita, 1 int, 2 fra, 3 ger, 4 spa, 5 jap, 6 rus).\n";

const char* const kLintHelp =
    "usage: xn-versions lint FILE\n"
    "Lists every line of FILE that the add-on's parser skips, as FILE:LINE: reason, followed by the\n"
    "line. Comments (\"*\") and blank lines are not listed. Exits with 1 when any line is listed.\n";

std::string Utf8(const XN_String& text) {
    const XN_CString bytes = text.ToCStr(XN_String::Encoding_UTF8);
    return bytes.Get() != nullptr ? std::string(bytes.Get()) : std::string();
}

struct Records {
    XN_List<XN_AddonUpdate_Message> messages;
    XN_List<XN_AddonUpdate_Addon> addons;
    XN_List<XN_AddonUpdate_Library> libraries;
};

struct Skipped {
    long lineNumber;
    std::string line;
    const char* reason;
};

void NoteSkip(long index, const XN_String& line, XN_AddonUpdate_SkipReason reason, void* userData) {
    static_cast<std::vector<Skipped>*>(userData)->push_back(
        {index + 1, Utf8(line), XN_AddonUpdate_SkipReasonText(reason)});
}

// Reads `path` with the add-on's parser; false, reported, when it is no readable file.
bool Read(const std::string& path, Records& records, std::vector<Skipped>* skipped) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        std::cerr << "xn-versions: " << path << ": no such file\n";
        return false;
    }
    if (!std::filesystem::is_regular_file(path, error) || !std::ifstream(path).is_open()) {
        std::cerr << "xn-versions: " << path << ": cannot read the file\n";
        return false;
    }
    XN_Location file;
    const std::string absolute = std::filesystem::absolute(path, error).lexically_normal().string();
    file.Set(XN_String(absolute.c_str(), XN_String::Encoding_UTF8));
    if (!XN_AddonUpdate_ReadVersionsFile(file, records.messages, records.addons, records.libraries,
                                         skipped != nullptr ? NoteSkip : nullptr, skipped)) {
        std::cerr << "xn-versions: " << path << ": cannot open the file\n";
        return false;
    }
    return true;
}

nlohmann::ordered_json ToJson(const Records& records) {
    nlohmann::ordered_json all = {{"messages", nlohmann::ordered_json::array()},
                                  {"addons", nlohmann::ordered_json::array()},
                                  {"libraries", nlohmann::ordered_json::array()}};
    for (long i = 0; i < records.messages.GetCount(); ++i) {
        const XN_AddonUpdate_Message& m = records.messages[i];
        all["messages"].push_back({{"fromDate", Utf8(m.fromDate)},
                                   {"toDate", Utf8(m.toDate)},
                                   {"text", Utf8(m.text)},
                                   {"link", Utf8(m.link)}});
    }
    for (long i = 0; i < records.addons.GetCount(); ++i) {
        const XN_AddonUpdate_Addon& a = records.addons[i];
        nlohmann::ordered_json languages = nlohmann::ordered_json::array();
        for (long l = 0; l < a.languages.GetCount(); ++l)
            languages.push_back(a.languages[l]);
        all["addons"].push_back({{"name", Utf8(a.name)},
                                 {"versionText", Utf8(a.versionText)},
                                 {"major", a.major},
                                 {"minor", a.minor},
                                 {"revision", a.revision},
                                 {"build", a.build},
                                 {"hostVersion", a.hostVersion},
                                 {"date", Utf8(a.date)},
                                 {"dateText", Utf8(a.dateText)},
                                 {"languages", languages},
                                 {"text", Utf8(a.text)}});
    }
    for (long i = 0; i < records.libraries.GetCount(); ++i) {
        const XN_AddonUpdate_Library& l = records.libraries[i];
        all["libraries"].push_back({{"name", Utf8(l.name)},
                                    {"date", Utf8(l.date)},
                                    {"dateText", Utf8(l.dateText)},
                                    {"text", Utf8(l.text)}});
    }
    return all;
}

// A description, each of its lines indented under its record.
void PrintText(const XN_String& text) {
    if (text.IsEmpty())
        return;
    std::string rest = Utf8(text);
    for (size_t end; (end = rest.find('\n')) != std::string::npos; rest.erase(0, end + 1))
        std::cout << "    " << rest.substr(0, end) << "\n";
    std::cout << "    " << rest << "\n";
}

void PrintPlain(const Records& records) {
    for (long i = 0; i < records.messages.GetCount(); ++i) {
        const XN_AddonUpdate_Message& m = records.messages[i];
        std::cout << "message from=" << Utf8(m.fromDate) << " to=" << Utf8(m.toDate)
                  << " link=" << Utf8(m.link) << "\n";
        PrintText(m.text);
    }
    for (long i = 0; i < records.addons.GetCount(); ++i) {
        const XN_AddonUpdate_Addon& a = records.addons[i];
        std::cout << "addon " << Utf8(a.name) << " " << Utf8(a.versionText) << " = " << a.major << "."
                  << a.minor << "." << a.revision << "." << a.build << " host=" << a.hostVersion
                  << " date=" << Utf8(a.date) << " (" << Utf8(a.dateText) << ") languages=";
        for (long l = 0; l < a.languages.GetCount(); ++l) {
            const short index = a.languages[l];
            std::cout << (l > 0 ? "," : "") << Utf8(gXN_Languages_Suffixes[index]);
        }
        std::cout << "\n";
        PrintText(a.text);
    }
    for (long i = 0; i < records.libraries.GetCount(); ++i) {
        const XN_AddonUpdate_Library& l = records.libraries[i];
        std::cout << "library " << Utf8(l.name) << " date=" << Utf8(l.date) << " (" << Utf8(l.dateText)
                  << ")\n";
        PrintText(l.text);
    }
}

int Print(const std::string& path, bool json) {
    Records records;
    std::vector<Skipped> skipped;
    if (!Read(path, records, &skipped))
        return 2;
    if (!skipped.empty() && skipped.front().lineNumber == 0) // the file as a whole
        std::cerr << "xn-versions: " << path << ": " << skipped.front().reason << "\n";
    if (json)
        std::cout << ToJson(records).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
                  << "\n";
    else
        PrintPlain(records);
    return 0;
}

int Lint(const std::string& path) {
    Records records;
    std::vector<Skipped> skipped;
    if (!Read(path, records, &skipped))
        return 2;
    for (const Skipped& s : skipped)
        if (s.lineNumber == 0) // the file as a whole
            std::cout << path << ": " << s.reason << "\n";
        else
            std::cout << path << ":" << s.lineNumber << ": " << s.reason << "\n    " << s.line << "\n";
    return skipped.empty() ? 0 : 1;
}

int Usage(const std::string& problem, const char* usage) {
    std::cerr << "xn-versions: " << problem << "\n" << usage;
    return 2;
}

int Run(const std::vector<std::string>& arguments) {
    if (arguments.empty())
        return Usage("missing command", kUsage);
    const std::string& command = arguments[0];
    if (command == "--help" || command == "-h")
        return std::cout << kUsage, 0;
    const bool isPrint = command == "print";
    if (!isPrint && command != "lint")
        return Usage("unknown command \"" + command + "\"", kUsage);
    const char* usage = isPrint ? kPrintHelp : kLintHelp;
    bool json = false;
    std::vector<std::string> files;
    for (size_t i = 1; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--help" || argument == "-h")
            return std::cout << usage, 0;
        if (isPrint && argument == "--json")
            json = true;
        else if (argument.size() > 1 && argument[0] == '-')
            return Usage(command + ": unknown option \"" + argument + "\"", usage);
        else
            files.push_back(argument);
    }
    if (files.size() != 1)
        return Usage(command + ": " + (files.empty() ? "missing FILE" : "one FILE only"), usage);
    return isPrint ? Print(files[0], json) : Lint(files[0]);
}

} // namespace

int main(int argc, char** argv) {
    int code = 2;
    try {
        code = Run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& e) {
        std::cerr << "xn-versions: " << e.what() << "\n";
    } catch (...) {
        std::cerr << "xn-versions: unexpected failure\n";
    }
    // Output that could not be written (a full disk) is a failure, not a quiet success.
    std::cout.flush();
    if (!std::cout || std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::cerr << "xn-versions: cannot write the output: " << std::strerror(errno) << "\n";
        return 2;
    }
    return code;
}
