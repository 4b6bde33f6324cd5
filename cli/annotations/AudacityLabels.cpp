#include "annotations/LabelFormat.h"

/// Start, stop and label on a line, with tabs between them. There is no way to write a tab or a line end in a label.
namespace Zantrix::Cli {

namespace {

/// Takes the text up to the separator, and the separator, from the front of `rest`.
std::string_view takeUntil(char separator, std::string_view& rest) {
    const std::size_t end = rest.find(separator);
    const std::string_view taken = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return taken;
}

}  // namespace

std::string writeAudacityLabels(const Recording& recording) {
    std::string text;
    for (std::size_t i = 0; i < recording.annotations.size(); ++i) {
        const SampledLabel& annotation = recording.annotations[i];
        if (annotation.label.find_first_of("\t\r\n") != std::string::npos) {
            throw LabelError(nameOf(i, annotation.label) + ": this format has no tabs and line ends in labels");
        }
        text += timeOfSample(annotation.start, recording.rate) + '\t' + timeOfSample(annotation.stop, recording.rate) +
                '\t' + annotation.label + '\n';
    }
    return text;
}

std::vector<TimedLabel> readAudacityLabels(std::string_view bytes, const std::vector<std::string>&) {
    std::vector<TimedLabel> labels;
    std::string_view rest = withoutByteOrderMark(bytes);
    for (std::size_t number = 1; !rest.empty(); ++number) {
        std::string_view line = takeUntil('\n', rest);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty() || line.front() == '\\') {
            continue;  // a backslash: the frequencies of the label before
        }
        const std::string_view start = takeUntil('\t', line);
        const std::string_view stop = takeUntil('\t', line);
        labels.push_back({std::string(line), parseSeconds(start, number), parseSeconds(stop, number)});
        if (line.find('\t') != std::string_view::npos) {
            throw LabelError("line " + std::to_string(number) + ": more than two tabs");
        }
    }
    return labels;
}

}  // namespace Zantrix::Cli
