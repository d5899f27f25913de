#include "achost/ResourceCompiler.hpp"

#include <fstream>
#include <set>
#include <sstream>

namespace achost {

namespace {

// A lexical unit of GRC text. Punctuation ({, }, |) and resource types ('STR#') are kinds of their own.
struct Lexeme {
    enum Kind { TypeTag, Word, Number, String, Open, Close, Bar, End } kind = End;
    std::string text;
    Int64 number = 0;
    int line = 0;
};

bool IsValidUtf8(const std::string& s) {
    size_t i = 0;
    while (i < s.size()) {
        const auto c = static_cast<unsigned char>(s[i]);
        const int extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
        if (extra < 0 || i + extra >= s.size())
            return false;
        for (int k = 1; k <= extra; ++k)
            if ((static_cast<unsigned char>(s[i + k]) >> 6) != 2)
                return false;
        i += extra + 1;
    }
    return true;
}

bool IsWordChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// Splits GRC text into lexemes, dropping comments and handling #define lines. Stops at the first error.
class Lexer {
public:
    Lexer(const std::string& text, const std::string& fileName) : src(text), file(fileName) {
        if (src.compare(0, 3, "\xEF\xBB\xBF") == 0)
            pos = 3;
    }

    bool Run(std::vector<Lexeme>* out, std::string* error) {
        while (true) {
            if (!SkipSpaceAndComments())
                return Fail(error);
            if (pos >= src.size())
                break;
            Lexeme lexeme;
            lexeme.line = line;
            if (!Next(&lexeme))
                return Fail(error);
            if (lexeme.kind != Lexeme::End)
                out->push_back(std::move(lexeme));
        }
        Lexeme end;
        end.line = line;
        out->push_back(end);
        return true;
    }

private:
    bool Fail(std::string* error) {
        *error = file + ":" + std::to_string(errorLine) + ": " + message;
        return false;
    }
    bool Error(int atLine, const std::string& text) {
        errorLine = atLine;
        message = text;
        return false;
    }

    bool SkipSpaceAndComments() {
        while (pos < src.size()) {
            const char c = src[pos];
            if (c == '\n') {
                ++line;
                ++pos;
                atLineStart = true;
            } else if (std::isspace(static_cast<unsigned char>(c))) {
                ++pos;
            } else if (src.compare(pos, 2, "//") == 0) {
                pos = src.find('\n', pos);
                pos = pos == std::string::npos ? src.size() : pos;
            } else if (src.compare(pos, 2, "/*") == 0) {
                const int startLine = line;
                const size_t close = src.find("*/", pos + 2);
                if (close == std::string::npos)
                    return Error(startLine, "unterminated comment");
                for (size_t i = pos; i < close; ++i)
                    line += src[i] == '\n';
                pos = close + 2;
            } else if (c == '#' && atLineStart) {
                if (!Directive())
                    return false;
            } else {
                return true;
            }
        }
        return true;
    }

    // "#define NAME number" names a number; "#include" lines are accepted and ignored (a symbolic ID
    // they would have defined is then reported where it is used).
    bool Directive() {
        size_t end = src.find('\n', pos);
        end = end == std::string::npos ? src.size() : end;
        std::istringstream words(src.substr(pos + 1, end - pos - 1));
        std::string keyword, name, value;
        words >> keyword >> name >> value;
        pos = end;
        if (keyword == "include" || keyword == "pragma")
            return true;
        if (keyword != "define")
            return Error(line, "unsupported preprocessor line '#" + keyword + "'");
        Int64 number = 0;
        if (name.empty() || !ParseNumber(value, &number))
            return Error(line, "#define needs a name and a number");
        defines[name] = number;
        return true;
    }

    static bool ParseNumber(const std::string& text, Int64* value) {
        if (text.empty())
            return false;
        size_t used = 0;
        try {
            *value = std::stoll(text, &used, 0);
        } catch (...) {
            return false;
        }
        return used == text.size();
    }

    bool Next(Lexeme* lexeme) {
        atLineStart = false;
        const char c = src[pos];
        if (c == '{' || c == '}' || c == '|') {
            lexeme->kind = c == '{' ? Lexeme::Open : c == '}' ? Lexeme::Close : Lexeme::Bar;
            lexeme->text = std::string(1, c);
            ++pos;
            return true;
        }
        if (c == '\'')
            return TypeTag(lexeme);
        if (c == '"')
            return QuotedString(lexeme);
        if (std::isdigit(static_cast<unsigned char>(c)) || c == '-' || c == '+')
            return NumberLexeme(lexeme);
        if (IsWordChar(c)) {
            const size_t start = pos;
            while (pos < src.size() && IsWordChar(src[pos]))
                ++pos;
            lexeme->text = src.substr(start, pos - start);
            const auto defined = defines.find(lexeme->text);
            lexeme->kind = defined == defines.end() ? Lexeme::Word : Lexeme::Number;
            lexeme->number = defined == defines.end() ? 0 : defined->second;
            return true;
        }
        return Error(line, std::string("unexpected character '") + c + "'");
    }

    bool TypeTag(Lexeme* lexeme) {
        if (pos + 5 >= src.size() || src[pos + 5] != '\'')
            return Error(line, "a resource type is four characters in single quotes, like 'STR#'");
        lexeme->kind = Lexeme::TypeTag;
        lexeme->text = src.substr(pos + 1, 4);
        pos += 6;
        return true;
    }

    bool NumberLexeme(Lexeme* lexeme) {
        const size_t start = pos;
        ++pos;
        while (pos < src.size() && IsWordChar(src[pos]))
            ++pos;
        lexeme->text = src.substr(start, pos - start);
        lexeme->kind = Lexeme::Number;
        if (!ParseNumber(lexeme->text, &lexeme->number))
            return Error(line, "malformed number '" + lexeme->text + "'");
        return true;
    }

    bool QuotedString(Lexeme* lexeme) {
        lexeme->kind = Lexeme::String;
        for (++pos; pos < src.size() && src[pos] != '"'; ++pos) {
            char c = src[pos];
            if (c == '\n')
                break;
            if (c == '\\') {
                const char escaped = ++pos < src.size() ? src[pos] : '\0';
                static const std::string from = "\"\\ntr", to = "\"\\\n\t\r";
                const size_t k = from.find(escaped);
                if (k == std::string::npos || escaped == '\0')
                    return Error(line, std::string("unknown escape '\\") + escaped + "' in string");
                c = to[k];
            }
            lexeme->text += c;
        }
        if (pos >= src.size() || src[pos] != '"')
            return Error(line, "unterminated string");
        ++pos;
        if (!IsValidUtf8(lexeme->text))
            return Error(line, "string is not valid UTF-8");
        return true;
    }

    const std::string& src;
    const std::string& file;
    size_t pos = 0;
    int line = 1;
    bool atLineStart = true;
    std::map<std::string, Int64> defines;
    int errorLine = 0;
    std::string message;
};

ResToken ToToken(const Lexeme& lexeme) {
    ResToken token;
    token.kind = lexeme.kind == Lexeme::Number   ? ResToken::Number
                 : lexeme.kind == Lexeme::String ? ResToken::String
                                                 : ResToken::Word;
    token.text = lexeme.text;
    token.number = lexeme.number;
    token.line = lexeme.line;
    return token;
}

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

// Checks one parsed resource against the rules of its type and completes it (icon images).
class Checker {
public:
    Checker(const std::string& fileName, const std::string& imagesDir) : file(fileName), images(imagesDir) {}

    bool Check(Resource* res, int line, std::string* error) {
        at = line;
        const std::string type = ResTypeName(res->type);
        bool ok = type == "STR#"   ? CheckStrings(*res)
                  : type == "GICN" ? CheckIcon(res)
                  : type == "MDID" ? CheckModuleId(*res)
                  : type == "GDLG" ? CheckDialog(*res)
                  : type == "DLGH" ? CheckDialogHelp(*res)
                                   : Error(line, "unknown resource type '" + type + "'");
        if (!ok)
            *error = file + ":" + std::to_string(at) + ": " + message;
        return ok;
    }

private:
    bool Error(int line, const std::string& text) {
        at = line;
        message = text;
        return false;
    }
    static std::vector<ResToken> Flat(const Resource& res) {
        std::vector<ResToken> all;
        for (const auto& bodyLine : res.body)
            all.insert(all.end(), bodyLine.begin(), bodyLine.end());
        return all;
    }
    bool Expect(const std::vector<ResToken>& tokens, size_t i, ResToken::Kind kind, const char* what) {
        if (i < tokens.size() && tokens[i].kind == kind)
            return true;
        return Error(i < tokens.size() ? tokens[i].line : at, std::string("expected ") + what);
    }
    bool DescriptionOnly(const Resource& res) {
        if (res.header.size() == 1 && res.header[0].kind == ResToken::String)
            return true;
        return Error(at, "expected one quoted description between the ID and '{'");
    }
    bool NumberIn(const ResToken& token, Int64 low, Int64 high, const char* what) {
        if (token.kind == ResToken::Number && token.number >= low && token.number <= high)
            return true;
        return Error(token.line, std::string("expected ") + what + ", found '" + token.text + "'");
    }

    bool CheckStrings(const Resource& res) {
        if (!DescriptionOnly(res))
            return false;
        for (const auto& token : Flat(res))
            if (token.kind != ResToken::String)
                return Error(token.line, "'STR#' items are quoted strings, found '" + token.text + "'");
        return true;
    }

    bool CheckIcon(Resource* res) {
        if (!DescriptionOnly(*res))
            return false;
        const auto body = Flat(*res);
        std::string base = std::to_string(res->id);
        if (!body.empty()) {
            if (body.size() != 4 || !Expect(body, 0, ResToken::String, "the image's base name in quotes"))
                return Error(body[0].line, "an icon is { \"<image base name>\" R G B }");
            for (size_t i = 1; i < 4; ++i)
                if (!NumberIn(body[i], 0, 255, "a colour value 0..255"))
                    return false;
            base = body[0].text;
        }
        const std::string path = images + "/" + base + ".png";
        std::ifstream in(path, std::ios::binary);
        if (!in)
            return Error(at, "icon image '" + base + ".png' not found in " + images);
        res->data.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        return true;
    }

    bool CheckModuleId(const Resource& res) {
        if (!DescriptionOnly(res))
            return false;
        if (res.id != 32500)
            return Error(at, "the 'MDID' resource must have ID 32500");
        const auto body = Flat(res);
        if (body.size() != 2)
            return Error(at, "an 'MDID' is { <developer ID> <local ID> }");
        return NumberIn(body[0], 0, 0xFFFFFFFFLL, "a 32-bit developer ID") &&
               NumberIn(body[1], 0, 0xFFFFFFFFLL, "a 32-bit local ID");
    }

    bool CheckDialog(const Resource& res) {
        const auto& h = res.header;
        if (h.empty() || kDialogKinds.count(h[0].text) == 0)
            return Error(at, "a dialog starts with its kind: Modal, Modeless, Palette or TabPage");
        size_t i = 1;
        for (; i + 1 < h.size() && h[i].text == "|"; i += 2)
            if (kDialogFlags.count(h[i + 1].text) == 0)
                return Error(h[i + 1].line, "unknown dialog flag '" + h[i + 1].text + "'");
        if (h.size() != i + 5)
            return Error(at,
                         "a dialog header is <kind> [| flag ...] <left> <top> <width> <height> \"title\"");
        for (size_t k = i; k < i + 4; ++k)
            if (!NumberIn(h[k], -32768, 32767, "a coordinate"))
                return false;
        if (!Expect(h, i + 4, ResToken::String, "the dialog title in quotes"))
            return false;
        std::string previous;
        for (const auto& item : res.body) {
            if (item[0].text == "NoIcon" && previous == "PopupControl")
                continue;
            if (kItemTypes.count(item[0].text) == 0)
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

    bool CheckDialogHelp(const Resource& res) {
        if (res.header.size() != 1 || res.header[0].kind != ResToken::Word)
            return Error(at, "a 'DLGH' header is its help anchor name");
        const auto body = Flat(res);
        if (body.size() % 3 != 0)
            return Error(at, "'DLGH' entries are <item> \"tooltip\" <name>");
        for (size_t i = 0; i < body.size(); i += 3)
            if (!NumberIn(body[i], 1, 32767, "an item number") ||
                !Expect(body, i + 1, ResToken::String, "a quoted tooltip") ||
                !Expect(body, i + 2, ResToken::Word, "the item's help name"))
                return false;
        return true;
    }

    const std::string& file;
    const std::string& images;
    int at = 0;
    std::string message;
};

// Reads `'TYPE' id header { body }` resources from the lexemes.
class Parser {
public:
    Parser(const std::vector<Lexeme>& lexemes, const std::string& fileName, Checker& checker)
        : lex(lexemes), file(fileName), check(checker) {}

    bool Run(ResourceSet* result, std::string* error) {
        std::map<std::pair<GSResType, GSResID>, int> firstLine;
        while (lex[i].kind != Lexeme::End) {
            const int line = lex[i].line;
            Resource res;
            if (!ParseOne(&res, error) || !check.Check(&res, line, error))
                return false;
            const auto key = std::make_pair(res.type, res.id);
            if (firstLine.count(key) != 0)
                return Fail(line,
                            "duplicate '" + ResTypeName(res.type) + "' " + std::to_string(res.id) +
                                " (first defined at line " + std::to_string(firstLine[key]) + ")",
                            error);
            firstLine[key] = line;
            result->Add(std::move(res));
        }
        return true;
    }

private:
    bool Fail(int line, const std::string& text, std::string* error) {
        *error = file + ":" + std::to_string(line) + ": " + text;
        return false;
    }

    bool ParseOne(Resource* res, std::string* error) {
        const Lexeme& tag = lex[i];
        if (tag.kind != Lexeme::TypeTag)
            return Fail(tag.line, "expected a resource type like 'STR#', found '" + tag.text + "'", error);
        res->type = (GSResType(UInt8(tag.text[0])) << 24) | (GSResType(UInt8(tag.text[1])) << 16) |
                    (GSResType(UInt8(tag.text[2])) << 8) | GSResType(UInt8(tag.text[3]));
        const Lexeme& id = lex[++i];
        if (id.kind == Lexeme::Word)
            return Fail(id.line, "unknown resource ID '" + id.text + "'", error);
        if (id.kind != Lexeme::Number || id.number < 1 || id.number > 32767)
            return Fail(id.line, "expected a resource ID from 1 to 32767", error);
        res->id = static_cast<GSResID>(id.number);
        for (++i; lex[i].kind != Lexeme::Open; ++i) {
            if (lex[i].kind == Lexeme::End || lex[i].kind == Lexeme::TypeTag || lex[i].kind == Lexeme::Close)
                return Fail(lex[i].line, "expected '{' to open the resource's body", error);
            res->header.push_back(ToToken(lex[i]));
        }
        const int openLine = lex[i].line;
        for (++i; lex[i].kind != Lexeme::Close; ++i) {
            if (lex[i].kind == Lexeme::End || lex[i].kind == Lexeme::TypeTag || lex[i].kind == Lexeme::Open)
                return Fail(lex[i].kind == Lexeme::End ? openLine : lex[i].line,
                            "missing '}' to close the body opened at line " + std::to_string(openLine),
                            error);
            if (res->body.empty() || res->body.back().back().line != lex[i].line)
                res->body.emplace_back();
            res->body.back().push_back(ToToken(lex[i]));
        }
        ++i;
        return true;
    }

    const std::vector<Lexeme>& lex;
    const std::string& file;
    Checker& check;
    size_t i = 0;
};

} // namespace

bool CompileGrcText(const std::string& text, const std::string& fileName, const std::string& imagesDir,
                    ResourceSet* result, std::string* error) {
    std::vector<Lexeme> lexemes;
    if (!Lexer(text, fileName).Run(&lexemes, error))
        return false;
    Checker checker(fileName, imagesDir);
    return Parser(lexemes, fileName, checker).Run(result, error);
}

bool CompileGrc(const std::string& grcPath, const std::string& imagesDir, ResourceSet* result,
                std::string* error) {
    std::ifstream in(grcPath, std::ios::binary);
    if (!in) {
        *error = grcPath + ":0: cannot read the file";
        return false;
    }
    std::ostringstream text;
    text << in.rdbuf();
    return CompileGrcText(text.str(), grcPath, imagesDir, result, error);
}

} // namespace achost
