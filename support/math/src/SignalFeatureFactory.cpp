#include <murvane/core/Text.h>
#include <murvane/math/SignalFeatureComposed.h>
#include <murvane/math/SignalFeatureFactory.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace Zantrix::Math {

namespace {

// The text between the parentheses, as parameters.
bool splitList(std::string_view list, StringVector& params) {
    if (Text::trimmed(list).empty()) {
        return true;
    }
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t comma = std::min(list.find(',', start), list.size());
        const std::string_view param = Text::trimmed(list.substr(start, comma - start));
        if (param.empty()) {
            return false;
        }
        params.emplace_back(param);
        start = comma + 1;
    }
    return true;
}

// No base of a factory has an underscore. One between other characters is let through all the same: what somebody took
// for the name of one feature is then told to be unknown, not malformed.
bool isBase(std::string_view base) {
    return !base.empty() && base.front() != '_' && base.back() != '_' && base.find("__") == std::string_view::npos;
}

bool splitElement(std::string_view element, std::string& base, StringVector& params) {
    const std::size_t baseEnd = std::min(element.find_first_of("(),"), element.size());
    base = element.substr(0, baseEnd);
    if (!isBase(base)) {
        return false;
    }
    if (baseEnd == element.size()) {
        return true;
    }
    const bool enclosed = element[baseEnd] == '(' && element.find_first_of("()", baseEnd + 1) == element.size() - 1 &&
                          element.back() == ')';
    return enclosed && splitList(element.substr(baseEnd + 1, element.size() - baseEnd - 2), params);
}

}  // namespace

SignalFeature* SignalFeatureFactory::getNewFeature(const char* name) {
    StringVector elements;
    splitElements(name, elements);
    return composeFeatures(elements, [this](const char* element) { return getNewBaseFeature(element); });
}

bool SignalFeatureFactory::splitParams(const char* name, std::string& base, StringVector& params) {
    base.clear();
    params.clear();
    if (name != nullptr && splitElement(name, base, params)) {
        return true;
    }
    base.clear();
    params.clear();
    return false;
}

bool SignalFeatureFactory::splitElements(const char* name, StringVector& elements) {
    elements.clear();
    if (name == nullptr) {
        return false;
    }
    // An underscore within parentheses belongs to a parameter.
    int depth = 0;
    std::string base;
    StringVector params;
    const std::string_view text(name);
    std::size_t start = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        const char c = i < text.size() ? text[i] : '_';
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (i < text.size() && (c != '_' || depth > 0)) {
            continue;
        }
        std::string element(text.substr(start, i - start));
        if (elements.size() == c_uiMaxElements || !splitParams(element.c_str(), base, params)) {
            elements.clear();
            return false;
        }
        elements.push_back(std::move(element));
        start = i + 1;
    }
    return true;
}

}  // namespace Zantrix::Math
