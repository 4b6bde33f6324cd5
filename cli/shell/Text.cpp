#include "shell/Text.h"

#include "shell/ShortestDouble.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace Zantrix::Cli {

namespace {

constexpr char c_hexDigits[] = "0123456789abcdef";

// The length of the UTF-8 character that `text` begins with; 0 when it begins with none.
std::size_t utf8Length(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    const std::size_t length = first < 0x80 ? 1 : first < 0xc2 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    if (length == 0 || first > 0xf4 || text.size() < length) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80) {
            return 0;
        }
    }
    // Too long a form, a surrogate, or beyond the last character.
    const bool outOfRange = length >= 3 && ((first == 0xe0 && byte(1) < 0xa0) || (first == 0xed && byte(1) > 0x9f) ||
                                            (first == 0xf0 && byte(1) < 0x90) || (first == 0xf4 && byte(1) > 0x8f));
    return outOfRange ? 0 : length;
}

}  // namespace

std::string csvField(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
        return std::string(text);
    }
    std::string field = "\"";
    for (const char c : text) {
        field += c == '"' ? "\"\"" : std::string(1, c);
    }
    return field + '"';
}

std::string jsonString(std::string_view text) {
    std::string json = "\"";
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        const auto c = static_cast<unsigned char>(text.front());
        if (length == 0) {
            json += "\\ufffd";
        } else if (c == '"' || c == '\\') {
            json += {'\\', static_cast<char>(c)};
        } else if (c < ' ' || c == 0x7f) {
            json += {'\\', 'u', '0', '0', c_hexDigits[c >> 4], c_hexDigits[c & 15]};
        } else {
            json += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return json + '"';
}

std::string jsonNumber(double value) {
    return std::isfinite(value) ? shortest(value) : "null";
}

std::string escaped(std::string_view text) {
    std::string line;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\t' || c == '\n' || c == '\r' || c == '\\') {
            line += {'\\', c == '\t' ? 't' : c == '\n' ? 'n' : c == '\r' ? 'r' : '\\'};
        } else if (byte < ' ' || byte == 0x7f) {
            line += {'\\', 'x', c_hexDigits[byte >> 4], c_hexDigits[byte & 15]};
        } else {
            line += c;
        }
    }
    return line;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

void appendUtf8(std::string& text, unsigned code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    const unsigned length = code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
    const unsigned mark = 0xf00u >> length;  // as many ones in the first byte as there are bytes
    text += static_cast<char>((mark & 0xffu) | (code >> (6 * (length - 1))));
    for (unsigned i = length - 1; i-- > 0;) {
        text += static_cast<char>(0x80u | ((code >> (6 * i)) & 0x3fu));
    }
}

std::string hexBytes(std::string_view text) {
    std::string hex;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        hex += {c_hexDigits[byte >> 4], c_hexDigits[byte & 15]};
    }
    return hex;
}

std::string shortest(double value) {
    std::array<char, c_iMaxNumberLength> text{};
    return {text.data(), writeShortest(text.data(), value)};
}

std::vector<std::string> nearWords(std::string_view word, const std::vector<std::string>& candidates) {
    constexpr std::size_t maxWords = 3;
    const std::string wanted = upperCase(word.substr(0, 100));
    std::vector<std::pair<std::size_t, std::string>> ranked;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = Text::editDistance(wanted, candidate);
        const bool isPart = wanted.size() >= 4 && upperCase(candidate).find(wanted) != std::string::npos;
        if (distance <= std::max<std::size_t>(2, wanted.size() / 3) || isPart) {
            ranked.emplace_back(distance, candidate);
        }
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> words;
    for (std::size_t i = 0; i < std::min(ranked.size(), maxWords); ++i) {
        words.push_back(ranked[i].second);
    }
    return words;
}

std::string join(const std::vector<std::string>& words, std::string_view separator) {
    std::string text;
    for (const std::string& word : words) {
        text += text.empty() ? word : std::string(separator) + word;
    }
    return text;
}

}  // namespace Zantrix::Cli
