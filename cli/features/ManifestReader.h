#pragma once

#include "features/TableManifest.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::Cli {

/// What is wrong with a table or its manifest; the text names the file.
class TableError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A manifest in a file that stays where it is: it is read as far as it is asked for, and never as a whole in memory of
/// our own.
class ManifestReader {
public:
    /// @param path  of the manifest
    /// @throw TableError  when it cannot be read
    explicit ManifestReader(std::string path);
    ~ManifestReader();
    ManifestReader(ManifestReader&& other) noexcept;
    ManifestReader& operator=(ManifestReader&& other) noexcept;

    /// All but the inputs.
    struct Summary {
        TableDefinition definition;
        TableInputs inputs;
        std::optional<std::vector<std::string>> columns;  ///< none while no input was done
        std::uint64_t entryCount = 0;
        std::uint64_t doneCount = 0;
        std::uint64_t rowCount = 0;
        std::uint64_t byteCount = 0;  ///< of the table
    };

    /// Reads all once, and makes sure that its numbers agree with each other.
    ///
    /// @throw TableError
    Summary summarize() const;

    /// Calls `take` with each input, in order.
    ///
    /// @throw TableError
    void forEach(const std::function<void(const TableEntry& entry)>& take) const;

private:
    std::string m_strPath;
    std::string_view m_text;  // mapped
};

/// Whether a file begins like a manifest.
bool looksLikeManifest(const std::string& path);

/// Makes sure that no file but a manifest stands where one is to go: nobody asked for that to be replaced.
///
/// @throw UsageError  naming the file
void refuseToReplaceOther(const std::string& manifestPath);

/// Makes sure that a table is as large and begins as its manifest says.
///
/// @throw TableError
void checkTable(const std::string& path, const ManifestReader::Summary& summary);

/// What the table that a manifest describes begins with.
std::string headOf(const ManifestReader::Summary& summary);

}  // namespace Zantrix::Cli
