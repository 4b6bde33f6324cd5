#pragma once

#include "features/Column.h"

#include <optional>
#include <string>
#include <vector>

/// What a recording is evaluated by: one curve, or one row of decisions, for each channel.
namespace Zantrix::Cli {

struct Channel {
    /// From this value on a block is annotated, where no threshold says otherwise.
    static constexpr double defaultThreshold = 0.5;

    Column formula;  ///< named like the channel
    std::optional<double> threshold;

    bool isOn(double value) const { return value >= threshold.value_or(defaultThreshold); }
};

/// A channel from "NAME=FORMULA", or from a formula, which is its name then. A name may have any characters but "(" and
/// "=", and blanks around it do not count.
Channel makeChannel(const std::string& text);

/// Makes sure that there are channels, that the library understands them, and that they can be told from each other.
///
/// @throw UsageError
void checkChannels(const std::vector<Channel>& channels);

/// Sets the thresholds of channels.
///
/// @param texts  each "NAME=VALUE", or "VALUE" for all channels that have none of their own
/// @throw UsageError  naming a text that makes no sense, a channel that does not exist, or one with two thresholds
void setThresholds(const std::vector<std::string>& texts, std::vector<Channel>& channels);

std::vector<Column> formulasOf(const std::vector<Channel>& channels);

}  // namespace Zantrix::Cli
