#pragma once

#include "features/TableManifest.h"
#include "shell/Output.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::Cli {

/// Which table is written, and where.
struct TableTarget {
    std::string path;  ///< "" is standard output
    TableDefinition definition;
    TableInputs inputs;
    bool hasManifest = false;  ///< a manifest is written beside it

    std::string manifestPath() const { return path + ".json"; }
};

/// Writes a table of windows: a row per window, a column per value. Rows come as bytes, see `RowEncoder`. CSV has a
/// head and a line per row; NPY is a matrix in NumPy's format.
///
/// Life: `open`; `begin` once the columns are known; for each input `beginInput`, `addRows`, and `endInput` or
/// `dropInput`; `finish`. Without `finish` no file appears. All operations return false when the output fails;
/// `describeError` then tells why, and nothing further works.
class TableWriter {
public:
    explicit TableWriter(TableTarget target);

    /// @throw UsageError  when a file is needed that can be written at any place, and the path leads to something else
    bool open();

    bool begin(const std::vector<std::string>& columns);

    /// Begins an input whose windows are cut at this sampling rate.
    bool beginInput(const std::string& name, std::uint64_t rate);

    bool addRows(std::string_view bytes, std::size_t rows);

    /// @param firstTime  the audio time of the first row in seconds, if there is one
    bool endInput(double firstTime);

    /// Whether `dropInput` can be relied on.
    bool canDrop() const { return m_output.isFile(); }

    /// Withdraws the rows of the current input, and the head of the table if this input brought it; false, without an
    /// error, when some have left already.
    bool dropInput();

    /// Tells of an input that failed.
    bool addFailed(const std::string& name);

    /// Whether a table is wanted though no input was done.
    bool wantsEmpty() const { return m_target.inputs.shard.has_value(); }

    /// Ends the table; one without `begin` has no columns of values.
    bool finish();

    /// Ends the output unfinished.
    void abandon() { m_output.abandon(); }

    std::string describeError() const;

private:
    std::string head(std::uint64_t rows) const;
    bool isNpy() const { return m_target.definition.format == "npy"; }

    TableTarget m_target;
    std::timespec m_started{};
    Output m_output;
    std::optional<ManifestWriter> m_manifest;
    std::vector<std::string> m_columns;
    bool m_bBegun = false;
    bool m_bWasBegun = false;  // before the current input
    TableEntry m_entry;        // the current input
    std::uint64_t m_uiInputStart = 0;
    std::uint64_t m_uiRows = 0;  // of inputs that are done
};

}  // namespace Zantrix::Cli
