#include <murvane/core/Text.h>
#include <murvane/mathxpr/FormulaError.h>

#include <algorithm>
#include <utility>

namespace Zantrix::Math::Xpr {

namespace {

constexpr std::size_t c_uiExcerpt = 40;
constexpr std::size_t c_uiBeforeCaret = 60;
constexpr std::size_t c_uiAfterCaret = 40;
constexpr std::string_view c_strCut = "...";

std::string printable(std::string_view text) {
    std::string result(text);
    // A tab is as wide as the terminal likes; a blank keeps the caret in place.
    std::replace(result.begin(), result.end(), '\t', ' ');
    std::replace_if(
        result.begin(), result.end(), [](char c) { return !Text::isPrintable(c); }, '?');
    return result;
}

}  // namespace

std::string excerpt(std::string_view text) {
    return text.size() <= c_uiExcerpt ? printable(text) : printable(text.substr(0, c_uiExcerpt)).append(c_strCut);
}

FormulaError makeFormulaError(std::string_view formula, std::size_t offset, std::string message) {
    offset = std::min(offset, formula.size());
    const std::string_view before = formula.substr(0, offset);
    const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
    const std::size_t lineEnd = std::min(formula.find('\n', offset), formula.size());

    FormulaError error;
    error.line = 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    error.column = offset - lineStart + 1;
    error.message = std::move(message);

    const std::size_t from = offset - lineStart > c_uiBeforeCaret ? offset - c_uiBeforeCaret : lineStart;
    const std::size_t to = lineEnd - offset > c_uiAfterCaret ? offset + c_uiAfterCaret : lineEnd;
    const std::string_view cutBefore = from > lineStart ? c_strCut : "";
    const std::string_view cutAfter = to < lineEnd ? c_strCut : "";
    if (formula.find('\n') != std::string_view::npos) {
        error.rendered.append("line ").append(std::to_string(error.line)).append(", ");
    }
    error.rendered.append("column ").append(std::to_string(error.column)).append(": ").append(error.message);
    error.rendered.append("\n").append(cutBefore).append(printable(formula.substr(from, to - from))).append(cutAfter);
    error.rendered.append("\n").append(cutBefore.size() + offset - from, ' ').append("^");
    return error;
}

}  // namespace Zantrix::Math::Xpr
