#include "annotations/LabelFormat.h"
#include "shell/JsonCursor.h"
#include "shell/Text.h"

#include <cmath>
#include <limits>

/// {"rate_hz": 8000, "samples": 24000, "annotations": [{"start_s": 0.5, "stop_s": 1, "label": "SF_440"}]}
///
/// A label that is not UTF-8 has all of its bytes in "label_bytes_hex" as well.
namespace Zantrix::Cli {

namespace {

std::string bytesOfHex(const std::string& hex, const JsonCursor& cursor) {
    std::string bytes;
    const auto digit = [&](char c) {
        const std::size_t value = std::string_view("0123456789abcdef").find(c);
        if (value == std::string_view::npos) {
            cursor.fail("label_bytes_hex must hold lower-case hexadecimal digits");
        }
        return value;
    };
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(digit(hex[i]) * 16 + digit(hex[i + 1]));
    }
    if (hex.size() % 2 != 0) {
        cursor.fail("label_bytes_hex must hold two digits a byte");
    }
    return bytes;
}

TimedLabel readAnnotation(JsonCursor& cursor) {
    TimedLabel label;
    label.start = label.stop = std::numeric_limits<double>::quiet_NaN();
    std::string bytes;
    bool hasLabel = false;
    cursor.beginObject();
    for (std::string key; cursor.nextMember(key);) {
        if (key == "start_s") {
            label.start = cursor.readNumber();
        } else if (key == "stop_s") {
            label.stop = cursor.readNumber();
        } else if (key == "label") {
            label.label = cursor.readString();
            hasLabel = true;
        } else if (key == "label_bytes_hex") {
            bytes = bytesOfHex(cursor.readString(), cursor);
        } else {
            cursor.skipValue();
        }
    }
    if (!hasLabel || std::isnan(label.start) || std::isnan(label.stop)) {
        cursor.fail("an annotation needs start_s, stop_s and label");
    }
    if (!bytes.empty()) {
        label.label = bytes;
    }
    return label;
}

std::vector<TimedLabel> readLabelList(JsonCursor& cursor) {
    std::vector<TimedLabel> labels;
    bool hasAnnotations = false;
    cursor.beginObject();
    for (std::string key; cursor.nextMember(key);) {
        if (key != "annotations") {
            cursor.skipValue();
            continue;
        }
        hasAnnotations = true;
        cursor.beginArray();
        while (cursor.nextItem()) {
            labels.push_back(readAnnotation(cursor));
        }
    }
    if (!hasAnnotations) {
        cursor.fail("there are no \"annotations\"");
    }
    return labels;
}

}  // namespace

std::string writeJsonLabels(const Recording& recording) {
    std::string text = "{\"rate_hz\": " + std::to_string(recording.rate) +
                       ", \"samples\": " + std::to_string(recording.samples) + ", \"annotations\": [";
    const char* separator = "\n";
    for (const SampledLabel& annotation : recording.annotations) {
        text += separator;
        text += "  {\"start_s\": " + timeOfSample(annotation.start, recording.rate) +
                ", \"stop_s\": " + timeOfSample(annotation.stop, recording.rate) +
                ", \"label\": " + jsonString(annotation.label);
        if (!isUtf8(annotation.label)) {
            text += ", \"label_bytes_hex\": \"" + hexBytes(annotation.label) + '"';
        }
        text += '}';
        separator = ",\n";
    }
    return text + (recording.annotations.empty() ? "]}\n" : "\n]}\n");
}

std::vector<TimedLabel> readJsonLabels(std::string_view bytes, const std::vector<std::string>&) {
    try {
        JsonCursor cursor(withoutByteOrderMark(bytes));
        std::vector<TimedLabel> labels;
        if (cursor.peek() == '[') {
            // What 'annotations list --format json' prints of one file.
            cursor.beginArray();
            for (bool isFirst = true; cursor.nextItem(); isFirst = false) {
                if (!isFirst) {
                    cursor.peek();
                    cursor.fail("annotations of a second file");
                }
                labels = readLabelList(cursor);
            }
        } else {
            labels = readLabelList(cursor);
        }
        cursor.expectEnd();
        return labels;
    } catch (const JsonError& error) {
        throw LabelError(error.what());
    }
}

}  // namespace Zantrix::Cli
