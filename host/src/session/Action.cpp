#include "achost/Action.hpp"

#include <cctype>

namespace achost {

namespace {

// The forms of every verb. In a form, an upper-case word stands for a number, a word in quotes for a
// quoted string, `a|b` for one of the words given, `"X"|w` for a string or the word w.
struct Form {
    Verb verb;
    const char* pattern;
};
const Form kForms[] = {
    {Verb::Menu, "menu ITEM"},
    {Verb::MenuOf, "menu RESID ITEM"},
    {Verb::ExpectMenuText, "expect menu RESID ITEM \"TEXT\""},
    {Verb::ExpectMenuMark, "expect menu RESID ITEM checked|unchecked"},
    {Verb::ExpectRegistered, "expect registered RESID"},
    {Verb::Reload, "reload"},
    {Verb::Quit, "quit"},
    {Verb::Help, "help"},
    {Verb::ExpectDialog, "expect dialog RESID"},
    {Verb::ExpectTitle, "expect title \"T\""},
    {Verb::ExpectItemText, "expect item N \"T\""},
    {Verb::ExpectItemState, "expect item N hidden|shown|enabled|disabled"},
    {Verb::ExpectListRows, "expect list N rows K"},
    {Verb::ExpectListSelected, "expect list N selected ROW"},
    {Verb::Click, "click N"},
    {Verb::Select, "select N ROW"},
    {Verb::Close, "close"},
    {Verb::ExpectAlert, "expect alert \"LARGE\" \"SMALL\""},
    {Verb::Ok, "ok"},
    {Verb::AnswerSave, "answer save \"PATH\"|cancel"},
    {Verb::AnswerFolder, "answer folder \"PATH\"|cancel"},
    {Verb::ExpectOpened, "expect opened \"TEXT\""},
    {Verb::WaitDownload, "wait download"},
    {Verb::Command, "command DEVID LOCALID \"CMD\""},
};

struct Token {
    enum Kind { Word, Number, String } kind;
    std::string text;
    Int64 number = 0;
};

bool Tokenize(const std::string& text, std::vector<Token>* tokens, std::string* source, std::string* error) {
    size_t i = 0;
    while (true) {
        while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i])))
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
            while (i < text.size() && !std::isspace(static_cast<unsigned char>(text[i])) && text[i] != '"')
                ++i;
            token.text = text.substr(start, i - start);
            const bool digits = token.text.find_first_not_of("0123456789") == std::string::npos;
            if (digits && token.text.size() <= 10) { // every 32-bit identifier
                token.kind = Token::Number;
                token.number = std::stoll(token.text);
            }
        }
        tokens->push_back(token);
        *source = text.substr(0, i);
    }
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

// Matches the tokens against one form, filling the action's numbers and texts.
bool Matches(const Form& form, const std::vector<Token>& tokens, Action* action) {
    const auto parts = Words(form.pattern, ' ');
    if (parts.size() != tokens.size())
        return false;
    action->numbers.clear();
    action->texts.clear();
    for (size_t i = 0; i < parts.size(); ++i) {
        const Token& token = tokens[i];
        if (IsPlaceholder(parts[i])) {
            if (token.kind != Token::Number)
                return false;
            action->numbers.push_back(token.number);
            continue;
        }
        bool matched = false;
        for (const auto& choice : Words(parts[i], '|')) {
            const bool isString = choice.front() == '"';
            matched = matched || (isString ? token.kind == Token::String
                                           : token.kind == Token::Word && token.text == choice);
        }
        if (!matched)
            return false;
        if (parts[i].find_first_of("|\"") != std::string::npos)
            action->texts.push_back(token.text);
    }
    action->verb = form.verb;
    return true;
}

} // namespace

ParseResult ParseAction(const std::string& text, Action* action, std::string* error) {
    std::vector<Token> tokens;
    action->source.clear();
    if (!Tokenize(text, &tokens, &action->source, error))
        return ParseResult::Malformed;
    if (tokens.empty())
        return ParseResult::Empty;
    std::string forms;
    size_t best = 0; // how many leading words the closest forms share with the line
    for (const Form& form : kForms) {
        if (Matches(form, tokens, action))
            return ParseResult::Parsed;
        const auto parts = Words(form.pattern, ' ');
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
    *error = forms.empty() ? "unknown verb '" + verb + "' (help lists the actions)"
                           : "malformed '" + verb + "' line; expected " + forms;
    return ParseResult::Malformed;
}

std::vector<std::string> ActionForms() {
    std::vector<std::string> forms;
    for (const Form& form : kForms)
        forms.push_back(form.pattern);
    return forms;
}

} // namespace achost
