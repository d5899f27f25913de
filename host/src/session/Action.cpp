#include "achost/Action.hpp"

#include <algorithm>
#include <iterator>

namespace achost {

namespace {

// The forms of every verb, with what each does and an example for `help`. In a form, an upper-case
// word stands for a number (its range is in kPlaceholders), a word in quotes for a quoted string,
// `a|b` for one of the words given, `"X"|w` for a string or the word w, `"X"|X` for a string or any
// one word without quotes. One row per form.
struct Form {
    Verb verb;
    const char* pattern;
    const char* meaning;
    const char* example;
};
const Form kForms[] = {
    {Verb::Menu, "menu ITEM", "choose item ITEM of the registered menu", "menu 3"},
    {Verb::MenuOf, "menu RESID ITEM", "choose item ITEM of menu RESID", "menu 32506 2"},
    {Verb::ExpectMenuText, "expect menu RESID ITEM \"TEXT\"", "item ITEM of menu RESID reads TEXT",
     "expect menu 32501 3 \"Language...\""},
    {Verb::ExpectMenuMark, "expect menu RESID ITEM checked|unchecked",
     "item ITEM of menu RESID has that mark", "expect menu 32501 5 unchecked"},
    {Verb::ExpectRegistered, "expect registered RESID", "menu RESID is the one the add-on registered",
     "expect registered 32501"},
    {Verb::Reload, "reload", "unload the add-on and start it again", "reload"},
    {Verb::Quit, "quit", "end the session", "quit"},
    {Verb::Help, "help", "list the actions", "help"},
    {Verb::ExpectDialog, "expect dialog RESID", "the front dialog is dialog RESID", "expect dialog 32734"},
    {Verb::ExpectTitle, "expect title \"T\"", "the front dialog's title is T", "expect title \"Language\""},
    {Verb::ExpectItemText, "expect item N \"T\"", "item N of the front dialog reads T",
     "expect item 2 \"Cancel\""},
    {Verb::ExpectItemState, "expect item N hidden|shown|enabled|disabled", "item N of the front dialog is so",
     "expect item 1 enabled"},
    {Verb::ExpectListRows, "expect list N rows K", "list N of the front dialog has K rows",
     "expect list 3 rows 7"},
    {Verb::ExpectListSelected, "expect list N selected ROW", "row ROW of list N is selected (0: none)",
     "expect list 3 selected 2"},
    {Verb::Click, "click N", "click item N of the front dialog", "click 1"},
    {Verb::Select, "select N ROW", "select row ROW of list N of the front dialog", "select 3 1"},
    {Verb::Close, "close", "close the front dialog with its close box", "close"},
    {Verb::ExpectAlert, "expect alert \"LARGE\" \"SMALL\"", "an alert with these two texts is open",
     "expect alert \"No connection\" \"Try again later.\""},
    {Verb::ExpectAlert, "expect alert \"TITLE\" \"LARGE\" \"SMALL\"",
     "an alert with this title and these two texts is open",
     "expect alert \"Not saved\" \"The disk is full.\" \"\""},
    {Verb::Ok, "ok", "press the first button of the open alert", "ok"},
    {Verb::AnswerSave, "answer save \"PATH\"|cancel",
     "answer the waiting save dialog with PATH, or cancel it", "answer save \"/tmp/list.txt\""},
    {Verb::AnswerFolder, "answer folder \"PATH\"|cancel",
     "answer the waiting folder dialog with PATH, or cancel it", "answer folder cancel"},
    {Verb::ExpectOpened, "expect opened \"TEXT\"", "the add-on asked the host to open TEXT",
     "expect opened \"https://example.com/\""},
    {Verb::WaitDownload, "wait download",
     "turn the run loop until the add-on's transfer has ended (90 s at most)", "wait download"},
    {Verb::ExpectDialogState, "expect dialog RESID shown|hidden|closed",
     "dialog RESID is open and shown, open and hidden, or not open", "expect dialog 32755 hidden"},
    {Verb::Project, "project \"PATH\"|untitled", "the open project is the file PATH, or untitled",
     "project \"/tmp/House.pln\""},
    {Verb::ExpectEngine, "expect engine \"NAME\"", "the current rendering engine's menu name is NAME",
     "expect engine \"Sketch Engine\""},
    {Verb::Command, "command DEVID LOCALID \"CMD\"", "another add-on answers the four-character command CMD",
     "command 1 2 \"SUIT\""},
    {Verb::Library, "library \"DIR\"", "make the folder DIR the last active library",
     "library \"/tmp/Parts\""},
    {Verb::Missing, "missing \"NAME\"", "the open project uses the part NAME, which no library holds",
     "missing \"Old Chair\""},
    {Verb::Libraries, "libraries",
     "list the active libraries, the parts each brought, and the missing definitions", "libraries"},
    {Verb::ExpectLibraries, "expect libraries \"DIR\"...",
     "the active library folders are these, in this order (none: no folder is active)",
     "expect libraries \"/tmp/Parts\" \"/tmp/More Parts\""},
    {Verb::Picture, "picture \"FILE\"|FILE",
     "write the front dialog's picture to FILE, as PNG (quotes only for a FILE with blanks)",
     "picture about.png"},
};

// What each number of a form may be; a number outside its range is a malformed line, so that a
// script never names a different menu or item than the one written. Unknown placeholders take kAnyNumber.
struct Placeholder {
    const char* name;
    Int64 min, max;
};
const Placeholder kPlaceholders[] = {
    {"ITEM", 1, 32767},       {"RESID", 1, 32767},        {"N", 1, 32767}, {"ROW", 0, 32767}, {"K", 0, 32767},
    {"DEVID", 0, 4294967295}, {"LOCALID", 0, 4294967295},
};
const Placeholder kAnyNumber = {"", 0, 2147483647};

const Placeholder& RangeOf(const std::string& name) {
    for (const Placeholder& p : kPlaceholders)
        if (name == p.name)
            return p;
    return kAnyNumber;
}

struct Token {
    enum Kind { Word, Number, String } kind;
    std::string text;
    Int64 number = 0; // saturates at kTooLarge
};
const Int64 kTooLarge = 999999999999999999;

bool Tokenize(const std::string& text, std::vector<Token>* tokens, std::string* source, std::string* error) {
    size_t i = 0;
    size_t end = 0; // just after the last token read
    while (true) {
        while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
            ++i;
        if (i >= text.size() || text[i] == '#')
            break;
        const size_t start = i;
        Token token{Token::Word, ""};
        if (text[i] == '"') {
            token.kind = Token::String;
            for (++i; i < text.size() && text[i] != '"'; ++i) {
                if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '"' || text[i + 1] == '\\'))
                    ++i;
                else if (text[i] == '\\') {
                    *error = "unknown escape in string (only \\\" and \\\\)";
                    return false;
                }
                token.text += text[i];
            }
            if (i >= text.size()) {
                *error = "unterminated string";
                return false;
            }
            ++i;
        } else {
            while (i < text.size() && text[i] != ' ' && text[i] != '\t' && text[i] != '"')
                ++i;
            token.text = text.substr(start, i - start);
            if (token.text.find_first_not_of("0123456789") == std::string::npos) {
                token.kind = Token::Number;
                for (char digit : token.text)
                    token.number =
                        token.number >= kTooLarge / 10 ? kTooLarge : token.number * 10 + (digit - '0');
            }
        }
        tokens->push_back(token);
        end = i;
    }
    *source = text.substr(0, end);
    return true;
}

std::vector<std::string> Words(const std::string& s, char separator) {
    std::vector<std::string> words;
    size_t start = 0;
    for (size_t end; (end = s.find(separator, start)) != std::string::npos; start = end + 1)
        words.push_back(s.substr(start, end - start));
    words.push_back(s.substr(start));
    return words;
}

bool IsPlaceholder(const std::string& word) {
    return word.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos;
}

// Each form's pattern split into its words, once.
const std::vector<std::string>& PartsOf(size_t form) {
    static const std::vector<std::vector<std::string>> parts = [] {
        std::vector<std::vector<std::string>> all;
        for (const Form& f : kForms)
            all.push_back(Words(f.pattern, ' '));
        return all;
    }();
    return parts[form];
}

// True when `word` is one of the `|`-separated choices of `part`; a choice in quotes stands for
// any string token, an upper-case choice for any token that is not a string.
bool MatchesChoice(const std::string& part, const Token& token) {
    for (size_t start = 0;;) {
        const size_t end = std::min(part.find('|', start), part.size());
        const std::string choice = part.substr(start, end - start);
        if (choice[0] == '"' ? token.kind == Token::String
                             : token.kind != Token::String && (IsPlaceholder(choice) || token.text == choice))
            return true;
        if (end == part.size())
            return false;
        start = end + 1;
    }
}

// Matches the tokens against one form, filling the action's numbers and texts. A line of the form's
// shape with a number out of range does not match; `range` then says which. A last part ending in
// "..." stands for any number of such parts, none included.
bool Matches(size_t formIndex, const std::vector<Token>& tokens, Action* action, std::string* range) {
    const Form& form = kForms[formIndex];
    const std::vector<std::string>& parts = PartsOf(formIndex);
    const std::string& last = parts.back();
    const bool repeats = last.size() > 3 && last.compare(last.size() - 3, 3, "...") == 0;
    const size_t fixed = parts.size() - (repeats ? 1 : 0);
    if (repeats ? tokens.size() < fixed : tokens.size() != fixed)
        return false;
    const std::string repeated = repeats ? last.substr(0, last.size() - 3) : std::string();
    action->numbers.clear();
    action->texts.clear();
    std::string outOfRange;
    for (size_t i = 0; i < tokens.size(); ++i) {
        const Token& token = tokens[i];
        const std::string& part = i < fixed ? parts[i] : repeated;
        if (IsPlaceholder(part)) {
            if (token.kind != Token::Number)
                return false;
            const Placeholder& p = RangeOf(part);
            if ((token.number < p.min || token.number > p.max) && outOfRange.empty())
                outOfRange = part + " is " + std::to_string(p.min) + " to " + std::to_string(p.max) +
                             ", not " + Shown(token.text, 20) + " (" + form.pattern + ")";
            action->numbers.push_back(token.number);
            continue;
        }
        if (!MatchesChoice(part, token))
            return false;
        if (part.find_first_of("|\"") != std::string::npos)
            action->texts.push_back(token.text);
    }
    if (!outOfRange.empty()) {
        if (range->empty())
            *range = outOfRange;
        return false;
    }
    action->verb = form.verb;
    return true;
}

// Where the line holds a byte no script line may hold, its message.
bool ControlByte(const std::string& text, std::string* error) {
    for (size_t i = 0; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if ((c < 0x20 && c != '\t') || c == 0x7F) {
            *error = "control byte " + Shown(text.substr(i, 1)) + " at column " + std::to_string(i + 1) +
                     " (a script is text)";
            return true;
        }
    }
    return false;
}

} // namespace

std::string Shown(const std::string& text, size_t limit) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string shown;
    for (size_t i = 0; i < text.size(); ++i) {
        if (i == limit)
            return shown + "...";
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c < 0x20 || c == 0x7F)
            shown += std::string("\\x") + kHex[c >> 4] + kHex[c & 15];
        else
            shown += text[i];
    }
    return shown;
}

ParseResult ParseAction(const std::string& line, Action* action, std::string* error) {
    std::vector<Token> tokens;
    action->source.clear();
    const bool crlf = !line.empty() && line.back() == '\r';
    const std::string text = crlf ? line.substr(0, line.size() - 1) : line;
    if (ControlByte(text, error) || !Tokenize(text, &tokens, &action->source, error))
        return ParseResult::Malformed;
    action->source = Shown(action->source);
    if (tokens.empty())
        return ParseResult::Empty;
    std::string forms, range;
    size_t best = 0; // how many leading words the closest forms share with the line
    for (size_t f = 0; f < std::size(kForms); ++f) {
        const Form& form = kForms[f];
        if (Matches(f, tokens, action, &range)) {
            if (action->verb == Verb::Command && action->texts[0].size() != 4) {
                *error = "a command is four characters, not \"" + Shown(action->texts[0], 40) + "\"";
                return ParseResult::Malformed;
            }
            return ParseResult::Parsed;
        }
        const std::vector<std::string>& parts = PartsOf(f);
        size_t shared = 0;
        while (shared < parts.size() && shared < tokens.size() && parts[shared] == tokens[shared].text)
            ++shared;
        if (shared > best)
            forms.clear(), best = shared;
        if (shared == best && shared > 0)
            forms += std::string(forms.empty() ? "" : " | ") + form.pattern;
    }
    std::string verb = tokens[0].text;
    for (size_t i = 1; i < best; ++i)
        verb += " " + tokens[i].text;
    verb = Shown(verb, 40);
    *error = !range.empty()  ? "number out of range: " + range
             : forms.empty() ? "unknown verb '" + verb + "' (help lists the actions)"
                             : "malformed '" + verb + "' line; expected " + forms;
    return ParseResult::Malformed;
}

std::string ActionHelp() {
    std::string help;
    for (const Form& form : kForms)
        help +=
            std::string("  ") + form.pattern + "\n      " + form.meaning + "; e.g. " + form.example + "\n";
    help += "Numbers:";
    for (const Placeholder& p : kPlaceholders)
        help += std::string(" ") + p.name + " " + std::to_string(p.min) + "-" + std::to_string(p.max);
    return help + "\n";
}

std::vector<std::pair<Verb, std::string>> ActionExamples() {
    std::vector<std::pair<Verb, std::string>> examples;
    for (const Form& form : kForms)
        examples.emplace_back(form.verb, form.example);
    return examples;
}

} // namespace achost
