#include "NearNames.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace Zantrix::Math::Xpr {

namespace {

constexpr std::size_t c_uiMaxSuggestions = 3;

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
    // distances[j]: between the part of a seen so far and the first j characters of b.
    std::vector<std::size_t> distances(b.size() + 1);
    std::iota(distances.begin(), distances.end(), std::size_t{0});
    for (const char c : a) {
        std::size_t diagonal = distances[0]++;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (lower(c) == lower(b[j - 1]) ? 0 : 1);
            diagonal = distances[j];
            distances[j] = std::min({replaced, distances[j] + 1, distances[j - 1] + 1});
        }
    }
    return distances.back();
}

StringVector nearNames(std::string_view word, const StringVector& names) {
    const std::size_t limit = std::max<std::size_t>(1, word.size() / 3);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const std::string& name : names) {
        const std::size_t distance = editDistance(word, name);
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
