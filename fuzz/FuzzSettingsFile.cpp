// The settings and marker reader over any plain image: it must end in records or in a malformed
// record at an offset inside the image, and a record it reads must have a key.
#include "XN_SettingsFile.hpp"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > XN_SETTINGS_IMAGE_MAX)
        return 0;
    // The reader's own buffer: the image then its 0 end mark.
    std::string image(reinterpret_cast<const char*>(data), size);
    image.push_back('\0');
    XN_List<XN_Setting> records;
    unsigned long badOffset = ~0UL;
    const bool parsed = XN_SettingsFile_ParseImage(image.data(), size, records, &badOffset);
    if (!parsed && badOffset > size)
        std::abort();
    for (long i = 0; i < records.GetCount(); ++i)
        if (records[i].key.GetLength() == 0)
            std::abort();
    if (records.GetCount() > 0 && XN_SettingsFile_IndexOf(records, records[0].key) != 0)
        std::abort();
    // What was read can be written again, and the scrambling is its own inverse.
    std::string rebuilt;
    if (XN_SettingsFile_BuildImage(records, rebuilt) && !rebuilt.empty()) {
        const std::string plain = rebuilt;
        XN_SettingsFile_ExchangeHalves(&rebuilt[0], rebuilt.size());
        XN_SettingsFile_ExchangeHalves(&rebuilt[0], rebuilt.size());
        if (rebuilt != plain)
            std::abort();
    }
    return 0;
}
