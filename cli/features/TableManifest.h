#pragma once

#include "batch/Shard.h"
#include "features/Column.h"
#include "shell/InputNames.h"
#include "shell/Output.h"

#include <murvane/audio/input/AudioLinearWindower.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What stands beside a table, in "<path>.json", and says what is in it.
namespace Zantrix::Cli {

/// Changes when programs that know an older one would not understand a manifest.
inline constexpr std::uint64_t c_uiManifestVersion = 1;

/// How the rows of a table are made. Tables of the same definition and the same columns can be put together.
struct TableDefinition {
    std::string format;  ///< "csv" or "npy"
    std::vector<Column> columns;
    std::uint64_t windowMs = 0;
    std::uint64_t overlapMs = 0;
    bool suppressDc = false;

    bool operator==(const TableDefinition&) const = default;
};

/// In what the first of two definitions differs from the second, in words; "" when it does not.
std::string difference(const TableDefinition& a, const TableDefinition& b);

/// Where the manifest of a table stands.
inline std::string manifestPathOf(const std::string& tablePath) {
    return tablePath + ".json";
}

/// Which inputs a table is made of.
struct TableInputs {
    ListIdentity list;           ///< all of them
    std::optional<Shard> shard;  ///< the part of the list whose rows are in the table, unless it is all

    bool operator==(const TableInputs&) const = default;
};

/// Which table is written, and where.
struct TableTarget {
    std::string path;  ///< "" is standard output
    TableDefinition definition;
    TableInputs inputs;
    bool hasManifest = false;  ///< a manifest is written beside it

    std::string manifestPath() const { return manifestPathOf(path); }
};

/// In place of the digest of rows that nobody knows; no digest is as large.
inline constexpr std::uint64_t c_uiNoDigest = UINT64_MAX;

/// What a table holds of one input. Inputs that failed are told of in shards only.
struct TableEntry {
    std::string name;
    bool isDone = true;
    std::uint64_t rate = 0;  ///< in Hz
    std::uint64_t firstRow = 0;
    std::uint64_t rowCount = 0;
    std::uint64_t byteCount = 0;
    double firstTime = 0.0;               ///< of the first row, in seconds
    std::uint64_t digest = c_uiNoDigest;  ///< of the bytes of the rows, see `Digest`
};

/// Writes the file, input by input.
class ManifestWriter {
public:
    ManifestWriter(TableDefinition definition, TableInputs inputs)
        : m_definition(std::move(definition)), m_inputs(std::move(inputs)) {}

    /// Starts the file. This and all that follow return false when the output fails.
    bool open(const std::string& path) { return m_output.open(path); }

    /// Tells the columns; inputs before that are kept.
    bool setColumns(const std::vector<std::string>& columns);

    bool add(const TableEntry& entry);

    /// Ends the text; without `setColumns` it says that there are none.
    bool finish(std::uint64_t rows, std::uint64_t bytes);

    /// Where the text goes; to be committed.
    Output& output() { return m_output; }

    std::string describeError() const { return m_output.describeError(); }

private:
    bool begin(const std::string& columns);
    bool write(const std::string& text) { return m_output.write(text.data(), text.size()); }
    std::string textOf(const TableEntry& entry) const;

    TableDefinition m_definition;
    TableInputs m_inputs;
    Output m_output;
    std::string m_strKept;
    bool m_bBegun = false;
    bool m_bAny = false;
};

/// Has a table and its manifest appear, in an order in which no crash leaves two files that do not belong together.
///
/// @param tablePath  where the table goes
bool commitTable(Output& table, Output& manifest, const std::string& tablePath, const std::string& manifestPath);

}  // namespace Zantrix::Cli
