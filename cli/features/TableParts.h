#pragma once

#include "features/ManifestReader.h"
#include "shell/Output.h"

#include <ctime>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// One of the parts that a table was made in.
struct TablePart {
    std::string path;
    ManifestReader manifest;
    ManifestReader::Summary summary;
};

/// The parts of one table, which give it back: the bytes are those of one run over the whole list.
class TableParts {
public:
    /// Looks at the manifests of all parts, in whatever order they are given, and makes sure that they belong together
    /// and are all there.
    ///
    /// @throw TableError  naming the first part with which something is wrong
    explicit TableParts(const std::vector<std::string>& paths);

    /// Of the whole table, which has no shard; without columns when no input was done.
    const ManifestReader::Summary& whole() const { return m_whole; }

    /// Writes the whole table.
    ///
    /// @return false when the output fails, and when `Interrupt::requested()`
    /// @throw TableError  when a part can no longer be read, or its rows are not those that its manifest tells of
    bool writeTable(Output& output) const;

    /// Writes what belongs into the manifest of the whole table.
    bool writeManifest(ManifestWriter& writer) const;

    /// When the oldest part was last modified.
    std::timespec time() const;

private:
    void checkBelongTogether(const TablePart& part) const;
    void checkAllThere() const;
    void addUp();

    std::vector<TablePart> m_parts;  // in the order of the list
    ManifestReader::Summary m_whole;
};

}  // namespace Zantrix::Cli
