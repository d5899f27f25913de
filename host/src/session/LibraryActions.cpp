// What a session sets up and expects of the host's libraries, and the Host's library calls.
#include "Folder.hpp"
#include "HostImpl.hpp"
#include "achost/FrontEnd.hpp"

#include <cstdio>
#include <filesystem>
#include <ostream>

namespace achost {

namespace {

std::string Hex(GSErrCode code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
    return text;
}

// The reason a folder cannot be added, after the manager's code.
std::string Refusal(const std::string& folder, GSErrCode code) {
    const char* reason = code == IO::Folder::FolderNotFound ? "there is no such folder"
                         : code == IO::Folder::NotAFolder   ? "it is not a folder"
                         : code == IO::Folder::AccessDenied ? "it cannot be read"
                                                            : "the path is empty";
    return Quoted(folder) + " cannot be a library: " + reason + " (" + Hex(code) + ")";
}

std::string Listed(const std::vector<std::string>& folders) {
    std::string text;
    for (const std::string& folder : folders)
        text += (text.empty() ? "" : " ") + Quoted(folder);
    return text.empty() ? "none" : text;
}

bool ExpectLibraries(const Host::Impl& s, const Action& action, std::string* message) {
    std::vector<std::string> expected, seen;
    std::error_code ignored;
    for (const std::string& folder : action.texts) {
        std::string path = std::filesystem::absolute(folder, ignored).lexically_normal().string();
        if (path.size() > 1 && path.back() == '/')
            path.pop_back();
        expected.push_back(path);
    }
    for (const ActiveLibrary& library : s.library->manager.Folders())
        seen.push_back(library.folder);
    if (seen == expected)
        return true;
    *message = "expected libraries " + Listed(expected) + ", saw " + Listed(seen);
    return false;
}

} // namespace

bool IsLibraryVerb(Verb verb) {
    return verb == Verb::Library || verb == Verb::Missing || verb == Verb::Libraries ||
           verb == Verb::ExpectLibraries;
}

bool PerformOnLibraries(Host::Impl& s, const Action& action, std::string* message) {
    switch (action.verb) {
    case Verb::Library:
        return s.session.host->AddLibrary(action.texts[0], message);
    case Verb::Missing:
        if (action.texts[0].empty()) {
            *message = "a missing definition needs a name";
            return false;
        }
        s.session.host->AddMissingDefinition(action.texts[0]);
        return true;
    case Verb::ExpectLibraries:
        return ExpectLibraries(s, action, message);
    default: // Verb::Libraries: the terminal lists them; nothing to do in a script
        return true;
    }
}

void WriteLibraries(std::ostream& out, const Host& host) {
    const LibraryManager& manager = host.Library();
    const auto& folders = manager.Folders();
    const std::vector<std::string> active = host.ActiveLibraries();
    out << "active libraries:" << (active.empty() ? " none" : "") << "\n";
    for (size_t i = 0; i < active.size(); ++i) {
        out << "  " << (i + 1) << " " << active[i];
        if (i < folders.size())
            out << " (" << folders[i].parts << (folders[i].parts == 1 ? " part)" : " parts)") << "\n";
        else
            out << " (built into the add-on)\n";
    }
    std::string missing;
    for (Int32 index = 1; const LibraryPart* part = manager.Get(index); ++index)
        if (part->missing && manager.Find(reinterpret_cast<const GS::uchar_t*>(part->name.c_str()),
                                          API_ZombieLibID) == part) // no active part took the name
            missing += " " + Quoted(GS::UniString(reinterpret_cast<const GS::uchar_t*>(part->name.c_str()),
                                                  static_cast<USize>(part->name.size()))
                                        .ToUTF8());
    if (!missing.empty())
        out << "missing definitions:" << missing << "\n";
}

bool Host::AddLibrary(const std::string& folder, std::string* error) {
    const GSErrCode code = impl->library->manager.AddFolder(folder);
    if (code != NoError)
        *error = Refusal(folder, code);
    return code == NoError;
}

void Host::AddMissingDefinition(const std::string& name) {
    impl->library->manager.AddMissing(name);
}

std::vector<std::string> Host::ActiveLibraries() const {
    std::vector<std::string> active;
    for (const ActiveLibrary& library : impl->library->manager.Folders())
        active.push_back(library.folder);
    if (impl->builtInLibrary)
        active.push_back(impl->ownPath);
    return active;
}

const LibraryManager& Host::Library() const {
    return impl->library->manager;
}

int Host::LibraryAdditions() const {
    return impl->library->additions;
}

} // namespace achost
