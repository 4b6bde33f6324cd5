#pragma once

#include "batch/BatchRun.h"
#include "features/Column.h"
#include "features/FeatureColumns.h"
#include "features/FeatureTable.h"
#include "features/InputRows.h"
#include "features/PreviousTable.h"
#include "features/RowEncoder.h"

#include <murvane/audio/input/AudioWindowedFileReader.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// Computes features and formulas of one input after the other.
class FeatureWorker : public BatchWorker {
public:
    /// @param config  how to cut windows; the sampling rate is that of each input
    /// @param pPrevious  the table of an earlier run, whose rows hold for inputs that have not changed since; or null
    FeatureWorker(std::vector<Column> columns, const Audio::LinearAudioWindower::Config& config, FeatureTable& table,
                  const PreviousTable* pPrevious, std::unique_ptr<RowEncoder> pEncoder, Diagnostics& diagnostics,
                  Progress& progress);

    std::unique_ptr<Delivery> process(const std::string& name, Turn& turn) override;

private:
    // Results are the same for one window at a time; eight is what the features do fastest.
    static constexpr std::size_t c_uiBatch = 8;

    std::unique_ptr<Delivery> takeOver(const std::string& name);
    bool configure(Audio::WindowedAudioFileReader& reader);
    std::optional<std::string> chooseColumns(std::uint64_t rate);
    bool addWindows(Audio::WindowedAudioFileReader& reader, Turn& turn, InputRows& rows);
    bool mayGoOn(Turn& turn, InputRows& rows);
    bool checkEnd(std::uint64_t promisedSamples);
    bool fail(const std::string& message);

    std::vector<Column> m_requested;
    Audio::LinearAudioWindower::Config m_config;
    FeatureTable& m_table;
    const PreviousTable* m_pPrevious;
    std::unique_ptr<RowEncoder> m_pEncoder;
    Diagnostics& m_diagnostics;
    Progress& m_progress;

    std::shared_ptr<const FeatureColumns> m_pColumns;  // of the current input
    std::uint64_t m_uiColumnsRate = 0;                 // for which they were measured
    std::uint64_t m_uiWindows = 0;                     // of the current input

    std::array<Math::DoubleVector, c_uiBatch> m_windows;
    std::array<Math::DoubleVector, c_uiBatch> m_rows;
    std::array<double, c_uiBatch> m_times{};
};

}  // namespace Zantrix::Cli
