#include "evaluate/ChannelStrategy.h"

#include "shell/Diagnostics.h"
#include "shell/Interrupt.h"
#include "shell/Text.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <utility>

namespace Zantrix::Cli {

ChannelStrategy::ChannelStrategy(const std::vector<Channel>& channels, std::size_t context, std::uint64_t rate,
                                 std::function<void(double)> onBlock)
    : m_channels(channels),
      m_dRate(static_cast<double>(rate)),
      m_onBlock(std::move(onBlock)),
      m_computer(formulasOf(channels)),
      m_runs(channels.size()),
      m_bIsOddSize(!std::has_single_bit(context)),
      m_context(context, 0.0) {}

bool ChannelStrategy::evaluateWindow(const Math::DoubleVector& in_window,
                                     std::vector<Math::DoubleVector>& out_channels) {
    if (Interrupt::requested()) {
        throw Interruption();
    }
    out_channels.resize(m_channels.size());
    if (in_window.empty()) {
        return true;
    }
    const std::uint64_t end = m_uiPosition + in_window.size();
    compute(in_window);
    for (std::size_t i = 0; i < m_channels.size(); ++i) {
        const bool isOn = m_channels[i].isOn(m_values[i]);
        m_runs.add(i, isOn, m_uiPosition, end);
        out_channels[i].assign(in_window.size(), m_channels[i].threshold ? (isOn ? 1.0 : 0.0) : m_values[i]);
    }
    m_uiPosition = end;
    m_onBlock(static_cast<double>(end) / m_dRate);
    return true;
}

void ChannelStrategy::compute(const Math::DoubleVector& block) {
    std::copy(m_context.begin() + static_cast<std::ptrdiff_t>(block.size()), m_context.end(), m_context.begin());
    std::copy(block.begin(), block.end(), m_context.end() - static_cast<std::ptrdiff_t>(block.size()));
    bool isComputed = false;
    {
        // Of sizes that are not powers of two the library reports each spectrum; one warning of the command's does.
        std::optional<QuietLog> quiet;
        if (m_bIsOddSize) {
            quiet.emplace(c_strOddSpectrum);
        }
        isComputed = m_computer.compute(std::span(&m_context, 1), std::span(&m_values, 1));
    }
    if (!isComputed || m_values.size() != m_channels.size()) {
        const std::string place = "the block from " + shortest(static_cast<double>(m_uiPosition) / m_dRate) + " s on";
        throw Failure(isComputed ? "a formula gives another number of values for " + place + " than for those before"
                                 : m_computer.describeFailure(place));
    }
}

bool ChannelStrategy::getProbabilitiesInfo(StringVector& out_info) {
    for (const Channel& channel : m_channels) {
        out_info.push_back(channel.formula.name);
    }
    return true;
}

}  // namespace Zantrix::Cli
