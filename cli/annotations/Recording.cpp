#include "annotations/Recording.h"

#include "shell/Text.h"

#include <algorithm>

namespace Zantrix::Cli {

std::string nameOf(std::size_t index, const std::string& label) {
    return "annotation " + std::to_string(index + 1) + " (" + visibleLabel(label) + ")";
}

std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string visibleLabel(const std::string& label) {
    // Most labels are such words, and need no second text beside them.
    const auto isWordCharacter = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    if (!label.empty() && std::all_of(label.begin(), label.end(), isWordCharacter)) {
        return label;
    }
    const std::string quoted = jsonString(label);
    const bool isPlain =
        quoted.size() == label.size() + 2 && !label.empty() && label.front() != ' ' && label.back() != ' ';
    return isPlain ? label : quoted;
}

std::string timeOfSample(std::uint64_t sample, std::uint32_t rate) {
    // Long division, a decimal at a time. With n decimals the rest is off by rest / (rate * 10^n) seconds.
    std::uint64_t digits = sample / rate;
    std::uint64_t rest = sample % rate;
    std::uint64_t scale = 1;
    int decimals = 0;
    while (4 * std::min(rest, rate - rest) >= scale && rest != 0) {
        digits = digits * 10 + rest * 10 / rate;
        rest = rest * 10 % rate;
        scale *= 10;
        ++decimals;
    }
    if (rest > rate - rest) {
        ++digits;
    }
    std::string text = std::to_string(digits);
    if (decimals > 0) {
        const auto width = static_cast<std::size_t>(decimals);
        text.insert(0, text.size() <= width ? width + 1 - text.size() : 0, '0');
        text.insert(text.size() - width, ".");
    }
    return text;
}

}  // namespace Zantrix::Cli
