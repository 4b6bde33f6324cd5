#include "annotations/AnnotationTable.h"

#include "Command.h"
#include "shell/Text.h"

#include <limits>
#include <optional>
#include <sstream>

namespace Zantrix::Cli {

namespace {

/// In seconds, the nearest double.
double exactTime(std::uint64_t sample, const Recording& recording) {
    return recording.rate == 0 ? std::numeric_limits<double>::quiet_NaN()
                               : static_cast<double>(sample) / recording.rate;
}

std::string fixedTime(std::uint64_t sample, const Recording& recording, int width) {
    std::ostringstream text;
    text.precision(6);
    text.width(width);
    text << std::fixed << exactTime(sample, recording);
    return text.str();
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string tonesOf(const ToneKind& kind) {
    return kind.frequency ? std::to_string(*kind.frequency)
           : kind.carrier ? std::to_string(*kind.carrier) + 'x' + std::to_string(*kind.modulation)
                          : "-";
}

std::string asText(const std::string& file, const Recording& recording, ToneKinds& kinds, bool) {
    const std::size_t count = recording.annotations.size();
    const std::string length =
        recording.rate == 0 ? counted(recording.samples, "sample") : fixedTime(recording.samples, recording, 0) + " s";
    std::string text = file + ": " + std::to_string(recording.rate) + " Hz, " + length + ", " +
                       (count == 0 ? "no annotations" : counted(count, "annotation")) + '\n';
    if (count > 0) {
        text += "       start_s        stop_s  kind                 Hz          label\n";
    }
    for (const SampledLabel& annotation : recording.annotations) {
        const ToneKind& kind = kinds.of(annotation.label);
        text += fixedTime(annotation.start, recording, 14) + fixedTime(annotation.stop, recording, 14) + "  " +
                padded(kind.name, 21) + padded(tonesOf(kind), 12) + visibleLabel(annotation.label) + '\n';
    }
    return text;
}

std::string asCsv(const std::string& file, const Recording& recording, ToneKinds& kinds, bool isFirst) {
    std::string text = isFirst ? "file,start_s,stop_s,start_sample,stop_sample,label,kind,frequency_hz,carrier_hz,"
                                 "modulation_hz\n"
                               : "";
    const auto number = [](const std::optional<long long>& value) { return value ? std::to_string(*value) : ""; };
    for (const SampledLabel& annotation : recording.annotations) {
        const ToneKind& kind = kinds.of(annotation.label);
        text += csvField(file) + ',' + shortest(exactTime(annotation.start, recording)) + ',' +
                shortest(exactTime(annotation.stop, recording)) + ',' + std::to_string(annotation.start) + ',' +
                std::to_string(annotation.stop) + ',' + csvField(annotation.label) + ',' + kind.name + ',' +
                number(kind.frequency) + ',' + number(kind.carrier) + ',' + number(kind.modulation) + '\n';
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
    const auto number = [](const std::optional<long long>& value) { return value ? std::to_string(*value) : "null"; };
    const char* separator = "\n    ";
    for (const SampledLabel& annotation : recording.annotations) {
        const ToneKind& kind = kinds.of(annotation.label);
        text += separator;
        text += "{\"start_s\": " + jsonNumber(exactTime(annotation.start, recording)) +
                ", \"stop_s\": " + jsonNumber(exactTime(annotation.stop, recording)) +
                ", \"start_sample\": " + std::to_string(annotation.start) +
                ", \"stop_sample\": " + std::to_string(annotation.stop) + ", " + jsonText("label", annotation.label) +
                ", \"kind\": \"" + kind.name + "\", \"frequency_hz\": " + number(kind.frequency) +
                ", \"carrier_hz\": " + number(kind.carrier) + ", \"modulation_hz\": " + number(kind.modulation) + '}';
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
