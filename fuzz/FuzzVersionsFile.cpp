// The versions-file parser over any downloaded body, decoded and split as the update check does;
// every skipped line it reports must be a line of the file.
#include "XN_AddonUpdate_Versions.hpp"

#include <cstdint>
#include <cstdlib>

namespace {

void CheckSkipped(long index, const XN_String& /*line*/, XN_AddonUpdate_SkipReason reason, void* userData) {
    const long lineCount = *static_cast<const long*>(userData);
    if (index < 0 || index >= lineCount || XN_AddonUpdate_SkipReasonText(reason) == nullptr)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 1 << 16)
        return 0;
    XN_String text;
    XN_String::TextToString(text, reinterpret_cast<const char*>(data), static_cast<unsigned int>(size), false,
                            XN_String::Encoding_UTF8);
    XN_List<XN_String> lines;
    text.SplitLines(lines, true, true);
    long lineCount = lines.GetCount();
    XN_List<XN_AddonUpdate_Message> messages;
    XN_List<XN_AddonUpdate_Addon> addons;
    XN_List<XN_AddonUpdate_Library> libraries;
    XN_AddonUpdate_ParseVersionsLines(lines, messages, addons, libraries, CheckSkipped, &lineCount);
    if (messages.GetCount() + addons.GetCount() + libraries.GetCount() > lineCount)
        std::abort();
    return 0;
}
