#pragma once

#include "features/PreviousTable.h"
#include "features/ResumedOutput.h"
#include "features/TableManifest.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::Cli {

/// Writes a table of windows: a row per window, a column per value. Rows come as bytes, see `RowEncoder`. CSV has a
/// head and a line per row; NPY is a matrix in NumPy's format.
///
/// Life: `open`; `begin` once the columns are known; for each input `beginInput`, `addRows`, and `endInput` or
/// `dropInput`; `finish`. Without `finish` no file appears. All operations return false when the output fails;
/// `describeError` then tells why, and nothing further works.
class TableWriter {
public:
    /// @param pPrevious  what `copyRows` takes rows from, or null
    TableWriter(TableTarget target, const PreviousTable* pPrevious);

    /// @throw UsageError  when a file is needed that can be written at any place, and the path leads to something else
    bool open();

    bool begin(const std::vector<std::string>& columns);

    /// Whether `begin` was called; not by an input that was withdrawn.
    bool hasBegun() const { return m_bBegun; }

    /// Begins an input whose windows are cut at this sampling rate.
    bool beginInput(const std::string& name, std::uint64_t rate);

    bool addRows(std::string_view bytes, std::size_t rows);

    /// Adds rows that an earlier run wrote of this input.
    bool copyRows(const PreviousTable::Rows& rows);

    /// How many bytes the table has so far.
    std::uint64_t position() const { return m_output.position(); }

    /// @param firstTime  the audio time of the first row in seconds, if there is one
    /// @param digest     of the bytes of all rows; `c_uiNoDigest` if nobody knows
    bool endInput(double firstTime, std::uint64_t digest);

    /// Whether digests are wanted.
    bool hasManifest() const { return m_manifest.has_value(); }

    /// Whether `dropInput` can be relied on.
    bool canDrop() const { return m_output.output().isFile(); }

    /// Withdraws the rows of the current input, and the head of the table if this input brought it; false, without an
    /// error, when some have left already.
    bool dropInput();

    /// Tells of an input that failed.
    bool addFailed(const std::string& name);

    /// Whether a table is wanted though no input was done.
    bool wantsEmpty() const { return m_target.inputs.shard.has_value(); }

    /// Ends the table; one without `begin` has no columns of values. One that would be that of the earlier run stays as
    /// it is.
    bool finish();

    /// Ends the output unfinished.
    void abandon() { m_output.output().abandon(); }

    std::string describeError() const;

private:
    bool writeHead();
    bool isUnchanged() const;
    std::string head(std::uint64_t rows) const;
    bool isNpy() const { return m_target.definition.format == "npy"; }

    TableTarget m_target;
    std::timespec m_started{};
    const PreviousTable* m_pPrevious;
    ResumedOutput m_output;
    std::optional<ManifestWriter> m_manifest;
    std::vector<std::string> m_columns;
    bool m_bBegun = false;
    bool m_bWasBegun = false;  // before the current input
    TableEntry m_entry;        // the current input
    std::uint64_t m_uiInputStart = 0;
    std::uint64_t m_uiRows = 0;      // of inputs that are done
    std::uint64_t m_uiComputed = 0;  // inputs that are done, by this run
    std::uint64_t m_uiCopied = 0;    // inputs that are done, by the earlier run
    bool m_bIsCopy = false;          // the current input
};

}  // namespace Zantrix::Cli
