// What a session sets up and expects of the host's environment (the open project, the rendering
// engines, what was opened on the desktop) and how the user answers a file dialog.
#include "HostImpl.hpp"

#include <algorithm>

#include <unistd.h>

namespace achost {

namespace {

// A relative answer is taken from the dialog's folder when it has one, else from the working
// directory.
std::string AbsolutePath(const std::string& path, const FileRequest& request) {
    if (!path.empty() && path[0] == '/')
        return path;
    std::string base = request.folder;
    if (base.empty()) {
        char cwd[4096];
        base = getcwd(cwd, sizeof cwd) != nullptr ? cwd : "/";
    }
    return base + (base.back() == '/' ? "" : "/") + path;
}

// The keyword (not the quoted text) `word` in the action's last position.
bool IsKeyword(const Action& action, const std::string& word) {
    return action.texts.back() == word && action.source.find('"') == std::string::npos;
}

// `answer save` answers a file dialog, `answer folder` a folder dialog.
bool AnswerFileDialog(Host::Impl& s, const Action& action, std::string* message) {
    const bool folder = action.verb == Verb::AnswerFolder;
    const char* kind = folder ? "folder" : "save";
    if (!s.fileRequest || s.fileAnswer || (s.fileRequest->kind == "folder") != folder) {
        *message = "'" + action.source + "' needs an open " + kind + " dialog, and none is open";
        return false;
    }
    if (IsKeyword(action, "cancel"))
        s.fileAnswer.emplace(std::nullopt);
    else if (action.texts[0].empty()) {
        *message = std::string("a ") + kind + " dialog's answer is a path or cancel";
        return false;
    } else
        s.fileAnswer.emplace(AbsolutePath(action.texts[0], *s.fileRequest));
    return true;
}

bool ExpectOpened(const Host::Impl& s, const Action& action, std::string* message) {
    for (const std::string& target : s.opened)
        if (target.find(action.texts[0]) != std::string::npos)
            return true;
    std::string seen;
    for (const std::string& target : s.opened)
        seen += (seen.empty() ? "" : ", ") + Quoted(target);
    *message = "expected something opened containing " + Quoted(action.texts[0]) + ", saw " +
               (seen.empty() ? "nothing opened" : seen);
    return false;
}

bool ExpectEngine(const Host::Impl& s, const Action& action, std::string* message) {
    const auto& engines = s.options.engines;
    const std::string seen = s.currentEngine >= 1 && static_cast<size_t>(s.currentEngine) <= engines.size()
                                 ? engines[static_cast<size_t>(s.currentEngine) - 1]
                                 : std::string();
    if (seen == action.texts[0])
        return true;
    *message = "expected the current engine " + Quoted(action.texts[0]) + ", saw " + Quoted(seen);
    return false;
}

} // namespace

bool IsEnvironmentVerb(Verb verb) {
    return verb == Verb::Project || verb == Verb::ExpectEngine || verb == Verb::ExpectOpened ||
           verb == Verb::AnswerSave || verb == Verb::AnswerFolder;
}

bool PerformOnEnvironment(Host::Impl& s, const Action& action, std::string* message) {
    switch (action.verb) {
    case Verb::Project:
        s.options.project = IsKeyword(action, "untitled") ? std::string() : action.texts[0];
        return true;
    case Verb::ExpectEngine:
        return ExpectEngine(s, action, message);
    case Verb::ExpectOpened:
        return ExpectOpened(s, action, message);
    default: // Verb::AnswerSave, Verb::AnswerFolder
        return AnswerFileDialog(s, action, message);
    }
}

std::optional<std::string> Host::Impl::RunFileDialog(FileRequest request) {
    fileRequest = std::move(request);
    fileAnswer.reset();
    while (!fileAnswer)
        if (!Step())
            fileAnswer.emplace(std::nullopt);
    std::optional<std::string> answer = *fileAnswer;
    fileRequest.reset();
    fileAnswer.reset();
    return answer;
}

void Host::SetProject(const std::string& path) {
    impl->options.project = path;
}
int Host::CurrentEngine() const {
    return impl->currentEngine;
}
int Host::EngineChanges() const {
    return impl->engineChanges;
}
const std::vector<std::string>& Host::Opened() const {
    return impl->opened;
}

bool Host::OpenFailed(size_t index) const {
    const auto& failures = impl->openFailures;
    return std::find(failures.begin(), failures.end(), index) != failures.end();
}
const FileRequest* Host::OpenFileDialog() const {
    return impl->fileRequest ? &*impl->fileRequest : nullptr;
}

} // namespace achost
