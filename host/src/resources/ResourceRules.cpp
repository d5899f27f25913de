// The rules every resource obeys, whether it was just compiled from GRC text or read back from the
// image inside an add-on: the dialog builder, the menus and the string calls rely on them.
#include "achost/Resources.hpp"

#include "ACAPinc.h"

#include <cstdio>
#include <set>

namespace achost {

namespace {

const std::set<std::string> kDialogKinds = {"Modal", "Modeless", "Palette", "TabPage"};
const std::set<std::string> kDialogFlags = {"grow",  "vGrow",    "hGrow",    "noGrow",     "leftCaption",
                                            "close", "minimize", "maximize", "topCaption", "frame"};
const std::set<std::string> kItemTypes = {
    "Button",        "LeftText",          "CenterText",       "RightText",
    "CheckBox",      "RadioButton",       "SingleSelList",    "MultiSelList",
    "Icon",          "IconButton",        "IconPushRadio",    "IconRadioButton",
    "IconPushCheck", "PopupControl",      "TextEdit",         "MultiLineEdit",
    "PosIntEdit",    "IntEdit",           "LengthEdit",       "RealEdit",
    "GroupBox",      "Separator",         "UserItem",         "UserControl",
    "SimpleTab",     "SingleSelListView", "MultiSelTreeView", "PictureItem",
    "Slider"};

const char kPngSignature[] = "\x89PNG\r\n\x1A\n";

std::string ControlName(char c) {
    char text[8];
    std::snprintf(text, sizeof text, "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    return text;
}

class Checker {
public:
    explicit Checker(const Resource& resource) : res(resource) {}

    bool Run(ResourceProblem* problem) {
        const std::string type = ResTypeName(res.type);
        const bool ok = res.id < 1 || res.id > 32767
                            ? Error(0, "a resource ID is 1 to 32767, not " + std::to_string(res.id))
                        : !Texts()       ? false
                        : type == "STR#" ? CheckStrings()
                        : type == "GICN" ? CheckIcon()
                        : type == "MDID" ? CheckModuleId()
                        : type == "GDLG" ? CheckDialog()
                        : type == "DLGH" ? CheckDialogHelp()
                                         : Error(0, "unknown resource type '" + type + "'");
        if (!ok && problem != nullptr)
            *problem = {at, message};
        return ok;
    }

private:
    bool Error(int line, const std::string& text) {
        at = line;
        message = text;
        return false;
    }
    std::vector<ResToken> Flat() const {
        std::vector<ResToken> all;
        for (const auto& bodyLine : res.body)
            all.insert(all.end(), bodyLine.begin(), bodyLine.end());
        return all;
    }
    bool Expect(const std::vector<ResToken>& tokens, size_t i, ResToken::Kind kind, const char* what) {
        if (i < tokens.size() && tokens[i].kind == kind)
            return true;
        return Error(i < tokens.size() ? tokens[i].line : 0, std::string("expected ") + what);
    }
    bool DescriptionOnly() {
        if (res.header.size() == 1 && res.header[0].kind == ResToken::String)
            return true;
        return Error(0, "expected one quoted description between the ID and '{'");
    }
    bool NumberIn(const ResToken& token, Int64 low, Int64 high, const char* what) {
        if (token.kind == ResToken::Number && token.number >= low && token.number <= high)
            return true;
        return Error(token.line, std::string("expected ") + what + ", found '" + token.text + "'");
    }

    // Every quoted text is well-formed UTF-8 without control characters other than tab, line feed and
    // carriage return: menus, dialogs and terminals show them as they are.
    bool Texts() {
        for (const auto& tokens : {res.header, Flat()})
            for (const auto& token : tokens) {
                if (token.kind != ResToken::String)
                    continue;
                if (!IsValidUtf8(token.text))
                    return Error(token.line, "string is not valid UTF-8");
                for (const char c : token.text)
                    if ((static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') ||
                        c == '\x7F')
                        return Error(token.line, "string holds the control character " + ControlName(c));
            }
        return true;
    }

    bool CheckStrings() {
        if (!DescriptionOnly())
            return false;
        for (const auto& token : Flat()) {
            if (token.kind != ResToken::String)
                return Error(token.line, "'STR#' items are quoted strings, found '" + token.text + "'");
            const size_t units = Utf16Length(token.text);
            if (units > API_ResStringMaxLength)
                return Error(token.line, "string of " + std::to_string(units) + " characters: at most " +
                                             std::to_string(API_ResStringMaxLength) +
                                             " fit a resource string");
        }
        return true;
    }

    // The image's bytes are in `data` (the compiler reads them before checking).
    bool CheckIcon() {
        if (!DescriptionOnly())
            return false;
        const auto body = Flat();
        if (!body.empty()) {
            if (body.size() != 4 || !Expect(body, 0, ResToken::String, "the image's base name in quotes"))
                return Error(body[0].line, "an icon is { \"<image base name>\" R G B }");
            for (size_t i = 1; i < 4; ++i)
                if (!NumberIn(body[i], 0, 255, "a colour value 0..255"))
                    return false;
        }
        if (res.data.compare(0, sizeof kPngSignature - 1, kPngSignature) != 0)
            return Error(body.empty() ? 0 : body[0].line, "the icon's image is not a PNG file");
        return true;
    }

    bool CheckModuleId() {
        if (!DescriptionOnly())
            return false;
        if (res.id != 32500)
            return Error(0, "the 'MDID' resource must have ID 32500");
        const auto body = Flat();
        if (body.size() != 2)
            return Error(0, "an 'MDID' is { <developer ID> <local ID> }");
        return NumberIn(body[0], 0, 0xFFFFFFFFLL, "a 32-bit developer ID") &&
               NumberIn(body[1], 0, 0xFFFFFFFFLL, "a 32-bit local ID");
    }

    bool CheckDialog() {
        const auto& h = res.header;
        if (h.empty() || h[0].kind != ResToken::Word || kDialogKinds.count(h[0].text) == 0)
            return Error(0, "a dialog starts with its kind: Modal, Modeless, Palette or TabPage");
        size_t i = 1;
        for (; i + 1 < h.size() && h[i].text == "|"; i += 2)
            if (kDialogFlags.count(h[i + 1].text) == 0)
                return Error(h[i + 1].line, "unknown dialog flag '" + h[i + 1].text + "'");
        if (h.size() != i + 5)
            return Error(0, "a dialog header is <kind> [| flag ...] <left> <top> <width> <height> \"title\"");
        for (size_t k = i; k < i + 4; ++k)
            if (!NumberIn(h[k], -32768, 32767, "a coordinate"))
                return false;
        if (!Expect(h, i + 4, ResToken::String, "the dialog title in quotes"))
            return false;
        std::string previous;
        for (const auto& item : res.body) {
            if (item.empty())
                return Error(0, "an empty dialog item line");
            if (item[0].kind == ResToken::Word && item[0].text == "NoIcon" && previous == "PopupControl")
                continue;
            if (item[0].kind != ResToken::Word || kItemTypes.count(item[0].text) == 0)
                return Error(item[0].line, "unknown dialog item type '" + item[0].text + "'");
            if (item.size() < 5)
                return Error(item[0].line, "a dialog item is <type> <left> <top> <width> <height> ...");
            for (size_t k = 1; k < 5; ++k)
                if (!NumberIn(item[k], -32768, 32767, "a coordinate"))
                    return false;
            previous = item[0].text;
        }
        return true;
    }

    bool CheckDialogHelp() {
        if (res.header.size() != 1 || res.header[0].kind != ResToken::Word)
            return Error(0, "a 'DLGH' header is its help anchor name");
        const auto body = Flat();
        if (body.size() % 3 != 0)
            return Error(0, "'DLGH' entries are <item> \"tooltip\" <name>");
        for (size_t i = 0; i < body.size(); i += 3)
            if (!NumberIn(body[i], 1, 32767, "an item number") ||
                !Expect(body, i + 1, ResToken::String, "a quoted tooltip") ||
                !Expect(body, i + 2, ResToken::Word, "the item's help name"))
                return false;
        return true;
    }

    const Resource& res;
    int at = 0;
    std::string message;
};

} // namespace

bool IsValidUtf8(const std::string& s) {
    size_t i = 0;
    while (i < s.size()) {
        const auto c = static_cast<unsigned char>(s[i]);
        const int extra = c < 0x80                 ? 0
                          : c >= 0xC2 && c <= 0xDF ? 1
                          : c >= 0xE0 && c <= 0xEF ? 2
                          : c >= 0xF0 && c <= 0xF4 ? 3
                                                   : -1;
        if (extra < 0 || i + extra >= s.size())
            return false;
        if (extra > 0) {
            const auto next = static_cast<unsigned char>(s[i + 1]);
            const unsigned char low = c == 0xE0 ? 0xA0 : c == 0xF0 ? 0x90 : 0x80;
            const unsigned char high = c == 0xED ? 0x9F : c == 0xF4 ? 0x8F : 0xBF;
            if (next < low || next > high)
                return false;
            for (int k = 2; k <= extra; ++k)
                if ((static_cast<unsigned char>(s[i + k]) >> 6) != 2)
                    return false;
        }
        i += extra + 1;
    }
    return true;
}

size_t Utf16Length(const std::string& utf8) {
    size_t units = 0;
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) != 0x80) // a lead byte: one unit, two for a code point beyond the BMP
            units += byte >= 0xF0 ? 2 : 1;
    }
    return units;
}

bool CheckResource(const Resource& resource, ResourceProblem* problem) {
    return Checker(resource).Run(problem);
}

} // namespace achost
