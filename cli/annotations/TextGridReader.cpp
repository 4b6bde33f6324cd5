#include "annotations/LabelFormat.h"
#include "shell/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

/// TextGrids in their long and their short form are one format: texts in quotes, numbers and flags that stand alone,
/// and everything else is there for people.
namespace Zantrix::Cli {

namespace {

[[noreturn]] void refuseEncoding(const char* what) {
    throw LabelError(std::string("it is not ") + what + "; a TextGrid is UTF-8, or UTF-16 with a byte order mark");
}

std::string utf8OfUtf16(std::string_view bytes, bool isBigEndian) {
    if (bytes.size() % 2 != 0) {
        refuseEncoding("UTF-16, though it begins like that");
    }
    const auto unit = [&](std::size_t i) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        return isBigEndian ? first * 256u + second : second * 256u + first;
    };
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        unsigned code = unit(i);
        if (code >= 0xd800 && code < 0xe000) {
            const unsigned low = i + 2 < bytes.size() ? unit(i + 2) : 0;
            if (code >= 0xdc00 || low < 0xdc00 || low >= 0xe000) {
                refuseEncoding("UTF-16, though it begins like that");
            }
            code = 0x10000 + ((code - 0xd800) << 10) + (low - 0xdc00);
            i += 2;
        }
        appendUtf8(text, code);
    }
    return text;
}

std::string decode(std::string_view bytes) {
    if (bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff")) {
        return utf8OfUtf16(bytes.substr(2), bytes.starts_with("\xfe\xff"));
    }
    if (!isUtf8(bytes)) {
        refuseEncoding("UTF-8");
    }
    return std::string(withoutByteOrderMark(bytes));
}

struct Token {
    enum class Kind { Text, Number, Flag, End };

    Kind kind = Kind::End;
    std::string text;  ///< of a text, without its quotes, and of a flag
    double number = 0.0;
};

class Tokens {
public:
    explicit Tokens(std::string text) : m_strText(std::move(text)) {}

    std::string text(const char* what) { return next(Token::Kind::Text, what).text; }
    std::string flag(const char* what) { return next(Token::Kind::Flag, what).text; }
    double number(const char* what) { return next(Token::Kind::Number, what).number; }

    /// Nothing is allocated by this.
    std::uint64_t count(const char* what) {
        const double value = number(what);
        if (!(value >= 0.0) || value != std::floor(value) || value > std::numeric_limits<std::uint32_t>::max()) {
            fail(std::string(what) + " cannot be " + shortest(value));
        }
        return static_cast<std::uint64_t>(value);
    }

    [[noreturn]] void fail(const std::string& what) const {
        const auto lines =
            std::count(m_strText.begin(), m_strText.begin() + static_cast<std::ptrdiff_t>(m_uiToken), '\n');
        throw LabelError("line " + std::to_string(lines + 1) + ": " + what);
    }

private:
    Token next(Token::Kind kind, const char* what) {
        Token token;
        while (m_uiPosition < m_strText.size() && !takeToken(token)) {}
        if (token.kind != kind) {
            fail(std::string(what) + (token.kind == Token::Kind::End ? " is missing at the end" : " is needed here"));
        }
        return token;
    }

    /// Takes the next word; false when it is one for people.
    bool takeToken(Token& token) {
        constexpr std::string_view blanks = " \t\r\n";
        m_uiPosition = std::min(m_strText.find_first_not_of(blanks, m_uiPosition), m_strText.size());
        m_uiToken = m_uiPosition;
        if (m_uiPosition == m_strText.size()) {
            return false;
        }
        if (m_strText[m_uiPosition] == '"') {
            token.kind = Token::Kind::Text;
            token.text = takeText();
            return true;
        }
        if (m_strText[m_uiPosition] == '!') {
            m_uiPosition = std::min(m_strText.find('\n', m_uiPosition), m_strText.size());
            return false;
        }
        const std::size_t end = std::min(m_strText.find_first_of(blanks, m_uiPosition), m_strText.size());
        const std::string_view word = std::string_view(m_strText).substr(m_uiPosition, end - m_uiPosition);
        m_uiPosition = end;
        if (word.front() == '<' && word.back() == '>') {
            token.kind = Token::Kind::Flag;
            token.text = word;
            return true;
        }
        const auto [numberEnd, error] = std::from_chars(word.data(), word.data() + word.size(), token.number);
        const bool isNumber =
            error == std::errc() && numberEnd == word.data() + word.size() && std::isfinite(token.number);
        token.kind = isNumber ? Token::Kind::Number : Token::Kind::End;
        return isNumber;
    }

    std::string takeText() {
        std::string text;
        while (true) {
            const std::size_t begin = ++m_uiPosition;
            m_uiPosition = m_strText.find('"', begin);
            if (m_uiPosition == std::string::npos) {
                fail("a quote is not closed");
            }
            text.append(m_strText, begin, m_uiPosition - begin);
            ++m_uiPosition;
            if (m_uiPosition == m_strText.size() || m_strText[m_uiPosition] != '"') {
                return text;
            }
            text += '"';
        }
    }

    const std::string m_strText;
    std::size_t m_uiPosition = 0;
    std::size_t m_uiToken = 0;  // where the last one began
};

void readTier(Tokens& tokens, const std::vector<std::string>& wanted, std::vector<std::string>& names,
              std::vector<TimedLabel>& labels) {
    const std::string kind = tokens.text("the class of a tier");
    const bool isOfIntervals = kind == "IntervalTier";
    if (!isOfIntervals && kind != "TextTier") {
        tokens.fail("a tier is of the class IntervalTier or TextTier, not " + jsonString(kind));
    }
    names.push_back(tokens.text("the name of a tier"));
    const bool isWanted = wanted.empty() || std::find(wanted.begin(), wanted.end(), names.back()) != wanted.end();
    tokens.number("the start of a tier");
    tokens.number("the end of a tier");
    const std::uint64_t count = tokens.count("the size of a tier");
    for (std::uint64_t i = 0; i < count; ++i) {
        TimedLabel label;
        label.start = tokens.number(isOfIntervals ? "the start of an interval" : "the time of a point");
        label.stop = isOfIntervals ? tokens.number("the end of an interval") : label.start;
        label.label = tokens.text(isOfIntervals ? "the text of an interval" : "the mark of a point");
        if (isWanted && !(isOfIntervals && label.label.empty())) {
            labels.push_back(std::move(label));
        }
    }
}

}  // namespace

std::vector<TimedLabel> readTextGrid(std::string_view bytes, const std::vector<std::string>& tiers) {
    Tokens tokens(decode(bytes));
    const bool isTextFile = tokens.text("the file type \"ooTextFile\"").starts_with("ooTextFile");
    if (!isTextFile || tokens.text("the object class \"TextGrid\"") != "TextGrid") {
        tokens.fail("it is no TextGrid");
    }
    tokens.number("the start of the TextGrid");
    tokens.number("the end of the TextGrid");
    const bool hasTiers = tokens.flag("<exists>") == "<exists>";
    const std::uint64_t count = hasTiers ? tokens.count("the number of tiers") : 0;
    std::vector<std::string> names;
    std::vector<TimedLabel> labels;
    for (std::uint64_t i = 0; i < count; ++i) {
        readTier(tokens, tiers, names, labels);
    }
    for (const std::string& tier : tiers) {
        if (std::find(names.begin(), names.end(), tier) == names.end()) {
            throw LabelError("it has no tier " + jsonString(tier) +
                             (names.empty() ? "" : "; its tiers are " + join(names, ", ")));
        }
    }
    const auto byStart = [](const TimedLabel& a, const TimedLabel& b) { return a.start < b.start; };
    std::stable_sort(labels.begin(), labels.end(), byStart);
    return labels;
}

}  // namespace Zantrix::Cli
