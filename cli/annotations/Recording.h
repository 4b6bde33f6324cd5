#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

/// What recordings and label files have in common.
namespace Zantrix::Cli {

/// An annotation of a recording, in samples from its beginning; `stop` is the first sample that is not in it.
struct SampledLabel {
    std::string label;
    std::uint64_t start = 0;
    std::uint64_t stop = 0;

    bool operator==(const SampledLabel&) const = default;
};

/// An annotation of a label file, in seconds.
struct TimedLabel {
    std::string label;
    double start = 0.0;
    double stop = 0.0;
};

/// A recording as its annotations see it.
struct Recording {
    std::uint32_t rate = 0;     ///< samples per second; 0 when the file does not say
    std::uint64_t samples = 0;  ///< its length
    std::vector<SampledLabel> annotations;
};

/// Annotations that a format cannot hold, or a label file that is not what it should be.
class LabelError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What annotation a message is about, such as "annotation 3 (SF_440)".
///
/// @param index  its place in its list, from 0
std::string nameOf(std::size_t index, const std::string& label);

/// A number of things, such as "1 label" and "2 labels".
std::string counted(std::size_t count, const std::string& what);

/// A label as one piece of one line: as it is, or in quotes like a JSON string when it is empty, begins or ends with a
/// blank, or holds quotes, backslashes, control characters or bytes that are not UTF-8.
std::string visibleLabel(const std::string& label);

/// The time of a sample in seconds, in as few decimals as tell it from its neighbours: it is less than a quarter of a
/// sample off, so starts, stops and lengths all come back when times are rounded to the nearest sample.
///
/// @param rate  samples per second, not 0
std::string timeOfSample(std::uint64_t sample, std::uint32_t rate);

}  // namespace Zantrix::Cli
