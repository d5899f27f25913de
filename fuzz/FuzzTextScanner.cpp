// The text scanner over any text, driven by a program of reads. Input: a count N, N operation bytes,
// then the text as UTF-16 units (any units, 0 and lone surrogates included). The position must stay
// within the text whatever is read.
#include "XN_Text_Scanner.hpp"

#include <cstdint>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 1 << 14)
        return 0;
    const size_t opCount = data[0] < size - 1 ? data[0] : size - 1;
    const uint8_t* ops = data + 1;
    const uint8_t* rest = ops + opCount;
    const size_t unitCount = (size - 1 - opCount) / 2;
    std::vector<unsigned short> units(unitCount);
    for (size_t i = 0; i < unitCount; ++i)
        units[i] = static_cast<unsigned short>(rest[2 * i] | (rest[2 * i + 1] << 8));

    XN_Text_Scanner scanner;
    scanner.Set(unitCount > 0 ? XN_String(units.data(), static_cast<unsigned int>(unitCount)) : XN_String());
    static const char* const kNeedles[] = {"*/", "/*", "\"", "a", "\xC3\xA9", "\r\n", "\xFF"};
    for (size_t i = 0; i < opCount; ++i) {
        const uint8_t op = ops[i];
        const bool advance = (op & 0x10) != 0;
        const short skipMode = static_cast<short>((op >> 5) & 0x03);
        switch (op & 0x0F) {
        case 0:
            scanner.SkipSpacesTabsEOLsComments(advance);
            break;
        case 1:
            scanner.ReadToken(skipMode, advance);
            break;
        case 2:
            scanner.ReadLine((op & 0x80) != 0, advance);
            break;
        case 3: {
            long value = 0;
            scanner.ReadLong(value, skipMode, advance);
            break;
        }
        case 4: {
            XN_String value;
            scanner.ReadDoubleQuotedString(value, skipMode, advance);
            break;
        }
        case 5:
            scanner.FindText(kNeedles[(op >> 5) % 7], scanner.GetPosition(), advance,
                             (op & 0x80) != 0 ? XN_String::Encoding_UTF8 : XN_String::Encoding_SystemDefault);
            break;
        case 6: {
            XN_String token = scanner.ReadToken(skipMode, false);
            XN_Text_Scanner::IsInteger(token);
            break;
        }
        default:
            scanner.FindText(kNeedles[op % 7], static_cast<unsigned long>(op) % (unitCount + 2), advance);
            break;
        }
        if (scanner.GetPosition() > scanner.GetLength())
            std::abort();
    }
    return 0;
}
