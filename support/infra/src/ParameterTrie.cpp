#include <murvane/core/Text.h>
#include <murvane/infra/ParameterTrie.h>

#include <algorithm>
#include <array>
#include <istream>
#include <ostream>
#include <string_view>
#include <utility>

namespace Zantrix {

namespace {

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '\n') {
            result += "\\n";
            continue;
        }
        if (c == '"' || c == '\\') {
            result += '\\';
        }
        result += c;
    }
    return result + '"';
}

// False when the closing quote is missing, stands before the end, or an escape is unknown.
bool unquote(std::string_view text, std::string& value) {
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            return i + 1 == text.size();
        }
        if (text[i] != '\\') {
            value += text[i];
            continue;
        }
        ++i;
        if (i == text.size() || (text[i] != '"' && text[i] != '\\' && text[i] != 'n')) {
            return false;
        }
        value += text[i] == 'n' ? '\n' : text[i];
    }
    return false;
}

// Whether `read` would find this key again in what `write` makes of it.
bool isReadable(std::string_view key) {
    return !key.empty() && key.front() != '#' && key.find_first_of("=\n") == std::string_view::npos &&
           Text::trimmed(key) == key;
}

bool needsQuotes(const std::string& value) {
    return value.empty() || value.find_first_of("\"\\\n") != std::string::npos || Text::trimmed(value) != value;
}

}  // namespace

bool ParameterTrie::setIntParameter(const char* key, int value) {
    return set(key, std::to_string(value));
}

bool ParameterTrie::setStringParameter(const char* key, const std::string& value) {
    return set(key, value);
}

bool ParameterTrie::setFloatParameter(const char* key, double value) {
    return set(key, Text::shortest(value));
}

bool ParameterTrie::setBoolParameter(const char* key, bool value) {
    return set(key, value ? "true" : "false");
}

bool ParameterTrie::getIntParameter(const char* key, int& value) const {
    const std::string* text = find(key);
    return text != nullptr && Text::parseWhole(*text, value);
}

bool ParameterTrie::getStringParameter(const char* key, std::string& value) const {
    const std::string* text = find(key);
    if (text == nullptr) {
        return false;
    }
    value = *text;
    return true;
}

bool ParameterTrie::getFloatParameter(const char* key, double& value) const {
    const std::string* text = find(key);
    return text != nullptr && Text::parseWhole(*text, value);
}

bool ParameterTrie::getBoolParameter(const char* key, bool& value) const {
    const std::string* text = find(key);
    if (text == nullptr) {
        return false;
    }
    const std::string lower = Text::lowerCase(*text);
    constexpr std::array<std::string_view, 4> yes = {"true", "yes", "on", "1"};
    constexpr std::array<std::string_view, 4> no = {"false", "no", "off", "0"};
    const bool isYes = std::find(yes.begin(), yes.end(), lower) != yes.end();
    if (!isYes && std::find(no.begin(), no.end(), lower) == no.end()) {
        return false;
    }
    value = isYes;
    return true;
}

bool ParameterTrie::parameterDefined(const char* key) const {
    return find(key) != nullptr;
}

bool ParameterTrie::read(std::istream& is, std::string& error) {
    std::map<std::string, std::string, std::less<>> values;
    std::string line;
    for (std::size_t number = 1; std::getline(is, line); ++number) {
        const auto refuse = [&](const char* why) {
            error = "line " + std::to_string(number) + ": " + why;
            return false;
        };
        const std::string_view text = Text::trimmed(line);
        if (text.empty() || text.front() == '#') {
            continue;
        }
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos) {
            return refuse("expected key = value");
        }
        const std::string_view key = Text::trimmed(text.substr(0, equals));
        if (key.empty()) {
            return refuse("expected a key before \"=\"");
        }
        const std::string_view value = Text::trimmed(text.substr(equals + 1));
        std::string plain;
        if (!value.empty() && value.front() == '"') {
            if (!unquote(value, plain)) {
                return refuse("expected the value to end with its closing quote");
            }
        } else {
            plain = value;
        }
        values[std::string(key)] = std::move(plain);
    }
    // A stream that was never any good, such as that of a missing file, does not reach its end.
    if (!is.eof() || is.bad()) {
        error = "cannot be read";
        return false;
    }
    // The values read now win over those already here.
    values.merge(m_values);
    m_values = std::move(values);
    return true;
}

std::ostream& ParameterTrie::write(std::ostream& os) const {
    for (const auto& [key, value] : m_values) {
        os << key << " = " << (needsQuotes(value) ? quoted(value) : value) << '\n';
    }
    return os;
}

const std::string* ParameterTrie::find(const char* key) const {
    if (key == nullptr) {
        return nullptr;
    }
    const auto found = m_values.find(std::string_view(key));
    return found == m_values.end() ? nullptr : &found->second;
}

bool ParameterTrie::set(const char* key, std::string value) {
    if (key == nullptr || !isReadable(key)) {
        return false;
    }
    m_values[key] = std::move(value);
    return true;
}

}  // namespace Zantrix
