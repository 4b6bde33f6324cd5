#include "evaluate/Channel.h"

#include "Command.h"
#include "shell/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>

namespace Zantrix::Cli {

namespace {

std::string trimmed(std::string_view text) {
    return std::string(Text::trimmed(text));
}

double parseThreshold(const std::string& text, const std::string& option) {
    const std::string number = trimmed(text);
    double value = 0.0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size() || !std::isfinite(value)) {
        throw UsageError("the threshold '" + option + "' is not a number, nor NAME=NUMBER");
    }
    return value;
}

Channel& findChannel(const std::string& name, std::vector<Channel>& channels) {
    for (Channel& channel : channels) {
        if (channel.formula.name == name) {
            return channel;
        }
    }
    std::vector<std::string> names;
    for (const Channel& channel : channels) {
        names.push_back("'" + channel.formula.name + "'");
    }
    throw UsageError("no channel is called '" + name + "', which a threshold is for; there is " + join(names, ", "));
}

}  // namespace

Channel makeChannel(const std::string& text) {
    // In a formula, "=" stands within the parentheses of a call only.
    const std::size_t end = text.find_first_of("=(");
    Channel channel;
    channel.formula.kind = Column::Kind::Formula;
    if (end == std::string::npos || text[end] == '(') {
        channel.formula.name = trimmed(text);
        channel.formula.text = text;
    } else {
        channel.formula.name = trimmed(text.substr(0, end));
        channel.formula.text = text.substr(end + 1);
    }
    return channel;
}

void checkChannels(const std::vector<Channel>& channels) {
    if (channels.empty()) {
        throw UsageError("no channel given; say what to evaluate by --channel 'NAME=FORMULA'");
    }
    std::set<std::string> names;
    for (const Channel& channel : channels) {
        if (channel.formula.name.empty()) {
            throw UsageError("a channel has no name; --channel takes NAME=FORMULA");
        }
        checkFormula(channel.formula);
        if (!names.insert(channel.formula.name).second) {
            throw UsageError("two channels would be called '" + channel.formula.name + "'");
        }
    }
}

void setThresholds(const std::vector<std::string>& texts, std::vector<Channel>& channels) {
    std::optional<double> common;
    for (const std::string& text : texts) {
        // The last one, as the name of a formula may have some.
        const std::size_t assignment = text.rfind('=');
        const bool isCommon = assignment == std::string::npos;
        std::optional<double>& threshold =
            isCommon ? common : findChannel(trimmed(text.substr(0, assignment)), channels).threshold;
        if (threshold) {
            throw UsageError("two thresholds for " +
                             (isCommon ? "all channels" : "the channel '" + trimmed(text.substr(0, assignment)) + "'"));
        }
        threshold = parseThreshold(isCommon ? text : text.substr(assignment + 1), text);
    }
    for (Channel& channel : channels) {
        channel.threshold = channel.threshold ? channel.threshold : common;
    }
}

std::vector<Column> formulasOf(const std::vector<Channel>& channels) {
    std::vector<Column> formulas;
    for (const Channel& channel : channels) {
        formulas.push_back(channel.formula);
    }
    return formulas;
}

}  // namespace Zantrix::Cli
