#include "shell/JsonCursor.h"

#include "shell/Text.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace Zantrix::Cli {

namespace {

// Skipping is recursive; no text that means anything goes this deep.
constexpr unsigned c_uiMaxDepth = 64;

constexpr unsigned c_uiHighSurrogates = 0xd800;
constexpr unsigned c_uiLowSurrogates = 0xdc00;
constexpr unsigned c_uiEndOfSurrogates = 0xe000;

std::size_t numberLength(std::string_view text) {
    std::size_t i = 0;
    const auto digits = [&] {
        const std::size_t begin = i;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
            ++i;
        }
        return i - begin;
    };
    const auto takeIf = [&](std::string_view any) {
        const bool isThere = i < text.size() && any.find(text[i]) != std::string_view::npos;
        i += isThere ? 1 : 0;
        return isThere;
    };
    takeIf("-");
    const bool beginsWithZero = i < text.size() && text[i] == '0';
    const std::size_t whole = digits();
    bool isNumber = whole == 1 || (whole > 1 && !beginsWithZero);
    isNumber = isNumber && (!takeIf(".") || digits() > 0);
    if (isNumber && takeIf("eE")) {
        takeIf("+-");
        isNumber = digits() > 0;
    }
    return isNumber ? i : 0;
}

}  // namespace

JsonCursor::JsonCursor(std::string_view text) : m_text(text) {
    if (!isUtf8(text)) {
        throw JsonError("it is not UTF-8");
    }
}

char JsonCursor::peek() {
    skipBlanks();
    if (m_uiPosition == m_text.size()) {
        fail("the text ends too early");
    }
    return m_text[m_uiPosition];
}

void JsonCursor::beginObject() {
    begin('{');
}

bool JsonCursor::nextMember(std::string& key) {
    if (!next('}')) {
        return false;
    }
    key = readString();
    expect(':');
    return true;
}

void JsonCursor::beginArray() {
    begin('[');
}

bool JsonCursor::nextItem() {
    return next(']');
}

std::string JsonCursor::readString() {
    expect('"');
    std::string text;
    while (true) {
        const std::size_t end = std::min(m_text.find_first_of("\"\\", m_uiPosition), m_text.size());
        const std::string_view part = m_text.substr(m_uiPosition, end - m_uiPosition);
        if (std::any_of(part.begin(), part.end(), [](unsigned char c) { return c < ' '; })) {
            fail("a control character in a string");
        }
        text += part;
        m_uiPosition = end;
        if (end == m_text.size()) {
            fail("a string is not closed");
        }
        if (takeIf('"')) {
            return text;
        }
        readEscape(text);
    }
}

double JsonCursor::readNumber() {
    peek();
    const std::string_view number = m_text.substr(m_uiPosition, numberLength(m_text.substr(m_uiPosition)));
    double value = 0.0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (number.empty() || error != std::errc()) {
        fail(number.empty() ? "a number is needed here" : "the number " + std::string(number) + " is out of range");
    }
    m_uiPosition += number.size();
    return value;
}

void JsonCursor::skipValue() {
    skip(0);
}

void JsonCursor::expectEnd() {
    skipBlanks();
    if (m_uiPosition != m_text.size()) {
        fail("something follows the end");
    }
}

void JsonCursor::fail(const std::string& what) const {
    const std::string_view before = m_text.substr(0, m_uiPosition);
    throw JsonError("line " + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) + ": " + what);
}

void JsonCursor::skipBlanks() {
    m_uiPosition = std::min(m_text.find_first_not_of(" \t\r\n", m_uiPosition), m_text.size());
}

bool JsonCursor::takeIf(char c) {
    const bool isThere = m_uiPosition < m_text.size() && m_text[m_uiPosition] == c;
    m_uiPosition += isThere ? 1 : 0;
    return isThere;
}

void JsonCursor::expect(char c) {
    peek();
    if (!takeIf(c)) {
        fail(std::string("'") + c + "' is needed here");
    }
}

void JsonCursor::begin(char opening) {
    expect(opening);
    m_bIsFirst = true;
}

bool JsonCursor::next(char closing) {
    const bool isFirst = m_bIsFirst;
    m_bIsFirst = false;
    peek();
    if (takeIf(closing)) {
        return false;
    }
    if (!isFirst) {
        expect(',');
    }
    return true;
}

void JsonCursor::readEscape(std::string& text) {
    constexpr std::string_view names = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    takeIf('\\');
    if (!takeIf('u')) {
        const char name = m_uiPosition < m_text.size() ? m_text[m_uiPosition] : '\0';
        const std::size_t which = names.find(name);
        if (which == std::string_view::npos) {
            fail("an unknown escape in a string");
        }
        text += meanings[which];
        ++m_uiPosition;
        return;
    }
    unsigned code = readHex();
    if (code >= c_uiHighSurrogates && code < c_uiLowSurrogates && takeIf('\\') && takeIf('u')) {
        const unsigned low = readHex();
        const bool isPair = low >= c_uiLowSurrogates && low < c_uiEndOfSurrogates;
        code = isPair ? 0x10000 + ((code - c_uiHighSurrogates) << 10) + (low - c_uiLowSurrogates) : code;
    }
    if (code >= c_uiHighSurrogates && code < c_uiEndOfSurrogates) {
        fail("half a character in a string");
    }
    appendUtf8(text, code);
}

unsigned JsonCursor::readHex() {
    const std::string_view digits = m_text.substr(m_uiPosition, 4);
    unsigned value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() < 4 || error != std::errc() || end != digits.data() + digits.size()) {
        fail("four hexadecimal digits are needed here");
    }
    m_uiPosition += 4;
    return value;
}

void JsonCursor::skip(unsigned depth) {
    if (depth > c_uiMaxDepth) {
        fail("nested too deep");
    }
    const char c = peek();
    if (c == '{') {
        beginObject();
        for (std::string key; nextMember(key);) {
            skip(depth + 1);
        }
    } else if (c == '[') {
        beginArray();
        while (nextItem()) {
            skip(depth + 1);
        }
    } else if (c == '"') {
        readString();
    } else if (c == 't' || c == 'f' || c == 'n') {
        const std::string_view word = c == 't' ? "true" : c == 'f' ? "false" : "null";
        if (!m_text.substr(m_uiPosition).starts_with(word)) {
            fail("a value is needed here");
        }
        m_uiPosition += word.size();
    } else {
        readNumber();
    }
}

}  // namespace Zantrix::Cli
