#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Zantrix::Math::Xpr {

/// One word of a formula.
struct Token {
    enum class Kind {
        Number,
        Identifier,
        Text,    // `text` is what stands between the quotes
        Symbol,  // one of + - * / ( ) , =
        End,
        Bad  // no word of the language; `problem` tells why
    };

    Kind kind = Kind::End;
    std::string_view text{};
    double number = 0.0;
    std::size_t offset = 0;  // of the word's first byte; of a bad one, of the byte that is wrong
    std::string problem{};

    bool isSymbol(char symbol) const { return kind == Kind::Symbol && text.front() == symbol; }
};

/// Cuts a formula into words. A small value: a copy looks ahead.
class FormulaLexer {
public:
    /// The formula must outlive the lexer and its tokens.
    explicit FormulaLexer(std::string_view formula) : m_strFormula(formula) {}

    /// The next word; `End` for ever after the last one, and after a bad one.
    Token next();

private:
    Token number();
    Token text();
    Token bad(std::size_t offset, std::string problem);

    std::string_view m_strFormula;
    std::size_t m_uiPosition = 0;
};

/// Whether a text is an identifier: a letter or "_", then letters, digits and "_", all ASCII.
bool isIdentifier(std::string_view text);

}  // namespace Zantrix::Math::Xpr
