#pragma once

#include "evaluate/Channel.h"
#include "evaluate/ChannelRuns.h"
#include "features/RowComputer.h"

#include <murvane/audio/batch/AudioFileEvaluator.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// Evaluates the blocks of one recording by formulas. Each gives one value for a block, which holds for all samples of
/// it. A formula sees the audio that ends with the block, as much as the context is long; before the recording there is
/// silence.
class ChannelStrategy final : public Audio::AudioFileEvaluator::Strategy {
public:
    /// Ends the evaluation of a recording whose formulas cannot be computed. The text tells why.
    class Failure : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    /// Ends it because a signal asked for that.
    class Interruption {};

    /// @param context  samples that a formula sees, at least those of a block
    /// @param rate     in Hz, for times
    /// @param onBlock  told of the end of each block, in seconds
    ChannelStrategy(const std::vector<Channel>& channels, std::size_t context, std::uint64_t rate,
                    std::function<void(double)> onBlock);

    /// @throw Failure, Interruption
    bool evaluateWindow(const Math::DoubleVector& in_window, std::vector<Math::DoubleVector>& out_channels) override;

    bool getProbabilitiesInfo(StringVector& out_info) override;

    /// Where channels were on, once the recording has been evaluated.
    std::vector<ChannelRun> finishRuns() { return m_runs.finish(); }

private:
    void compute(const Math::DoubleVector& block);

    const std::vector<Channel>& m_channels;
    const double m_dRate;
    const std::function<void(double)> m_onBlock;
    RowComputer m_computer;
    ChannelRuns m_runs;
    const bool m_bIsOddSize;       // spectra of contexts are not what the library is made for
    Math::DoubleVector m_context;  // the audio that ends with the block
    Math::DoubleVector m_values;   // of the block
    std::uint64_t m_uiPosition = 0;
};

}  // namespace Zantrix::Cli
