#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Zantrix::Cli {

/// Where a channel is on: from a sample of the recording to the one that ends it, which is not part of it.
struct ChannelRun {
    std::size_t channel = 0;
    std::uint64_t start = 0;
    std::uint64_t stop = 0;

    std::uint64_t length() const { return stop - start; }
};

/// Joins the blocks in which channels are on to runs. Blocks follow each other without gaps.
class ChannelRuns {
public:
    explicit ChannelRuns(std::size_t channels) : m_open(channels) {}

    /// Goes on with the next block of one channel.
    void add(std::size_t channel, bool isOn, std::uint64_t start, std::uint64_t stop);

    /// Ends what is still on.
    ///
    /// @return all runs in the order of their starts; those that start together in the order of the channels
    std::vector<ChannelRun> finish();

private:
    void close(std::size_t channel);

    std::vector<ChannelRun> m_open;  // of each channel; of no length while it is off
    std::vector<ChannelRun> m_closed;
};

}  // namespace Zantrix::Cli
