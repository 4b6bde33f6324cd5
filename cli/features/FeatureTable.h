#pragma once

#include "features/FeatureColumns.h"
#include "features/TableWriter.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::Cli {

/// What the table needs to know of an input.
struct TableInput {
    std::string name;
    std::uint64_t rate = 0;                          ///< in Hz
    bool drifts = false;                             ///< its windows follow each other at another pace than their times
    std::shared_ptr<const FeatureColumns> pColumns;  ///< for this rate
    double firstTime = 0.0;                          ///< of the first row, in seconds
    std::uint64_t digest = c_uiNoDigest;             ///< of the bytes of all rows
};

/// The table that all inputs of a run share. It is touched by one of them at a time, in its turn, but for what says
/// otherwise.
///
/// Its columns are those of the first input that has rows; another one must have the same to stand in it.
class FeatureTable {
public:
    explicit FeatureTable(TableWriter& writer) : m_writer(writer) {}

    /// Why rows of an input cannot stand in the table, for a message; nothing when they can.
    std::optional<std::string> misfit(const TableInput& input) const;

    /// Begins an input. This and all that follow return false when the output fails.
    bool beginInput(const TableInput& input);

    /// Adds rows to the input begun last, which fits.
    bool addRows(const TableInput& input, std::string_view bytes, std::size_t rows);

    /// Adds all rows of an input from the table of an earlier run.
    bool copyRows(const TableInput& input, const PreviousTable::Rows& rows);

    /// How many bytes there are so far.
    std::uint64_t position() const { return m_writer.position(); }

    /// Whether `endInput` wants to be told a digest. May be asked out of turn.
    bool wantsDigests() const { return m_writer.hasManifest(); }

    bool endInput(const TableInput& input);

    /// Whether rows that were added can be withdrawn in any case. May be asked out of turn.
    bool canDrop() const { return m_writer.canDrop(); }

    /// Withdraws the rows of the input begun last; false when some have left already.
    bool dropInput();

    /// Tells of an input that failed.
    bool addFailed(const std::string& name) { return m_writer.addFailed(name); }

    /// What is odd about the table as a whole, once all inputs are done: messages.
    std::vector<std::string> oddities() const;

    /// Ends the table; without an input that was done there is none, unless it is a shard.
    bool finish();

private:
    bool begin(const std::shared_ptr<const FeatureColumns>& pColumns);

    TableWriter& m_writer;
    std::shared_ptr<const FeatureColumns> m_pColumns;        // of the table; before it begins, of the first input done
    std::shared_ptr<const FeatureColumns> m_pColumnsBefore;  // the current input
    bool m_bAnyDone = false;
    std::optional<TableInput> m_drifting;  // the first such input
};

}  // namespace Zantrix::Cli
