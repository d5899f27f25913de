#include "XN_SettingsFile.hpp"

#include "XN_File.hpp"

#include "File.hpp"

#include <cstdio>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace {

const char kRecordStart = '$';
const char kContinuation = '#';
const char kLF = 0x0A;
const char kCR = 0x0D;

// The text in the default 8-bit encoding, up to its first zero byte, into `bytes`. Every 8-bit
// encoding the system uses extends ASCII, so ASCII text is copied without the converter.
void EightBit(const XN_String& text, std::string& bytes) {
    bytes.clear();
    const unsigned short* units = text.GetBuffer();
    for (unsigned int i = 0; i < text.GetLength() && units[i] != 0; ++i) {
        if (units[i] >= 0x80) {
            const XN_CString converted = text.ToCStr(XN_String::Encoding_SystemDefault);
            bytes.assign(converted.Get() != nullptr ? converted.Get() : "");
            return;
        }
        bytes += static_cast<char>(units[i]);
    }
}

// Appends `bytes` with "#" after every line break (CR LF counts as one).
void AppendValueBytes(const std::string& bytes, std::string& image) {
    std::string::size_type run = 0;
    for (std::string::size_type i = 0; i < bytes.size(); ++i) {
        const bool lineBreak =
            bytes[i] == kLF || (bytes[i] == kCR && (i + 1 == bytes.size() || bytes[i + 1] != kLF));
        if (lineBreak) {
            image.append(bytes, run, i + 1 - run);
            image += kContinuation;
            run = i + 1;
        }
    }
    image.append(bytes, run, std::string::npos);
}

// Length of the line break at p (2 for CR LF, 1 for LF or a lone CR), 0 when there is none.
unsigned long LineBreakAt(const char* p) {
    if (*p == kCR)
        return p[1] == kLF ? 2 : 1;
    return *p == kLF ? 1 : 0;
}

void AppendDecoded(XN_String& text, const char* bytes, unsigned long count) {
    if (count > 0)
        XN_String::CStringToXN_String(text, bytes, static_cast<unsigned int>(count),
                                      XN_String::Encoding_SystemDefault, true);
}

// Parses one record at `pos` into `record`, whose value must be empty. Returns 1 with `pos` at the next
// record, 0 when the image ends inside the record (dropped), -1 when the record is malformed (`pos` at the
// offending byte).
int ParseRecord(const char* bytes, unsigned long size, unsigned long& pos, XN_Setting& record) {
    if (bytes[pos] != kRecordStart || pos + 1 >= size)
        return -1;
    const char* keyStart = bytes + pos + 1;
    const void* colon = std::memchr(keyStart, ':', size - pos - 1);
    if (colon == nullptr || colon == keyStart)
        return -1;
    const unsigned long keyLength = static_cast<const char*>(colon) - keyStart;
    record.key = XN_String(keyStart, static_cast<unsigned int>(keyLength), XN_String::Encoding_SystemDefault);
    // The byte after ":" is skipped whatever it is.
    unsigned long segment = pos + 1 + keyLength + 2;
    unsigned long scan = segment;
    bool afterContinuation = false;
    for (;;) {
        while (scan < size && LineBreakAt(bytes + scan) == 0)
            ++scan;
        if (scan >= size)
            return 0;
        const unsigned long next = scan + LineBreakAt(bytes + scan);
        const bool endsRecord = next == size || bytes[next] == kRecordStart;
        if (afterContinuation && scan == segment && !endsRecord) {
            // The byte right after "#" joins the segment unexamined, so a value holding an empty line
            // reads back with one "#" in it. Kept: every add-on of the suite reads it so. A line break
            // there that ends the record still ends it: a value's trailing line break reads back.
            afterContinuation = false;
            ++scan;
            continue;
        }
        afterContinuation = false;
        if (next < size && bytes[next] == kContinuation) {
            AppendDecoded(record.value, bytes + segment, next - segment);
            segment = next + 1;
            scan = segment;
            afterContinuation = true;
        } else if (endsRecord) {
            AppendDecoded(record.value, bytes + segment, scan - segment);
            pos = next;
            return 1;
        } else {
            pos = next;
            return -1;
        }
    }
}

bool KeyMatches(char* element, void* wanted) {
    const XN_Setting* record = reinterpret_cast<const XN_Setting*>(element);
    return XN_String::Compare(record->key, 0, *static_cast<const XN_String*>(wanted), 0, 0) == 0;
}

} // namespace

void XN_SettingsFile_ExchangeHalves(char* bytes, unsigned long size) {
    for (unsigned long i = 0; i < size; ++i) {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        bytes[i] = static_cast<char>(((b >> 4) & 0x0F) | ((b << 4) & 0xF0));
    }
}

bool XN_SettingsFile_BuildImage(const XN_List<XN_Setting>& records, std::string& image) {
    std::string built;
    std::string bytes;
    for (long i = 0; i < records.GetCount(); ++i) {
        const XN_Setting& record = records[i];
        built += kRecordStart;
        EightBit(record.key, bytes);
        built += bytes;
        built += ": ";
        EightBit(record.value, bytes);
        AppendValueBytes(bytes, built);
        built += kLF;
        if (built.size() > XN_SETTINGS_IMAGE_MAX)
            return false;
    }
    image += built;
    return true;
}

long XN_SettingsFile_IndexOf(XN_List<XN_Setting>& records, const XN_String& key) {
    long found = -1;
    records.Search(KeyMatches, found, const_cast<XN_String*>(&key));
    return found;
}

bool XN_SettingsFile_ParseImage(const char* bytes, unsigned long size, XN_List<XN_Setting>& records,
                                unsigned long* badOffset) {
    unsigned long pos = 0;
    while (pos < size) {
        XN_Setting record;
        const int result = ParseRecord(bytes, size, pos, record);
        if (result < 0) {
            if (badOffset != nullptr)
                *badOffset = pos;
            return false;
        }
        if (result == 0)
            break;
        records.AddData(std::move(record), -1);
    }
    return true;
}

namespace {

// A file beside `file` that no other writer uses at the same time.
XN_Location TemporaryBeside(const XN_Location& file) {
    return XN_Location(file + XN_String::Format(".%ld.tmp", static_cast<long>(getpid())));
}

std::string PosixPath(const XN_Location& location) {
    const XN_CString bytes = location.GetPOSIXPath().ToCStr(XN_String::Encoding_UTF8);
    return bytes.Get() != nullptr ? std::string(bytes.Get()) : std::string();
}

} // namespace

XN_SettingsFile_Status XN_SettingsFile_Read(const XN_Location& file, XN_List<XN_Setting>& records,
                                            bool* exists, unsigned long* badOffset) {
    // One open file gives both the length and the bytes: another add-on may replace the file
    // (rename over it) between two opens.
    IO::File input(file, IO::File::Fail);
    if (exists != nullptr)
        *exists = input.GetStatus() != IO::File::FileNotFound;
    if (input.GetStatus() == IO::File::FileNotFound)
        return XN_SettingsFile_OK;
    UInt64 length = 0;
    if (input.GetStatus() != NoError || input.Open(IO::File::ReadMode) != NoError ||
        input.GetDataLength(&length) != NoError)
        return XN_SettingsFile_ReadError;
    const USize size = length > XN_SETTINGS_IMAGE_MAX ? XN_SETTINGS_IMAGE_MAX : static_cast<USize>(length);
    std::string image(size + 1, '\0');
    if (size > 0 && input.ReadBin(&image[0], size) != NoError)
        return XN_SettingsFile_ReadError;
    input.Close();
    XN_SettingsFile_ExchangeHalves(&image[0], size);
    if (!XN_SettingsFile_ParseImage(image.data(), size, records, badOffset))
        return XN_SettingsFile_Malformed;
    return length > XN_SETTINGS_IMAGE_MAX ? XN_SettingsFile_TooLarge : XN_SettingsFile_OK;
}

bool XN_SettingsFile_Write(const XN_Location& file, const XN_List<XN_Setting>& records) {
    std::string image;
    if (!XN_SettingsFile_BuildImage(records, image))
        return false;
    XN_SettingsFile_ExchangeHalves(&image[0], image.size());
    const XN_Location temporary = TemporaryBeside(file);
    bool written =
        XN_File::WriteBin(temporary, image.data(), static_cast<long>(image.size()), false, true) == 0;
    if (written) {
        const std::string from = PosixPath(temporary);
        const std::string to = PosixPath(file);
        written = !from.empty() && !to.empty() && std::rename(from.c_str(), to.c_str()) == 0;
    }
    if (!written)
        XN_File::Delete(temporary);
    return written;
}
