#include "XN_AddonSettings.hpp"

#include "XN_SettingsFile.hpp"
#include "sett_Addon.hpp"

#include "FileSystem.hpp"
#include "Location.hpp"

namespace {

// Name of the file shared by every add-on of the suite.
const char* const kAllAddonsFileBase = "Quillane";
const char* const kSettingsFileExtension = ".cfg";

struct Store {
    XN_List<XN_Setting> records;
    bool loaded = false;
};

const unsigned short kNoUnits[1] = {0};

Store sAddonSettings;
Store sAllAddonsSettings;

Store& StoreOf(XN_AddonSettings_Type type) {
    return type == XN_AddonSettings_Addon ? sAddonSettings : sAllAddonsSettings;
}

// Get, then the value parsed by `parse` into *value (when non-null).
template <typename Number, typename Parsed>
bool GetNumber(XN_AddonSettings_Type type, const XN_String& key, Number* value, bool load,
               Parsed (*parse)(const char*)) {
    XN_String text;
    if (!XN_AddonSettings_Get(type, key, &text, load))
        return false;
    if (value != nullptr)
        *value = static_cast<Number>(parse(text.ToCStr().Get()));
    return true;
}

} // namespace

// Both texts start as the empty string (not the null string).
XN_Setting::XN_Setting() : key(kNoUnits), value(kNoUnits) {}

XN_Setting::XN_Setting(const XN_String& key, const XN_String& value) : key(key), value(value) {}

GSErrCode XN_AddonSettings_GetFolder(XN_Location& folder) {
    IO::Location shared;
    const GSErrCode err = IO::fileSystem.GetSpecialLocation(IO::FileSystem::CommonDocuments, &shared);
    if (err == NoError)
        folder.Set(shared);
    return err;
}

GSErrCode XN_AddonSettings_GetLocation(XN_AddonSettings_Type type, XN_Location& location) {
    XN_Location folder;
    const GSErrCode err = XN_AddonSettings_GetFolder(folder);
    if (err != NoError)
        return err;
    const char* base = type == XN_AddonSettings_Addon ? sett_ADDON_SETTINGS_FILE_NAME : kAllAddonsFileBase;
    location.Set(folder + "/" + base + kSettingsFileExtension);
    return NoError;
}

bool XN_AddonSettings_Load(XN_AddonSettings_Type type, bool onlyIfNotLoaded) {
    Store& store = StoreOf(type);
    if (onlyIfNotLoaded && store.loaded)
        return true;
    store.records.Reset();
    XN_Location file;
    if (XN_AddonSettings_GetLocation(type, file) != NoError)
        return false;
    const XN_SettingsFile_Status status = XN_SettingsFile_Read(file, store.records);
    // The store will be written back with only the records read (those before the fault, or those
    // within the size limit), for every add-on of the suite: keep the file as it was first.
    if (status == XN_SettingsFile_Malformed || status == XN_SettingsFile_TooLarge)
        XN_SettingsFile_KeepCopy(file);
    if (status != XN_SettingsFile_OK)
        return false;
    // A list the host gave no memory to is inert and holds nothing of the file.
    if (store.records.data == nullptr)
        return false;
    store.loaded = true;
    return true;
}

bool XN_AddonSettings_Save(XN_AddonSettings_Type type) {
    // An inert list lost its records when the host refused it memory: written, it would empty the file.
    if (StoreOf(type).records.data == nullptr)
        return false;
    XN_Location file;
    if (XN_AddonSettings_GetLocation(type, file) != NoError)
        return false;
    return XN_SettingsFile_Write(file, StoreOf(type).records);
}

bool XN_AddonSettings_Get(XN_AddonSettings_Type type, XN_String key, XN_String* value, bool load) {
    Store& store = StoreOf(type);
    if (!store.loaded && load && !XN_AddonSettings_Load(type, true))
        return false;
    const long index = XN_SettingsFile_IndexOf(store.records, key);
    if (index < 0)
        return false;
    if (value != nullptr)
        *value = store.records[index].value;
    return true;
}

XN_String XN_AddonSettings_Get(XN_AddonSettings_Type type, XN_String key, bool load) {
    XN_String value;
    if (!XN_AddonSettings_Get(type, key, &value, load))
        return XN_String("");
    return value;
}

bool XN_AddonSettings_GetLong(XN_AddonSettings_Type type, XN_String key, long* value, bool load) {
    return GetNumber(type, key, value, load, XN_String::ToLong);
}

long XN_AddonSettings_GetLong(XN_AddonSettings_Type type, XN_String key, bool load) {
    return static_cast<long>(XN_String::ToLong(XN_AddonSettings_Get(type, key, load).ToCStr().Get()));
}

bool XN_AddonSettings_GetDouble(XN_AddonSettings_Type type, XN_String key, double* value, bool load) {
    return GetNumber(type, key, value, load, XN_String::ToDouble);
}

double XN_AddonSettings_GetDouble(XN_AddonSettings_Type type, XN_String key, bool load) {
    return XN_String::ToDouble(XN_AddonSettings_Get(type, key, load).ToCStr().Get());
}

bool XN_AddonSettings_Set(XN_AddonSettings_Type type, XN_String key, XN_String value, bool create) {
    if (!XN_SettingsFile_IsStorableKey(key))
        return false;
    Store& store = StoreOf(type);
    const long index = XN_SettingsFile_IndexOf(store.records, key);
    if (index >= 0)
        store.records[index].value = value;
    else if (create)
        store.records.AddData(XN_Setting(key, value), -1);
    return true;
}

bool XN_AddonSettings_SetLong(XN_AddonSettings_Type type, XN_String key, long value, bool create) {
    return XN_AddonSettings_Set(type, key, XN_String::LongToString(value, 0), create);
}

bool XN_AddonSettings_SetDouble(XN_AddonSettings_Type type, XN_String key, double value, bool create) {
    return XN_AddonSettings_Set(type, key, XN_String::DoubleToString(value, 0, 0), create);
}

bool XN_AddonSettings_LoadSetSave(XN_AddonSettings_Type type, XN_String key, XN_String value, bool create) {
    XN_AddonSettings_Load(type, true);
    return XN_AddonSettings_Set(type, key, value, create) && XN_AddonSettings_Save(type);
}

bool XN_AddonSettings_Remove(XN_AddonSettings_Type type, XN_String key) {
    Store& store = StoreOf(type);
    const long index = XN_SettingsFile_IndexOf(store.records, key);
    if (index < 0)
        return false;
    store.records.DeleteData(index);
    return true;
}

void XN_AddonSettings_Clear(XN_AddonSettings_Type type) {
    StoreOf(type).records.Reset();
}

long XN_AddonSettings_GetCount(XN_AddonSettings_Type type) {
    return StoreOf(type).records.GetCount();
}

bool XN_AddonSettings_Get(XN_AddonSettings_Type type, long index, XN_String* key, XN_String* value) {
    const Store& store = StoreOf(type);
    if (index < 0 || index >= store.records.GetCount())
        return false;
    if (key != nullptr)
        *key = store.records[index].key;
    if (value != nullptr)
        *value = store.records[index].value;
    return true;
}
