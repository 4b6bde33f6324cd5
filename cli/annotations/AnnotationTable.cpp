#include "annotations/AnnotationTable.h"

#include "Command.h"
#include "shell/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>

namespace Zantrix::Cli {

namespace {

/// In seconds, the nearest double.
double exactTime(std::uint64_t sample, const Recording& recording) {
    return recording.rate == 0 ? std::numeric_limits<double>::quiet_NaN()
                               : static_cast<double>(sample) / recording.rate;
}

// Some files have a hundred thousand annotations. To put each of their lines together from pieces, or to write numbers
// to a stream, would take longer than to read the file.
constexpr std::size_t c_uiUsualLine = 96;

template <typename... Pieces>
void append(std::string& text, const Pieces&... pieces) {
    ((text += pieces), ...);
}

/// Appends a time with six decimals, to the right of such a width.
void appendTime(std::string& text, std::uint64_t sample, const Recording& recording, std::size_t width) {
    std::array<char, 32> digits;  // 2^33 samples have ten digits before the point
    const char* const end =
        std::to_chars(digits.begin(), digits.end(), exactTime(sample, recording), std::chars_format::fixed, 6).ptr;
    const auto length = static_cast<std::size_t>(end - digits.data());
    text.append(std::max(width, length) - length, ' ').append(digits.data(), length);
}

/// Appends a text, to the left of such a width.
void appendPadded(std::string& text, std::string_view piece, std::size_t width) {
    text.append(piece).append(std::max(width, piece.size()) - piece.size(), ' ');
}

std::string tonesOf(const ToneKind& kind) {
    return kind.frequency ? std::to_string(*kind.frequency)
           : kind.carrier ? std::to_string(*kind.carrier) + 'x' + std::to_string(*kind.modulation)
                          : "-";
}

std::string asText(const std::string& file, const Recording& recording, ToneKinds& kinds, bool) {
    const std::size_t count = recording.annotations.size();
    std::string text;
    text.reserve(file.size() + c_uiUsualLine * (count + 2));
    text += file + ": " + std::to_string(recording.rate) + " Hz, ";
    if (recording.rate == 0) {
        text += counted(recording.samples, "sample");
    } else {
        appendTime(text, recording.samples, recording, 0);
        text += " s";
    }
    text += ", " + (count == 0 ? "no annotations" : counted(count, "annotation")) + '\n';
    if (count > 0) {
        text += "       start_s        stop_s  kind                 Hz          label\n";
    }
    for (const SampledLabel& annotation : recording.annotations) {
        const ToneKind& kind = kinds.of(annotation.label);
        appendTime(text, annotation.start, recording, 14);
        appendTime(text, annotation.stop, recording, 14);
        text += "  ";
        appendPadded(text, kind.name, 21);
        appendPadded(text, tonesOf(kind), 12);
        append(text, visibleLabel(annotation.label), '\n');
    }
    return text;
}

std::string asCsv(const std::string& file, const Recording& recording, ToneKinds& kinds, bool isFirst) {
    std::string text = isFirst ? "file,start_s,stop_s,start_sample,stop_sample,label,kind,frequency_hz,carrier_hz,"
                                 "modulation_hz\n"
                               : "";
    text.reserve(c_uiUsualLine * (recording.annotations.size() + 1));
    const std::string fileField = csvField(file);
    const auto number = [](const std::optional<long long>& value) { return value ? std::to_string(*value) : ""; };
    for (const SampledLabel& annotation : recording.annotations) {
        const ToneKind& kind = kinds.of(annotation.label);
        append(text, fileField, ',', shortest(exactTime(annotation.start, recording)), ',',
               shortest(exactTime(annotation.stop, recording)), ',', std::to_string(annotation.start), ',',
               std::to_string(annotation.stop), ',', csvField(annotation.label), ',', kind.name, ',',
               number(kind.frequency), ',', number(kind.carrier), ',', number(kind.modulation), '\n');
    }
    return text;
}

/// `"key": "text"`, and all bytes of a text that is not UTF-8.
std::string jsonText(const std::string& key, const std::string& text) {
    return '"' + key + "\": " + jsonString(text) +
           (isUtf8(text) ? "" : ", \"" + key + "_bytes_hex\": \"" + hexBytes(text) + '"');
}

std::string asJson(const std::string& file, const Recording& recording, ToneKinds& kinds, bool isFirst) {
    std::string text = std::string(isFirst ? "[" : ",") + "\n  {" + jsonText("name", file) +
                       ", \"rate_hz\": " + std::to_string(recording.rate) +
                       ", \"samples\": " + std::to_string(recording.samples) + ", \"annotations\": [";
    text.reserve(text.size() + 2 * c_uiUsualLine * (recording.annotations.size() + 1));
    const auto number = [](const std::optional<long long>& value) { return value ? std::to_string(*value) : "null"; };
    const char* separator = "\n    ";
    for (const SampledLabel& annotation : recording.annotations) {
        const ToneKind& kind = kinds.of(annotation.label);
        append(text, separator, "{\"start_s\": ", jsonNumber(exactTime(annotation.start, recording)),
               ", \"stop_s\": ", jsonNumber(exactTime(annotation.stop, recording)),
               ", \"start_sample\": ", std::to_string(annotation.start),
               ", \"stop_sample\": ", std::to_string(annotation.stop), ", ", jsonText("label", annotation.label),
               ", \"kind\": \"", kind.name, "\", \"frequency_hz\": ", number(kind.frequency),
               ", \"carrier_hz\": ", number(kind.carrier), ", \"modulation_hz\": ", number(kind.modulation), '}');
        separator = ",\n    ";
    }
    return text + "]}";
}

constexpr ListFormat c_formats[] = {
    {"text", asText, "", ""}, {"csv", asCsv, "", ""}, {"json", asJson, "[]\n", "\n]\n"}};

}  // namespace

const ListFormat& chooseListFormat(const std::string& name) {
    for (const ListFormat& format : c_formats) {
        if (name == format.name) {
            return format;
        }
    }
    throw UsageError("unknown format '" + name + "'; the formats are text, csv and json");
}

}  // namespace Zantrix::Cli
