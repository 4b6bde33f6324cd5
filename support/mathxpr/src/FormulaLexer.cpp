#include "FormulaLexer.h"

#include <murvane/core/Text.h>
#include <murvane/mathxpr/FormulaError.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace Zantrix::Math::Xpr {

namespace {

using Text::isDigit;

constexpr bool startsIdentifier(char c) {
    return Text::isLetter(c) || c == '_';
}

constexpr bool continuesIdentifier(char c) {
    return startsIdentifier(c) || isDigit(c);
}

constexpr bool isControl(char c) {
    return (c >= '\0' && c < ' ') || c == '\x7f';
}

std::string describeByte(char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    if (Text::isPrintable(c) && c != ' ') {
        return {'"', c, '"'};
    }
    const auto byte = static_cast<unsigned char>(c);
    return {'b', 'y', 't', 'e', ' ', '0', 'x', digits[byte >> 4], digits[byte & 15]};
}

}  // namespace

bool isIdentifier(std::string_view text) {
    return !text.empty() && startsIdentifier(text.front()) &&
           std::all_of(text.begin(), text.end(), continuesIdentifier);
}

Token FormulaLexer::next() {
    m_uiPosition = std::min(m_strFormula.find_first_not_of(" \t\r\n", m_uiPosition), m_strFormula.size());
    if (m_uiPosition == m_strFormula.size()) {
        return {.kind = Token::Kind::End, .offset = m_uiPosition};
    }
    const std::string_view rest = m_strFormula.substr(m_uiPosition);
    const char first = rest.front();
    if (startsIdentifier(first)) {
        const auto end = std::find_if_not(rest.begin(), rest.end(), continuesIdentifier);
        const std::string_view name = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
        return {.kind = Token::Kind::Identifier,
                .text = name,
                .offset = std::exchange(m_uiPosition, m_uiPosition + name.size())};
    }
    if (isDigit(first) || (first == '.' && rest.size() > 1 && isDigit(rest[1]))) {
        return number();
    }
    if (first == '"') {
        return text();
    }
    if (std::string_view("+-*/(),=").find(first) != std::string_view::npos) {
        return {.kind = Token::Kind::Symbol, .text = rest.substr(0, 1), .offset = m_uiPosition++};
    }
    return bad(m_uiPosition, "unexpected " + describeByte(first));
}

Token FormulaLexer::number() {
    const std::string_view rest = m_strFormula.substr(m_uiPosition);
    double value = 0.0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    const std::string_view digits = rest.substr(0, static_cast<std::size_t>(end - rest.data()));
    if (error != std::errc()) {
        return bad(m_uiPosition, "the number " + excerpt(digits) + " is out of range");
    }
    return {.kind = Token::Kind::Number,
            .text = digits,
            .number = value,
            .offset = std::exchange(m_uiPosition, m_uiPosition + digits.size())};
}

Token FormulaLexer::text() {
    const std::size_t begin = m_uiPosition + 1;
    const auto closing = std::find_if(m_strFormula.begin() + static_cast<std::ptrdiff_t>(begin), m_strFormula.end(),
                                      [](char c) { return c == '"' || isControl(c); });
    const auto end = static_cast<std::size_t>(closing - m_strFormula.begin());
    if (end == m_strFormula.size()) {
        return bad(m_uiPosition, "the text that begins here lacks its closing \"");
    }
    if (m_strFormula[end] != '"') {
        return bad(end, "unexpected " + describeByte(m_strFormula[end]) + " in a text");
    }
    const std::string_view content = m_strFormula.substr(begin, end - begin);
    return {.kind = Token::Kind::Text, .text = content, .offset = std::exchange(m_uiPosition, end + 1)};
}

Token FormulaLexer::bad(std::size_t offset, std::string problem) {
    m_uiPosition = m_strFormula.size();
    return {.kind = Token::Kind::Bad, .offset = offset, .problem = std::move(problem)};
}

}  // namespace Zantrix::Math::Xpr
