#pragma once

#include <murvane/audio/input/AudioLinearWindower.h>
#include <murvane/math/DoubleVector.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// Writes a table of windows: a row per window, a column per value.
///
/// Life: `open`; `begin` once the columns are known; for each input `beginInput`, `addRows`, and `endInput` or
/// `dropInput`; `finish`. Without `begin` and `finish` no file appears. All operations return false when the output
/// fails; `describeError` then tells why, and nothing further works.
class TableWriter {
public:
    virtual ~TableWriter() = default;

    virtual bool open() = 0;
    virtual bool begin(const std::vector<std::string>& columns) = 0;

    /// Begins an input whose windows are cut at this sampling rate.
    virtual bool beginInput(const std::string& name, std::uint64_t rate) = 0;

    /// Adds rows, each of as many values as there are columns.
    ///
    /// @param times  the audio time of each row in seconds
    virtual bool addRows(std::span<const double> times, std::span<const Math::DoubleVector> rows) = 0;

    virtual void endInput() = 0;

    /// Withdraws the rows of the current input; false, without an error, when some have left already.
    virtual bool dropInput() = 0;

    virtual bool finish() = 0;

    /// Ends the output unfinished.
    virtual void abandon() = 0;

    virtual std::string describeError() const = 0;
};

/// Comma-separated values: "file,time,<column>..." and a line per row.
///
/// @param path  "" is standard output
std::unique_ptr<TableWriter> makeCsvWriter(const std::string& path);

/// A matrix in NumPy's format, and beside it "<path>.json", which names columns and rows.
///
/// @param config  how windows were cut; the sampling rate is that of each input
std::unique_ptr<TableWriter> makeNpyWriter(const std::string& path, const Audio::LinearAudioWindower::Config& config);

}  // namespace Zantrix::Cli
