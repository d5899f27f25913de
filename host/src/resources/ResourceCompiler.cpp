#include "achost/ResourceCompiler.hpp"
#include "achost/RegularFile.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
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

bool IsWordChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// A character as a message shows it: printable ASCII as it is, anything else as \xNN.
std::string Shown(char c) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F)
        return std::string(1, c);
    static const char kHex[] = "0123456789ABCDEF";
    return std::string("\\x") + kHex[byte >> 4] + kHex[byte & 0xF];
}

// Reads GRC text line by line and hands out lexemes one at a time, dropping comments and handling
// #define lines: it holds one line, never the whole text.
class Lexer {
    static constexpr const char* kNotText = "a NUL byte: this is not a text file";

public:
    Lexer(std::istream& input, const std::string& fileName) : in(input), file(fileName) {}

    // The next lexeme (End at the end of the text); false, with `error`, at the first error.
    bool Next(Lexeme* lexeme, std::string* error) {
        *lexeme = Lexeme();
        if (!SkipSpaceAndComments())
            return Fail(error);
        lexeme->line = line;
        if (pos >= text.size()) // the end of the input
            return true;
        if (!Read(lexeme))
            return Fail(error);
        return true;
    }

private:
    bool Fail(std::string* error) {
        *error = file + ":" + std::to_string(errorLine) + ": " + message;
        return false;
    }
    bool Error(int atLine, const std::string& what) {
        errorLine = atLine;
        message = what;
        return false;
    }

    // Moves to the next line: Ready, or End at the end of the input, or Failed with the error set.
    enum class LineResult { Ready, End, Failed };
    LineResult NextLine() {
        if (!std::getline(in, text)) {
            text.clear();
            pos = 0;
            return LineResult::End;
        }
        ++line;
        pos = line == 1 && text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
        if (text.find('\0') != std::string::npos)
            return Error(line, kNotText), LineResult::Failed;
        const size_t first = text.find_first_not_of(" \t\r\f\v", pos);
        if (first != std::string::npos && text[first] == '#') {
            pos = text.size();
            if (!Directive(text.substr(first + 1)))
                return LineResult::Failed;
        }
        return LineResult::Ready;
    }

    // Skips blanks, line ends and comments. False with the error set; at the end of the input the
    // line is left empty.
    bool SkipSpaceAndComments() {
        while (true) {
            if (pos >= text.size()) {
                const LineResult next = NextLine();
                if (next != LineResult::Ready)
                    return next == LineResult::End;
                continue;
            }
            const char c = text[pos];
            if (std::isspace(static_cast<unsigned char>(c))) {
                ++pos;
            } else if (text.compare(pos, 2, "//") == 0) {
                pos = text.size();
            } else if (text.compare(pos, 2, "/*") == 0) {
                const int startLine = line;
                size_t close = text.find("*/", pos + 2);
                while (close == std::string::npos) {
                    if (!std::getline(in, text))
                        return Error(startLine, "unterminated comment");
                    ++line;
                    if (text.find('\0') != std::string::npos)
                        return Error(line, kNotText);
                    close = text.find("*/");
                }
                pos = close + 2;
            } else {
                return true;
            }
        }
    }

    // "#define NAME number" names a number; "#include" and "#pragma" lines are accepted and ignored
    // (a symbolic ID an include would have defined is then reported where it is used).
    bool Directive(const std::string& rest) {
        std::istringstream words(rest);
        std::string keyword, name, value;
        words >> keyword >> name >> value;
        if (keyword == "include" || keyword == "pragma")
            return true;
        if (keyword != "define")
            return Error(line, "unsupported preprocessor line '#" + keyword + "'");
        Int64 number = 0;
        if (name.empty() || !ParseNumber(value, &number))
            return Error(line, "#define needs a name and a number");
        const auto [defined, added] = defines.emplace(name, std::make_pair(number, line));
        if (!added)
            return Error(line,
                         name + " is defined already, at line " + std::to_string(defined->second.second));
        return true;
    }

    static bool ParseNumber(const std::string& word, Int64* value) {
        if (word.empty())
            return false;
        size_t used = 0;
        try {
            *value = std::stoll(word, &used, 0);
        } catch (...) {
            return false;
        }
        return used == word.size();
    }

    bool Read(Lexeme* lexeme) {
        const char c = text[pos];
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
            while (pos < text.size() && IsWordChar(text[pos]))
                ++pos;
            lexeme->text = text.substr(start, pos - start);
            const auto defined = defines.find(lexeme->text);
            lexeme->kind = defined == defines.end() ? Lexeme::Word : Lexeme::Number;
            lexeme->number = defined == defines.end() ? 0 : defined->second.first;
            return true;
        }
        return Error(line, "unexpected character '" + Shown(c) + "'");
    }

    bool TypeTag(Lexeme* lexeme) {
        if (pos + 5 >= text.size() || text[pos + 5] != '\'')
            return Error(line, "a resource type is four characters in single quotes, like 'STR#'");
        lexeme->kind = Lexeme::TypeTag;
        lexeme->text = text.substr(pos + 1, 4);
        pos += 6;
        return true;
    }

    bool NumberLexeme(Lexeme* lexeme) {
        const size_t start = pos;
        ++pos;
        while (pos < text.size() && IsWordChar(text[pos]))
            ++pos;
        lexeme->text = text.substr(start, pos - start);
        lexeme->kind = Lexeme::Number;
        if (!ParseNumber(lexeme->text, &lexeme->number))
            return Error(line, "malformed number '" + lexeme->text + "'");
        return true;
    }

    bool QuotedString(Lexeme* lexeme) {
        lexeme->kind = Lexeme::String;
        for (++pos; pos < text.size() && text[pos] != '"'; ++pos) {
            char c = text[pos];
            if (c == '\\') {
                const char escaped = ++pos < text.size() ? text[pos] : '\0';
                static const std::string from = "\"\\ntr", to = "\"\\\n\t\r";
                const size_t k = from.find(escaped);
                if (k == std::string::npos || escaped == '\0')
                    return Error(line, "unknown escape '\\" + Shown(escaped) + "' in string");
                c = to[k];
            }
            lexeme->text += c;
        }
        if (pos >= text.size())
            return Error(line, "unterminated string");
        ++pos;
        if (!IsValidUtf8(lexeme->text))
            return Error(line, "string is not valid UTF-8");
        return true;
    }

    std::istream& in;
    const std::string& file;
    std::string text; // the current line, without its line feed
    size_t pos = 0;
    int line = 0;
    std::map<std::string, std::pair<Int64, int>> defines; // name: value, line
    int errorLine = 0;
    std::string message;
};

// The largest icon image read: far above any real icon, and a bound on what a wrong file can cost.
constexpr size_t kImageMax = 16 * 1024 * 1024;

// Reads an icon image whole. Only a regular file of at most kImageMax bytes is read, and it is opened
// without blocking, so a FIFO, a device or a folder at the path is refused, never waited on. On false,
// `why` completes "icon image 'NAME' in FOLDER ..." ("" when there is no such file).
bool ReadImage(const std::string& path, std::string* data, std::string* why) {
    struct stat info;
    FileRefusal refusal;
    std::string reason;
    const int fd = OpenRegularFile(path, &info, &refusal, &reason);
    if (fd < 0) {
        *why = refusal == FileRefusal::Missing   ? ""
               : refusal == FileRefusal::Folder  ? "is a folder, not an image"
               : refusal == FileRefusal::Special ? "is not a regular file (a device, a FIFO or a socket)"
                                                 : "cannot be read: " + reason;
        return false;
    }
    why->clear();
    if (static_cast<unsigned long long>(info.st_size) > kImageMax)
        *why = "is larger than " + std::to_string(kImageMax) + " bytes";
    data->clear();
    if (why->empty())
        data->reserve(static_cast<size_t>(info.st_size));
    // Past the limit, a file that grew meanwhile is refused too.
    char chunk[65536];
    while (why->empty()) {
        const ssize_t n = read(fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            *why = std::string("cannot be read: ") + std::strerror(errno);
        else if (n == 0)
            break;
        else if (data->size() + static_cast<size_t>(n) > kImageMax)
            *why = "is larger than " + std::to_string(kImageMax) + " bytes";
        else
            data->append(chunk, static_cast<size_t>(n));
    }
    close(fd);
    return why->empty();
}

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

// Reads `'TYPE' id header { body }` resources from the lexer one at a time, completes icons with
// their images, checks each and hands it on.
class Parser {
public:
    Parser(Lexer& lexer, const std::string& fileName, const std::string& imagesDir)
        : lex(lexer), file(fileName), images(imagesDir) {}

    bool Run(const ResourceSink& sink, std::string* error) {
        std::map<std::pair<GSResType, GSResID>, int> firstLine;
        if (!Take(error))
            return false;
        while (cur.kind != Lexeme::End) {
            const int line = cur.line;
            Resource res;
            if (!ParseOne(&res, error) || !Complete(&res, line, error))
                return false;
            const auto key = std::make_pair(res.type, res.id);
            const auto [first, added] = firstLine.emplace(key, line);
            if (!added)
                return Fail(line,
                            "duplicate '" + ResTypeName(res.type) + "' " + std::to_string(res.id) +
                                " (first defined at line " + std::to_string(first->second) + ")",
                            error);
            if (!sink(std::move(res), error))
                return false;
        }
        return true;
    }

private:
    bool Fail(int line, const std::string& text, std::string* error) {
        *error = file + ":" + std::to_string(line) + ": " + text;
        return false;
    }
    bool Take(std::string* error) { return lex.Next(&cur, error); }

    bool ParseOne(Resource* res, std::string* error) {
        if (cur.kind != Lexeme::TypeTag)
            return Fail(cur.line, "expected a resource type like 'STR#', found '" + cur.text + "'", error);
        const std::string& tag = cur.text;
        res->type = (GSResType(UInt8(tag[0])) << 24) | (GSResType(UInt8(tag[1])) << 16) |
                    (GSResType(UInt8(tag[2])) << 8) | GSResType(UInt8(tag[3]));
        if (!Take(error))
            return false;
        if (cur.kind == Lexeme::Word)
            return Fail(cur.line, "unknown resource ID '" + cur.text + "'", error);
        if (cur.kind != Lexeme::Number || cur.number < 1 || cur.number > 32767)
            return Fail(cur.line, "expected a resource ID from 1 to 32767", error);
        res->id = static_cast<GSResID>(cur.number);
        for (;;) {
            if (!Take(error))
                return false;
            if (cur.kind == Lexeme::Open)
                break;
            if (cur.kind == Lexeme::End || cur.kind == Lexeme::TypeTag || cur.kind == Lexeme::Close)
                return Fail(cur.line, "expected '{' to open the resource's body", error);
            res->header.push_back(ToToken(cur));
        }
        const int openLine = cur.line;
        for (;;) {
            if (!Take(error))
                return false;
            if (cur.kind == Lexeme::Close)
                break;
            if (cur.kind == Lexeme::End || cur.kind == Lexeme::TypeTag || cur.kind == Lexeme::Open)
                return Fail(cur.kind == Lexeme::End ? openLine : cur.line,
                            "missing '}' to close the body opened at line " + std::to_string(openLine),
                            error);
            if (res->body.empty() || res->body.back().back().line != cur.line)
                res->body.emplace_back();
            res->body.back().push_back(ToToken(cur));
        }
        return Take(error);
    }

    // Reads an icon's image into the resource, then checks the resource.
    bool Complete(Resource* res, int line, std::string* error) {
        if (ResTypeName(res->type) == "GICN") {
            std::string base = std::to_string(res->id);
            if (!res->body.empty() && !res->body[0].empty() && res->body[0][0].kind == ResToken::String)
                base = res->body[0][0].text;
            std::string why;
            if (!ReadImage(images + "/" + base + ".png", &res->data, &why))
                return Fail(line,
                            "icon image '" + base + ".png' " +
                                (why.empty() ? "not found in " + images : "in " + images + " " + why),
                            error);
        }
        ResourceProblem problem;
        if (CheckResource(*res, &problem))
            return true;
        return Fail(problem.line > 0 ? problem.line : line, problem.message, error);
    }

    Lexer& lex;
    const std::string& file;
    const std::string& images;
    Lexeme cur;
};

ResourceSink Collector(ResourceSet* result) {
    return [result](Resource&& resource, std::string*) {
        result->Add(std::move(resource));
        return true;
    };
}

} // namespace

bool CompileGrcStream(std::istream& in, const std::string& fileName, const std::string& imagesDir,
                      const ResourceSink& sink, std::string* error) {
    Lexer lexer(in, fileName);
    return Parser(lexer, fileName, imagesDir).Run(sink, error);
}

bool CompileGrcText(const std::string& text, const std::string& fileName, const std::string& imagesDir,
                    ResourceSet* result, std::string* error) {
    std::istringstream in(text);
    return CompileGrcStream(in, fileName, imagesDir, Collector(result), error);
}

bool CompileGrc(const std::string& grcPath, const std::string& imagesDir, ResourceSet* result,
                std::string* error) {
    std::ifstream in(grcPath, std::ios::binary);
    if (!in) {
        *error = grcPath + ":0: cannot read the file";
        return false;
    }
    return CompileGrcStream(in, grcPath, imagesDir, Collector(result), error);
}

} // namespace achost
