#include "annotations/LabelFormat.h"

#include "Command.h"
#include "shell/Text.h"

#include <charconv>
#include <system_error>

namespace Zantrix::Cli {

const std::vector<LabelFormat>& labelFormats() {
    static const std::vector<LabelFormat> formats = {
        {"audacity", ".txt", false, writeAudacityLabels, readAudacityLabels},
        {"csv", ".csv", false, writeCsvLabels, readCsvLabels},
        {"json", ".json", false, writeJsonLabels, readJsonLabels},
        {"textgrid", ".textgrid", true, writeTextGrid, readTextGrid},
    };
    return formats;
}

const LabelFormat& chooseLabelFormat(const std::string& name, const std::string& path) {
    const std::string lowerPath = Text::lowerCase(path);
    std::vector<std::string> names;
    for (const LabelFormat& format : labelFormats()) {
        if (name == format.name || (name.empty() && lowerPath.ends_with(format.extension))) {
            return format;
        }
        names.emplace_back(format.name);
    }
    const std::string known = "the formats are " + join(names, ", ");
    if (!name.empty()) {
        throw UsageError("unknown format '" + name + "'; " + known);
    }
    throw UsageError((path.empty() ? "no --format given; " : "the name '" + path + "' tells no format; ") + known);
}

std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view mark = "\xef\xbb\xbf";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

double parseSeconds(std::string_view field, std::size_t line) {
    const std::string_view text = Text::trimmed(field);
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw LabelError("line " + std::to_string(line) + ": " + jsonString(field.substr(0, 40)) +
                         " is no time in seconds");
    }
    return value;
}

}  // namespace Zantrix::Cli
