#include "wmi/Wql.h"

#include <algorithm>
#include <cwctype>

#include "machine/Text.h"

namespace orvel::simulation {

namespace {

enum class TokenKind { Word, Text, Symbol };

struct Token {
    TokenKind kind;
    std::wstring text;
};

using Tokens = std::vector<Token>;

bool IsWordCharacter(wchar_t character)
{
    return std::iswalnum(character) != 0 || character == L'_';
}

std::wstring TakeWord(std::wstring_view& rest)
{
    const auto end = std::ranges::find_if_not(rest, IsWordCharacter);
    std::wstring word(rest.begin(), end);
    rest.remove_prefix(word.size());
    return word;
}

/// Takes a text up to its closing apostrophe; empty if there is none. A backslash escapes an apostrophe or a backslash.
std::optional<std::wstring> TakeText(std::wstring_view& rest)
{
    std::wstring text;
    rest.remove_prefix(1);
    while (!rest.empty() && rest.front() != L'\'') {
        const bool isEscape = rest.starts_with(L"\\\\") || rest.starts_with(L"\\'");
        rest.remove_prefix(isEscape ? 1 : 0);
        text += rest.front();
        rest.remove_prefix(1);
    }
    if (rest.empty()) {
        return std::nullopt;
    }
    rest.remove_prefix(1);
    return text;
}

std::optional<Token> TakeToken(std::wstring_view& rest)
{
    if (IsWordCharacter(rest.front())) {
        return Token{TokenKind::Word, TakeWord(rest)};
    }
    if (rest.front() == L'\'') {
        auto text = TakeText(rest);
        return text ? std::optional(Token{TokenKind::Text, std::move(*text)}) : std::nullopt;
    }
    if (std::wstring_view(L"*,=").find(rest.front()) == std::wstring_view::npos) {
        return std::nullopt;
    }
    Token symbol{TokenKind::Symbol, std::wstring(1, rest.front())};
    rest.remove_prefix(1);
    return symbol;
}

std::optional<Tokens> Tokenize(std::wstring_view rest)
{
    Tokens tokens;
    while (true) {
        rest.remove_prefix(static_cast<size_t>(std::ranges::find_if_not(rest, std::iswspace) - rest.begin()));
        if (rest.empty()) {
            return tokens;
        }
        auto token = TakeToken(rest);
        if (!token) {
            return std::nullopt;
        }
        tokens.push_back(std::move(*token));
    }
}

/// Reads the tokens in order; every operation fails, without advancing, if the next token is not the expected one.
class Parser {
public:
    explicit Parser(Tokens all) : tokens(std::move(all)) {}

    bool AtEnd() const { return position == tokens.size(); }

    bool Keyword(const wchar_t* keyword)
    {
        return Take(TokenKind::Word, [keyword](const Token& token) { return FoldCase(token.text) == keyword; }) != nullptr;
    }

    bool Symbol(const wchar_t* symbol)
    {
        return Take(TokenKind::Symbol, [symbol](const Token& token) { return token.text == symbol; }) != nullptr;
    }

    bool Name(std::wstring& target) { return Store(TokenKind::Word, target); }
    bool Text(std::wstring& target) { return Store(TokenKind::Text, target); }

private:
    template <typename Predicate>
    const Token* Take(TokenKind kind, Predicate&& fits)
    {
        if (AtEnd() || tokens[position].kind != kind || !fits(tokens[position])) {
            return nullptr;
        }
        return &tokens[position++];
    }

    bool Store(TokenKind kind, std::wstring& target)
    {
        const Token* const token = Take(kind, [](const Token&) { return true; });
        if (token) {
            target = token->text;
        }
        return token != nullptr;
    }

    Tokens tokens;
    size_t position = 0;
};

bool ParseProperties(Parser& parser, WqlQuery& query)
{
    if (parser.Symbol(L"*")) {
        return true;
    }
    do {
        if (!parser.Name(query.properties.emplace_back())) {
            return false;
        }
    } while (parser.Symbol(L","));
    return true;
}

bool ParseCondition(Parser& parser, WqlCondition& condition)
{
    if (!parser.Name(condition.property)) {
        return false;
    }
    condition.isPattern = parser.Keyword(L"like");
    return (condition.isPattern || parser.Symbol(L"=")) && parser.Text(condition.text);
}

bool ParseConditions(Parser& parser, WqlQuery& query)
{
    if (!parser.Keyword(L"where")) {
        return true;
    }
    do {
        if (!ParseCondition(parser, query.conditions.emplace_back())) {
            return false;
        }
    } while (parser.Keyword(L"and"));
    return true;
}

/// Compares folded texts. After a mismatch, the last % matches one more character.
bool Matches(std::wstring_view text, std::wstring_view pattern)
{
    size_t at = 0;
    size_t in = 0;
    size_t lastPercent = std::wstring_view::npos;
    size_t runEnd = 0;
    while (at < text.size()) {
        if (in < pattern.size() && pattern[in] == L'%') {
            lastPercent = in++;
            runEnd = at;
        } else if (in < pattern.size() && (pattern[in] == L'_' || pattern[in] == text[at])) {
            ++in;
            ++at;
        } else if (lastPercent != std::wstring_view::npos) {
            in = lastPercent + 1;
            at = ++runEnd;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'%', in) == std::wstring_view::npos;
}

} // namespace

std::optional<WqlQuery> ParseWql(std::wstring_view text)
{
    auto tokens = Tokenize(text);
    if (!tokens) {
        return std::nullopt;
    }
    Parser parser(std::move(*tokens));
    WqlQuery query;
    const bool isQuery = parser.Keyword(L"select") && ParseProperties(parser, query) && parser.Keyword(L"from") &&
                         parser.Name(query.className) && ParseConditions(parser, query) && parser.AtEnd();
    return isQuery ? std::optional(std::move(query)) : std::nullopt;
}

bool Fulfils(const WqlCondition& condition, std::wstring_view text)
{
    const std::wstring folded = FoldCase(text);
    const std::wstring wanted = FoldCase(condition.text);
    return condition.isPattern ? Matches(folded, wanted) : folded == wanted;
}

bool Shows(const WqlQuery& query, std::wstring_view property)
{
    const auto isProperty = [folded = FoldCase(property)](const std::wstring& name) { return FoldCase(name) == folded; };
    return query.properties.empty() || std::ranges::any_of(query.properties, isProperty);
}

} // namespace orvel::simulation
