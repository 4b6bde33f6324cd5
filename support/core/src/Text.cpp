#include <murvane/core/Text.h>

#include <algorithm>
#include <array>
#include <locale>
#include <numeric>
#include <utility>
#include <vector>

namespace Zantrix::Text {

namespace {

constexpr std::string_view c_strBlanks = " \t\r\n\f\v";

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool sameButForCase(char a, char b) {
    return lower(a) == lower(b);
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(c_strBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(c_strBlanks) - first + 1);
}

std::string lowerCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), upper);
    return result;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), sameButForCase);
}

std::istringstream reader(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    return stream;
}

std::string shortest(double number) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::size_t editDistance(std::string_view a, std::string_view b) {
    // last[j]: between the part of a seen so far and the first j characters of b.
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::vector<std::size_t> row(b.size() + 1, i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (sameButForCase(a[i - 1], b[j - 1]) ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && sameButForCase(a[i - 1], b[j - 2]) && sameButForCase(a[i - 2], b[j - 1])) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
        beforeLast = std::exchange(last, std::move(row));
    }
    return last.back();
}

}  // namespace Zantrix::Text
