#pragma once

#include "features/FeatureColumns.h"
#include "features/TableWriter.h"
#include "shell/Diagnostics.h"
#include "shell/Progress.h"

#include <murvane/audio/input/AudioWindowedFileReader.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// Computes features and formulas of one input after the other into a table.
class FeatureRun {
public:
    enum class Outcome { Done, InputFailed, OutputFailed, Interrupted };

    /// @param config  how to cut windows; the sampling rate is that of each input
    FeatureRun(std::vector<Column> columns, const Audio::LinearAudioWindower::Config& config, TableWriter& writer,
               Diagnostics& diagnostics, Progress& progress);

    /// Adds the rows of one input. One that fails leaves none, where the output allows it.
    Outcome add(const std::string& name);

    /// Ends the table; without an input that was done there is none.
    ///
    /// @return false when the output fails
    bool finish();

private:
    // Results are the same for one window at a time; eight is what the features do fastest.
    static constexpr std::size_t c_uiBatch = 8;

    Outcome addOpened(Audio::WindowedAudioFileReader& reader, std::uint64_t promisedSamples);
    Outcome addWindows(Audio::WindowedAudioFileReader& reader, std::uint64_t& windowCount);
    bool chooseColumns(std::uint64_t rate);
    bool beginTable(const FeatureColumns& columns);
    Outcome fail(const std::string& message);

    std::vector<Column> m_requested;
    Audio::LinearAudioWindower::Config m_config;
    TableWriter& m_writer;
    Diagnostics& m_diagnostics;
    Progress& m_progress;

    std::optional<FeatureColumns> m_columns;  // of the table; before it begins, of the first input done
    std::optional<FeatureColumns> m_current;  // of the current input
    std::uint64_t m_uiCurrentRate = 0;        // for which they were measured
    bool m_bBegun = false;
    bool m_bAnyDone = false;

    std::array<Math::DoubleVector, c_uiBatch> m_windows;
    std::array<Math::DoubleVector, c_uiBatch> m_rows;
    std::array<double, c_uiBatch> m_times{};
};

}  // namespace Zantrix::Cli
