#pragma once

#include "features/ManifestReader.h"
#include "features/TableManifest.h"
#include "shell/Diagnostics.h"
#include "shell/Output.h"

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::Cli {

/// A table that an earlier run left, with its manifest: the rows of inputs that have not changed since need not be
/// computed again. Any number of threads may ask.
class PreviousTable {
public:
    /// Where the rows of an input stand.
    struct Rows {
        std::uint64_t offset = 0;  ///< in bytes
        std::uint64_t byteCount = 0;
        std::uint64_t rowCount = 0;
        std::uint64_t rate = 0;
        double firstTime = 0.0;
        std::uint64_t digest = c_uiNoDigest;
    };

    /// Opens what stands where a table is to go. When nothing can be taken over from there, a warning says why, unless
    /// there is nothing at all.
    ///
    /// @throw UsageError  when the table there was made otherwise, and should hardly be replaced
    static std::unique_ptr<PreviousTable> open(const TableTarget& target, Diagnostics& diagnostics);

    ~PreviousTable();
    PreviousTable(const PreviousTable&) = delete;
    PreviousTable& operator=(const PreviousTable&) = delete;

    const ManifestReader::Summary& summary() const { return m_summary; }

    /// Whether it holds the rows of this input, done, and the file has not been modified since the run began.
    bool holds(const std::string& name) const;

    /// The rows of an input that it holds; of one that it holds more than once, those at this place if they are there.
    Rows find(const std::string& name, std::uint64_t preferredOffset) const;

    /// Writes bytes of the table.
    ///
    /// @return false when the output fails
    /// @throw TableError  when they cannot be read
    bool copy(std::uint64_t offset, std::uint64_t size, Output& output) const;

private:
    // Names are known by two numbers: ten million of them would not fit as they are.
    struct Key {
        explicit Key(std::string_view name);
        bool operator==(const Key&) const = default;
        auto operator<=>(const Key&) const = default;

        std::uint64_t first;
        std::uint64_t second;
    };
    struct Item {
        Key key;
        Rows rows;
    };

    PreviousTable(const std::string& path, const ManifestReader& manifest, ManifestReader::Summary summary);

    std::vector<Item>::const_iterator lowerBound(const Key& key) const;

    std::string m_strPath;
    ManifestReader::Summary m_summary;
    int m_iDescriptor = -1;
    std::timespec m_time{};     // when it was last modified
    std::vector<Item> m_items;  // in the order of their keys, then of their places
};

}  // namespace Zantrix::Cli
