#include "features/FeatureNames.h"

#include "guide/FeatureGuide.h"
#include "shell/Diagnostics.h"
#include "shell/Text.h"

#include <murvane/audio/features/AudioFeatureFactory.h>
#include <murvane/audio/features/AudioFeatureImpl.h>

#include <algorithm>
#include <memory>

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szSeparators = "_(),";
constexpr const char* c_szBlanks = " \t\r\n\f\v";

// Counts characters, not bytes.
std::size_t columnOf(const std::string& text, std::size_t offset) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset),
                      [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

// The message, and below it the name with a mark below the column.
std::string marked(const std::string& message, const std::string& name, std::size_t offset) {
    const std::size_t column = columnOf(name, offset);
    return message + " at column " + std::to_string(column + 1) + "\n  " + name + "\n  " + std::string(column, ' ') +
           '^';
}

// The list of parameters whose "(" stands at `offset`; moves on behind its ")".
std::optional<Malformation> scanParameters(const std::string& name, std::size_t& offset) {
    const std::size_t first = offset + 1;
    const std::size_t end = name.find_first_of("()", first);
    if (end == std::string::npos) {
        return Malformation{name.size(), "')' is missing"};
    }
    if (name[end] == '(') {
        return Malformation{end, "there is a second '('"};
    }
    offset = end + 1;
    if (name.find_first_not_of(c_szBlanks, first) == end) {
        return std::nullopt;
    }
    for (std::size_t start = first; start <= end;) {
        const std::size_t comma = std::min(name.find(',', start), end);
        if (std::min(name.find_first_not_of(c_szBlanks, start), end) >= comma) {
            return Malformation{comma, "a parameter is missing"};
        }
        start = comma + 1;
    }
    return std::nullopt;
}

}  // namespace

std::optional<Malformation> findMalformation(const std::string& name) {
    for (std::size_t offset = 0;;) {
        const std::size_t baseEnd = std::min(name.find_first_of(c_szSeparators, offset), name.size());
        if (baseEnd == offset) {
            return Malformation{offset, "the name of a feature is missing"};
        }
        offset = baseEnd;
        if (offset < name.size() && name[offset] == '(') {
            if (auto malformation = scanParameters(name, offset)) {
                return malformation;
            }
        }
        if (offset == name.size()) {
            return std::nullopt;
        }
        if (name[offset] == ',') {
            return Malformation{offset, "',' stands outside of parentheses (several features are separate arguments)"};
        }
        if (name[offset] != '_') {
            return Malformation{offset, "'_' or the end was expected"};
        }
        ++offset;
    }
}

FeatureNames::FeatureNames() {
    m_pool.addFactory(new Audio::AudioFeatureFactory);
}

bool FeatureNames::isKnown(const std::string& name) const {
    const QuietLog quiet;
    return std::unique_ptr<Math::SignalFeature>(m_pool.getNewFeature(name.c_str())) != nullptr;
}

std::optional<std::string> FeatureNames::problem(const std::string& name) const {
    if (isKnown(name)) {
        return std::nullopt;
    }
    if (const auto malformation = findMalformation(name)) {
        return marked("malformed feature name: " + malformation->message, name, malformation->offset);
    }
    StringVector elements;
    Math::SignalFeatureFactory::splitElements(name.c_str(), elements);
    std::size_t start = 0;
    for (const std::string& element : elements) {
        if (auto problem = elementProblem(name, start, element)) {
            return problem;
        }
        start += element.size() + 1;
    }
    return "the feature name '" + name + "' is refused";
}

std::optional<std::string> FeatureNames::elementProblem(const std::string& name, std::size_t start,
                                                        const std::string& element) const {
    if (isKnown(element)) {
        return std::nullopt;
    }
    std::string base;
    StringVector parameters;
    Math::SignalFeatureFactory::splitParams(element.c_str(), base, parameters);
    const FeatureGuide guide([this](const std::string& known) { return isKnown(known); });
    if (const FeatureDescription* description = guide.find(base)) {
        const std::string form = description->parameters[0] == '\0'
                                     ? "takes no parameters"
                                     : "takes parameters " + std::string(description->parameters);
        return marked("wrong parameters: " + std::string(description->name) + " " + form + ",", name, start);
    }
    if (Audio::AudioFeature::parseFeatureType(base.c_str()).isValid()) {
        return marked("the feature " + upperCase(base) + " cannot be had by name,", name, start);
    }
    const std::vector<std::string> near = nearWords(base, guide.names());
    return marked("unknown feature '" + base + "'", name, start) +
           (near.empty() ? "\n'murvane-audio list' names them all." : "\nNames that come close: " + join(near, ", "));
}

}  // namespace Zantrix::Cli
