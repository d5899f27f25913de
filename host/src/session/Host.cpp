#include "AddonCalls.hpp"
#include "HostImpl.hpp"

#include "achost/ElfFile.hpp"

#include <dlfcn.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace achost {

namespace {

Host* sCurrent = nullptr;

std::string Hex(GSErrCode code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
    return text;
}

// An entry point's error as a person can look it up: the code, and the interface's name and meaning
// for the codes the host itself answers.
std::string ErrorText(GSErrCode code) {
    static const std::pair<GSErrCode, const char*> kNames[] = {
        {APIERR_GENERAL, "APIERR_GENERAL, a general failure"},
        {APIERR_MEMFULL, "APIERR_MEMFULL, out of memory"},
        {APIERR_CANCEL, "APIERR_CANCEL, cancelled"},
        {APIERR_BADID, "APIERR_BADID, a resource, menu or item ID that does not exist"},
        {APIERR_BADINDEX, "APIERR_BADINDEX, an index out of range"},
        {APIERR_BADNAME, "APIERR_BADNAME, a bad name"},
        {APIERR_BADPARS, "APIERR_BADPARS, bad parameters"},
        {APIERR_NOLIB, "APIERR_NOLIB, no such library"},
        {APIERR_NOTINIT, "APIERR_NOTINIT, called before its time"},
        {APIERR_NOTSUPPORTED, "APIERR_NOTSUPPORTED, not supported"},
        {APIERR_REFUSEDCMD, "APIERR_REFUSEDCMD, refused in this state"},
        {APIERR_REFUSEDPAR, "APIERR_REFUSEDPAR, a refused parameter"},
    };
    for (const auto& [known, name] : kNames)
        if (code == known)
            return Hex(code) + " (" + name + ")";
    return Hex(code);
}

// Splits "Text^G^M^32601" into the text and the flags its control suffixes ask for.
MenuItem ParseMenuItem(const std::string& source) {
    MenuItem item;
    const size_t caret = source.find('^');
    item.text = source.substr(0, caret);
    for (size_t at = caret; at != std::string::npos; at = source.find('^', at + 1)) {
        const char code = at + 1 < source.size() ? source[at + 1] : '\0';
        item.flags |= code == 'G' ? API_MenuItemDisabled : code == 'M' ? API_MenuItemChecked : 0;
    }
    return item;
}

template <typename T>
bool Resolve(void* handle, const char* name, T* entry, std::string* missing) {
    *entry = reinterpret_cast<T>(dlsym(handle, name));
    if (*entry == nullptr)
        *missing += std::string(missing->empty() ? "" : ", ") + name;
    return *entry != nullptr;
}

} // namespace

bool Host::Impl::Allow(const char* call, std::initializer_list<Phase> allowed) {
    for (Phase p : allowed)
        if (p == phase)
            return true;
    static const char* const kPhaseNames[] = {
        "while the add-on is not loaded", "in CheckEnvironment", "in RegisterInterface", "in Initialize",
        "outside any entry point",        "in a menu command",   "in FreeData"};
    Violation(std::string(call) + ": not allowed " + kPhaseNames[static_cast<int>(phase)]);
    return false;
}

void Host::Impl::Violation(const std::string& message) {
    violations.push_back(message);
    if (options.onViolation)
        options.onViolation(message);
    else
        std::cerr << "achost: add-on error: " << message << "\n";
}

Menu* Host::Impl::MenuFor(short resID) {
    const auto known = menus.find(resID);
    if (known != menus.end())
        return &known->second;
    const auto strings = resources.Strings(resID);
    if (!strings || strings->empty())
        return nullptr;
    Menu menu;
    menu.resID = resID;
    const bool hasTitle = strings->size() > 1;
    menu.title = hasTitle ? ParseMenuItem(strings->front()).text : std::string();
    for (size_t i = hasTitle ? 1 : 0; i < strings->size(); ++i)
        menu.items.push_back(ParseMenuItem((*strings)[i]));
    return &menus.emplace(resID, std::move(menu)).first->second;
}

// The file exactly as named: without a slash the dynamic loader would search its library path.
std::string Host::Impl::LoadPath() const {
    return path.find('/') == std::string::npos ? "./" + path : path;
}

bool Host::Impl::Open(std::string* error) {
    handle = dlopen(LoadPath().c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        *error = "cannot load " + path + ": " + dlerror();
        return false;
    }
    std::string missing;
    // Every entry point is looked up, so that the message names all that are missing.
    int found = Resolve(handle, "CheckEnvironment", &entries.checkEnvironment, &missing);
    found += Resolve(handle, "RegisterInterface", &entries.registerInterface, &missing);
    found += Resolve(handle, "Initialize", &entries.initialize, &missing);
    found += Resolve(handle, "FreeData", &entries.freeData, &missing);
    if (found != 4) {
        *error = path + " is not an add-on: it does not export " + missing;
        Close();
        return false;
    }
    return true;
}

bool Host::Impl::Initialize(std::string* error) {
    ++loadCount;
    keepInMemory = false;
    phase = Phase::Initialize;
    const GSErrCode result = AddonCall::Run("Initialize", [&] { return entries.initialize(); });
    phase = Phase::Idle;
    if (result != NoError) {
        *error = "Initialize of " + path + " failed with error " + ErrorText(result);
        Unload();
        return false;
    }
    return true;
}

bool Host::Impl::Load(std::string* error) {
    return Open(error) && Initialize(error);
}

void Host::Impl::Close() {
    dlclose(handle);
    handle = nullptr;
    phase = Phase::Unloaded;
}

void Host::Impl::Unload() {
    if (handle == nullptr)
        return;
    CloseAllDialogs();
    phase = Phase::FreeData;
    AddonCall::Run("FreeData", [&] { return entries.freeData(); });
    handlers.clear();
    Close();
    // A library that stays mapped keeps its statics, so the next load would not start afresh.
    if (void* still = dlopen(LoadPath().c_str(), RTLD_NOW | RTLD_NOLOAD)) {
        dlclose(still);
        Violation("dlclose: " + path + " stays in memory (a thread_local object with a destructor holds it)");
    }
}

Host::Host(HostOptions options) : impl(std::make_unique<Impl>(std::move(options))) {
    impl->session.host = this;
    if (sCurrent != nullptr)
        impl->Violation("achost::Host: a second host was created while another one is running");
    sCurrent = this;
    std::string error;
    for (const std::string& folder : impl->options.libraries)
        if (!AddLibrary(folder, &error))
            impl->Violation("achost::Host: HostOptions::libraries: " + error);
    for (const std::string& name : impl->options.missing)
        AddMissingDefinition(name);
}

Host::~Host() {
    Quit();
    if (sCurrent == this)
        sCurrent = nullptr;
}

Host* Host::Current() {
    return sCurrent;
}

bool Host::Start(const std::string& path, std::string* error) {
    Quit();
    Impl& s = *impl;
    Session session = s.session; // the options, the session and the libraries outlive a host run
    std::shared_ptr<LibraryState> library = s.library;
    s = Impl(std::move(s.options));
    s.session = session;
    s.library = library;
    s.path = path;
    char absolute[PATH_MAX];
    s.ownPath = realpath(path.c_str(), absolute) != nullptr ? absolute : "";
    ElfFile file;
    if (!file.Open(path, error))
        return false;
    std::string image, problem;
    const bool hasResources = file.Section(kResourceSectionName, &image);
    if (hasResources && !ResourceSet::FromImage(image, &s.resources, &problem)) {
        *error = "the resources embedded in " + path + " are damaged: " + problem;
        return false;
    }
    if (!s.Open(error))
        return false;
    API_EnvirParams envir;
    std::memset(&envir, 0, sizeof envir);
    ACAPI_GetReleaseNumber(&envir.serverInfo);
    envir.serverInfo.serverApplication = s.options.hostKind;
    s.phase = Phase::CheckEnvironment;
    AddonCall::SetAddon(path);
    const API_AddonType type =
        AddonCall::Run("CheckEnvironment", [&] { return s.entries.checkEnvironment(&envir); });
    s.phase = Phase::Idle;
    s.name.assign(envir.addOnInfo.name, strnlen(envir.addOnInfo.name, sizeof envir.addOnInfo.name));
    s.description.assign(envir.addOnInfo.description,
                         strnlen(envir.addOnInfo.description, sizeof envir.addOnInfo.description));
    if (type <= APIAddon_DontRegister || type > APIAddon_Customizing) {
        *error = path + " did not register: CheckEnvironment answered " + std::to_string(type);
        s.Close();
        return false;
    }
    s.phase = Phase::RegisterInterface;
    const GSErrCode registered =
        AddonCall::Run("RegisterInterface", [&] { return s.entries.registerInterface(); });
    s.phase = Phase::Idle;
    if (registered != NoError) {
        *error = "RegisterInterface of " + path + " failed with error " + ErrorText(registered);
        if (!hasResources)
            *error += ": the add-on carries no resources (its library has no " +
                      std::string(kResourceSectionName) + " section), so none of its menus and texts exist";
        s.Close();
        s.menus.clear();
        return false;
    }
    s.started = s.Initialize(error);
    if (!s.started)
        s.menus.clear();
    return s.started;
}

void Host::Quit() {
    impl->Unload();
    impl->started = false;
    impl->menus.clear();
}

bool Host::Reload(std::string* error) {
    const std::string path = impl->path;
    const int loads = impl->loadCount;
    const bool ok = Start(path, error);
    impl->loadCount += loads;
    return ok;
}

bool Host::ChooseMenuItem(short menuResID, Int32 itemIndex, std::string* error) {
    Impl& s = *impl;
    if (!s.started) {
        *error = "no add-on is running";
        return false;
    }
    const Menu* menu = s.MenuFor(menuResID);
    if (menu == nullptr) {
        *error = "the add-on has no menu " + std::to_string(menuResID);
        return false;
    }
    if (itemIndex < 1 || static_cast<size_t>(itemIndex) > menu->items.size()) {
        *error = "menu " + std::to_string(menuResID) + " has no item " + std::to_string(itemIndex);
        return false;
    }
    if ((menu->items[itemIndex - 1].flags & API_MenuItemDisabled) != 0) {
        *error =
            "item " + std::to_string(itemIndex) + " of menu " + std::to_string(menuResID) + " is disabled";
        return false;
    }
    if (s.handle == nullptr && !s.Load(error))
        return false;
    const auto handler = s.handlers.find(menuResID);
    if (handler != s.handlers.end()) {
        API_MenuParams params;
        std::memset(&params, 0, sizeof params);
        params.menuItemRef.menuResID = menuResID;
        params.menuItemRef.itemIndex = itemIndex;
        s.phase = Phase::Command;
        AddonCall::Run("menu command " + std::to_string(menuResID) + " item " + std::to_string(itemIndex),
                       [&] { return handler->second(&params); });
        s.phase = Phase::Idle;
    }
    if (!s.keepInMemory) {
        if (!s.dialogs.empty())
            s.Violation("ACAPI_KeepInMemory: the add-on left a dialog open and was not kept in memory");
        s.Unload();
    }
    return true;
}

bool Host::ChooseMenuItem(Int32 itemIndex, std::string* error) {
    const Menu* menu = RegisteredMenu();
    if (menu == nullptr) {
        *error = "the add-on registered no menu";
        return false;
    }
    return ChooseMenuItem(menu->resID, itemIndex, error);
}

bool Host::IsStarted() const {
    return impl->started;
}
bool Host::IsLoaded() const {
    return impl->handle != nullptr;
}
int Host::LoadCount() const {
    return impl->loadCount;
}
const std::string& Host::AddonPath() const {
    return impl->path;
}
const std::string& Host::AddonName() const {
    return impl->name;
}
const std::string& Host::AddonDescription() const {
    return impl->description;
}
bool Host::BuiltInLibraryRegistered() const {
    return impl->builtInLibrary;
}
const ResourceSet& Host::Resources() const {
    return impl->resources;
}
int Host::ResourceStringReads() const {
    return impl->stringReads;
}
const std::vector<std::string>& Host::Violations() const {
    return impl->violations;
}

void Host::DeclareCommand(const DeclaredCommand& command) {
    impl->options.commands.push_back(command);
}

bool ParseDeclaredCommand(const std::string& text, DeclaredCommand* result) {
    unsigned long long developer = 0, local = 0;
    long version = 1;
    char command[5] = {};
    int used = 0;
    const int fields = std::sscanf(text.c_str(), "%llu:%llu:%4c%n:%ld%n", &developer, &local, command, &used,
                                   &version, &used);
    const bool complete = (fields == 3 || fields == 4) && static_cast<size_t>(used) == text.size();
    if (!complete || developer > 0xFFFFFFFFull || local > 0xFFFFFFFFull || std::strlen(command) != 4 ||
        version < 1 || version > INT32_MAX || text[0] == '-')
        return false;
    result->module.developerID = static_cast<GSType>(developer);
    result->module.localID = static_cast<GSType>(local);
    result->command = (GSType(UInt8(command[0])) << 24) | (GSType(UInt8(command[1])) << 16) |
                      (GSType(UInt8(command[2])) << 8) | GSType(UInt8(command[3]));
    result->version = static_cast<Int32>(version);
    return true;
}

std::vector<const Dialog*> Host::Dialogs() const {
    std::vector<const Dialog*> result;
    for (const auto& entry : impl->dialogs)
        result.push_back(&entry.second->view);
    return result;
}

const Dialog* Host::FrontDialog() const {
    const OpenDialog* front = impl->Front();
    return front != nullptr ? &front->view : nullptr;
}

const Alert* Host::OpenAlert() const {
    return impl->alert ? &*impl->alert : nullptr;
}

std::vector<const Menu*> Host::Menus() const {
    std::vector<const Menu*> result;
    for (const auto& entry : impl->menus)
        result.push_back(&entry.second);
    return result;
}

const Menu* Host::FindMenu(short menuResID) const {
    const auto found = impl->menus.find(menuResID);
    return found == impl->menus.end() ? nullptr : &found->second;
}

const Menu* Host::RegisteredMenu() const {
    for (const auto& entry : impl->menus)
        if (entry.second.registered)
            return &entry.second;
    return nullptr;
}

std::string Host::PositionName(APIMenuCodeID position) {
    static const char* const kNames[] = {"",
                                         "File",
                                         "Edit",
                                         "Edit",
                                         "Edit",
                                         "Design",
                                         "Options",
                                         "Options",
                                         "Document",
                                         "Document",
                                         "Teamwork",
                                         "View",
                                         "Window > Palettes",
                                         "Design > Design Extras",
                                         "File > External Content",
                                         "File > Libraries and Objects",
                                         "View > 3D View Mode",
                                         "Document > Documenting Tools",
                                         "File > Interoperability"};
    const auto index = static_cast<size_t>(position);
    return index < sizeof kNames / sizeof kNames[0] ? kNames[index] : "?";
}

} // namespace achost
