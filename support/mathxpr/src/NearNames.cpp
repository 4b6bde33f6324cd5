#include "NearNames.h"

#include <murvane/core/Text.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace Zantrix::Math::Xpr {

namespace {

constexpr std::size_t c_uiMaxSuggestions = 3;

}  // namespace

StringVector nearNames(std::string_view word, const StringVector& names) {
    const std::size_t limit = std::max<std::size_t>(1, word.size() / 3);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const std::string& name : names) {
        const std::size_t distance = Text::editDistance(word, name);
        if (distance <= limit) {
            found.emplace_back(distance, name);
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    found.resize(std::min(found.size(), c_uiMaxSuggestions));
    StringVector result;
    for (auto& [distance, name] : found) {
        result.push_back(std::move(name));
    }
    return result;
}

std::string alternatives(const StringVector& names) {
    std::string result;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) {
            result += i + 1 == names.size() ? " or " : ", ";
        }
        result += names[i];
    }
    return result;
}

}  // namespace Zantrix::Math::Xpr
