#include "evaluate/ChannelRuns.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace Zantrix::Cli {

void ChannelRuns::add(std::size_t channel, bool isOn, std::uint64_t start, std::uint64_t stop) {
    ChannelRun& open = m_open[channel];
    if (!isOn) {
        close(channel);
    } else if (open.length() == 0) {
        open = {channel, start, stop};
    } else {
        open.stop = stop;
    }
}

std::vector<ChannelRun> ChannelRuns::finish() {
    for (std::size_t channel = 0; channel < m_open.size(); ++channel) {
        close(channel);
    }
    std::sort(m_closed.begin(), m_closed.end(), [](const ChannelRun& a, const ChannelRun& b) {
        return std::tie(a.start, a.channel) < std::tie(b.start, b.channel);
    });
    return std::exchange(m_closed, {});
}

void ChannelRuns::close(std::size_t channel) {
    ChannelRun& open = m_open[channel];
    if (open.length() > 0) {
        m_closed.push_back(open);
    }
    open = {};
}

}  // namespace Zantrix::Cli
