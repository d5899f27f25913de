// xn-settings: reads and writes the suite's scrambled settings and marker files, with the add-on's
// own format code, so that what it writes the add-on reads.
//
// Arguments and output are UTF-8; the files hold their texts in the system's 8-bit default
// encoding, to and from which the tool converts.
#include "XN_SettingsFile.hpp"

#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const char* const kUsage =
    "usage: xn-settings dump|get|set|remove FILE [KEY [VALUE]]\n"
    "       xn-settings COMMAND --help\n"
    "Reads and writes the scrambled settings (.cfg) and marker (.sui) files of the suite.\n";

struct Command {
    const char* name;
    const char* operands; // "FILE KEY ...": the arguments after the command name
    const char* help;
    int (*run)(const XN_Location& file, char** arguments);
};

XN_String FromUtf8(const char* text) {
    return XN_String(text, XN_String::Encoding_UTF8);
}

std::string ToUtf8(const XN_String& text) {
    const XN_CString bytes = text.ToCStr(XN_String::Encoding_UTF8);
    return bytes.Get() != nullptr ? std::string(bytes.Get()) : std::string();
}

// A value on one line: LF as \n, CR as \r, a backslash doubled.
std::string Escaped(const XN_String& text) {
    std::string shown;
    for (const char c : ToUtf8(text)) {
        if (c == '\n')
            shown += "\\n";
        else if (c == '\r')
            shown += "\\r";
        else if (c == '\\')
            shown += "\\\\";
        else
            shown += c;
    }
    return shown;
}

int Fail(const std::string& message) {
    std::cerr << "xn-settings: " << message << "\n";
    return 1;
}

// Reads the file's records. Prints the reason and returns false when the file does not parse, or
// when it is missing and `mustExist`.
bool ReadRecords(const XN_Location& file, XN_List<XN_Setting>& records, bool mustExist) {
    XN_SettingsFile_Report report;
    const XN_SettingsFile_Status status = XN_SettingsFile_Read(file, records, &report);
    if (status == XN_SettingsFile_OK && !report.exists && mustExist)
        Fail(ToUtf8(file) + ": no such file");
    else if (status == XN_SettingsFile_ReadError)
        Fail(ToUtf8(file) + ": cannot read the file: " + report.reason);
    else if (status != XN_SettingsFile_OK)
        Fail(ToUtf8(file) + ": " + report.reason);
    struct stat info;
    if (status == XN_SettingsFile_Malformed && stat(ToUtf8(file).c_str(), &info) == 0 &&
        static_cast<unsigned long long>(info.st_size) > XN_SETTINGS_IMAGE_MAX)
        Fail("the file is " + std::to_string(info.st_size) + " bytes: only its first " +
             std::to_string(XN_SETTINGS_IMAGE_MAX) + " are read, as by every add-on of the suite");
    if (status == XN_SettingsFile_Malformed || status == XN_SettingsFile_TooLarge)
        Fail("an add-on that loads this file first keeps a copy of it as " +
             ToUtf8(XN_SettingsFile_CopyName(file)) + ", then writes back only the records " +
             (status == XN_SettingsFile_Malformed
                  ? std::string("before the fault")
                  : "in its first " + std::to_string(XN_SETTINGS_IMAGE_MAX) + " bytes"));
    return status == XN_SettingsFile_OK && (report.exists || !mustExist);
}

bool WriteRecords(const XN_Location& file, const XN_List<XN_Setting>& records) {
    std::string why;
    if (XN_SettingsFile_Write(file, records, &why))
        return true;
    Fail(ToUtf8(file) + ": cannot write the file (nothing was changed): " + why);
    return false;
}

int Dump(const XN_Location& file, char**) {
    XN_List<XN_Setting> records;
    const bool ok = ReadRecords(file, records, true);
    const XN_String copy = XN_SettingsFile_CopyName(file);
    struct stat info;
    if (stat(ToUtf8(copy).c_str(), &info) == 0)
        Fail("note: " + ToUtf8(copy) +
             " holds a copy of this file from when it last did not parse or was too large");
    for (long i = 0; i < records.GetCount(); ++i)
        std::cout << ToUtf8(records[i].key) << ": " << Escaped(records[i].value) << "\n";
    return ok ? 0 : 1;
}

// Reads the existing file and finds `key` in it; -1, reported, when the file does not read or holds
// no record with the key.
long ReadAndFind(const XN_Location& file, XN_List<XN_Setting>& records, const char* key) {
    if (!ReadRecords(file, records, true))
        return -1;
    const long index = XN_SettingsFile_IndexOf(records, FromUtf8(key));
    if (index < 0)
        Fail(ToUtf8(file) + ": no key \"" + key + "\"");
    return index;
}

int Get(const XN_Location& file, char** arguments) {
    XN_List<XN_Setting> records;
    const long index = ReadAndFind(file, records, arguments[0]);
    if (index < 0)
        return 1;
    std::cout << ToUtf8(records[index].value) << "\n";
    return 0;
}

// The UTF-8 argument as text, when the file's 8-bit encoding holds every character of it; otherwise
// says why not and gives the null string.
XN_String StorableText(const char* what, const char* utf8) {
    const XN_String text = FromUtf8(utf8);
    if (text.IsNull()) {
        Fail(std::string(what) + " is not valid UTF-8");
        return text;
    }
    const long units = static_cast<long>(text.GetLength());
    std::vector<char> bytes(static_cast<size_t>(units) + 1);
    if (units > 0 && XN_String::ConvertChangeEncoding(XN_String::Encoding_UTF16,
                                                      reinterpret_cast<const char*>(text.GetBuffer()),
                                                      2 * units, XN_String::Encoding_SystemDefault,
                                                      bytes.data(), units, false, false) != units) {
        Fail(std::string("cannot store the ") + what + " \"" + utf8 + "\": the settings files hold " +
             XN_String::GetSystemDefaultEncodingName() +
             " text, which has no form of some of its characters");
        return XN_String();
    }
    return text;
}

int Set(const XN_Location& file, char** arguments) {
    const XN_String key = StorableText("key", arguments[0]);
    if (!key.IsNull() && !XN_SettingsFile_IsStorableKey(key))
        return Fail(std::string("cannot store the key \"") + arguments[0] +
                    "\": a key must not be empty nor hold \":\" or a line break");
    const XN_String value = key.IsNull() ? XN_String() : StorableText("value", arguments[1]);
    if (value.IsNull())
        return 1;
    XN_List<XN_Setting> records;
    if (!ReadRecords(file, records, false))
        return 1;
    const long index = XN_SettingsFile_IndexOf(records, key);
    if (index >= 0)
        records[index].value = value;
    else
        records.AddData(XN_Setting(key, value), -1);
    return WriteRecords(file, records) ? 0 : 1;
}

int Remove(const XN_Location& file, char** arguments) {
    XN_List<XN_Setting> records;
    const long index = ReadAndFind(file, records, arguments[0]);
    if (index < 0)
        return 1;
    records.DeleteData(index);
    return WriteRecords(file, records) ? 0 : 1;
}

const Command kCommands[] = {
    {"dump", "FILE",
     "Prints every record as \"key: value\", one per line, with line breaks in values shown as \\n\n"
     "(\\r for a carriage return, \\\\ for a backslash). A file that does not parse is reported with\n"
     "the malformed record's number and byte offset, after the records before it.\n",
     Dump},
    {"get", "FILE KEY",
     "Prints the value of the first record with KEY (exact, case-sensitive) as it is stored.\n", Get},
    {"set", "FILE KEY VALUE",
     "Gives KEY the value VALUE, adding the record at the end when KEY is absent. The file is created\n"
     "when missing and replaced atomically; a file that does not parse is left alone.\n",
     Set},
    {"remove", "FILE KEY", "Removes the first record with KEY and rewrites the file atomically.\n", Remove},
};

const Command* FindCommand(const char* name) {
    for (const Command& command : kCommands) {
        if (std::strcmp(command.name, name) == 0)
            return &command;
    }
    return nullptr;
}

bool IsHelp(const char* argument) {
    return std::strcmp(argument, "--help") == 0 || std::strcmp(argument, "-h") == 0;
}

std::vector<std::string> Words(const char* text) {
    std::istringstream split(text);
    return std::vector<std::string>(std::istream_iterator<std::string>(split),
                                    std::istream_iterator<std::string>());
}

// The location of `path`, made absolute; an empty location, reported, when it cannot be.
XN_Location AbsoluteLocation(const char* path) {
    XN_Location location;
    if (*path == '\0') {
        Fail("the file name is empty");
        return location;
    }
    std::filesystem::path absolute(path);
    if (absolute.is_relative()) {
        std::vector<char> folder(PATH_MAX + 1);
        if (getcwd(folder.data(), folder.size()) == nullptr) {
            Fail(std::string("cannot tell where \"") + path +
                 "\" is: the working folder: " + std::strerror(errno));
            return location;
        }
        absolute = std::filesystem::path(folder.data()) / absolute;
    }
    const XN_String text = FromUtf8(absolute.lexically_normal().string().c_str());
    if (text.IsNull())
        Fail(std::string("the path \"") + path + "\" is not valid UTF-8");
    else
        location.Set(text);
    return location;
}

int Run(int argc, char** argv) {
    if (argc < 2)
        return std::cerr << kUsage, 2;
    if (IsHelp(argv[1]))
        return std::cout << kUsage, 0;
    const Command* command = FindCommand(argv[1]);
    if (command == nullptr)
        return std::cerr << "xn-settings: unknown command \"" << argv[1] << "\"\n" << kUsage, 2;
    const std::string usage =
        std::string("usage: xn-settings ") + command->name + " " + command->operands + "\n";
    for (int i = 2; i < argc; ++i) {
        if (IsHelp(argv[i]))
            return std::cout << usage << command->help, 0;
    }
    const std::vector<std::string> operands = Words(command->operands);
    const size_t given = static_cast<size_t>(argc - 2);
    if (given != operands.size())
        return std::cerr << "xn-settings: " << command->name << ": "
                         << (given < operands.size() ? "missing " + operands[given] : "too many arguments")
                         << "\n"
                         << usage,
               2;
    const XN_Location file = AbsoluteLocation(argv[2]);
    if (file.IsNull())
        return 2;
    return command->run(file, argv + 3);
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, ""); // the store's 8-bit encoding follows the locale, as in the add-ons
    int code = 2;
    try {
        code = Run(argc, argv);
    } catch (const std::exception& e) {
        std::cerr << "xn-settings: " << e.what() << "\n";
    } catch (...) {
        std::cerr << "xn-settings: an unexpected failure\n";
    }
    // Output that could not be written (a full disk) is a failure, not a quiet success.
    std::cout.flush();
    if (!std::cout || std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::cerr << "xn-settings: cannot write the output: " << std::strerror(errno) << "\n";
        return 2;
    }
    return code;
}
