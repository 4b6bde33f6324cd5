#pragma once

#include <murvane/audio/input/AudioLinearWindower.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::Cli {

/// Writes a table of windows: a row per window, a column per value. Rows come as bytes, see `RowEncoder`.
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

    virtual bool addRows(std::string_view bytes, std::size_t rows) = 0;

    /// @param firstTime  the audio time of the first row in seconds, if there is one
    virtual void endInput(double firstTime) = 0;

    /// Whether `dropInput` can be relied on.
    virtual bool canDrop() const = 0;

    /// Withdraws the rows of the current input, and the head of the table if this input brought it; false, without an
    /// error, when some have left already.
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
