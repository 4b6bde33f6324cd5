#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Zantrix::Cli {

/// Where the files that a run writes will go: no two of them to one place, and none to that of a file that is read.
/// A place is a folder, whatever it is called, and a name in it, links followed; names of one file that is there are
/// places of their own, as the file is replaced, not written to. Devices and pipes hold nothing that could be lost,
/// and do not count. Nor does a table, a list or the like go where a recording is: nobody means that.
class OutputPlaces {
public:
    /// Whose an output is that belongs to no input.
    static constexpr std::size_t runItself = SIZE_MAX;

    /// What is in the way of an output.
    struct Taken {
        std::string path;       ///< where the output was to go
        std::size_t owner = 0;  ///< whose place that is
    };

    /// Adds an output of the run itself; "" and "-" are standard output.
    ///
    /// @throw UsageError  when another output goes there
    void add(const std::string& path);

    /// Adds the outputs that an input has; all of them, or none.
    ///
    /// @param owner  the position of the input
    /// @return the first one whose place is taken, by the same input perhaps; nothing when all were added
    /// @throw UsageError  when an output of the run itself goes to one of the places
    std::optional<Taken> add(const std::vector<std::string>& paths, std::size_t owner);

    /// Whether there is any file that an output would replace.
    bool replaceAny() const { return !m_files.empty(); }

    /// Makes sure that no output replaces a file that is read; one look at it, whatever the number of outputs.
    ///
    /// @throw UsageError  naming both
    void refuseToReplace(const std::string& input) const;

    /// Makes sure that no output of the run itself replaces a recording. To be called behind `refuseToReplace`, as that
    /// says more of a recording that is read.
    ///
    /// @throw UsageError  naming it
    void refuseToReplaceAudio() const;

private:
    struct FileId {
        std::uint64_t device = 0;
        std::uint64_t number = 0;

        auto operator<=>(const FileId&) const = default;
    };

    struct Place {
        std::string key;             // the folder and the name; "" for what does not count
        std::optional<FileId> file;  // that is there
    };

    Place locate(const std::string& path);
    std::string keyOf(const std::string& path);

    std::unordered_map<std::string, std::size_t> m_owners;  // of places
    std::map<FileId, std::string> m_files;                  // that would be replaced, and by which output
    std::vector<std::string> m_ofRun;                       // outputs of the run itself
    std::string m_strFolder;                                // looked at last, as all outputs may go to one
    FileId m_folder;
};

}  // namespace Zantrix::Cli
