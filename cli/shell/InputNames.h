#pragma once

#include "shell/Diagnostics.h"
#include "shell/OutputPlaces.h"

#include <boost/program_options/options_description.hpp>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zantrix::Cli {

/// Where a subcommand takes its inputs from, as its arguments say.
struct InputArguments {
    std::vector<std::string> files;  ///< operands; "-" stands for names from standard input
    std::size_t behindDashes = 0;    ///< how many of them, at the end, are files whatever they look like
    std::string audioSet;            ///< a list of more files; "" for none

    bool isEmpty() const { return files.empty() && audioSet.empty(); }
};

/// Adds --audioset.
void addInputOptions(boost::program_options::options_description& description, InputArguments& arguments);

/// What the help of a subcommand says of its inputs.
inline constexpr const char* c_szInputsHelp =
    "An audio set is a text file with the name of one audio file on each line; empty lines and those that begin with\n"
    "'#' are skipped. A relative name is looked for beside the list, then in the folder $ZANTRIX_CPA_DATA. In place "
    "of\n"
    "a FILE, '-' takes such lines from standard input; relative names are then those of the working directory. Behind\n"
    "'--', '-' is a file.\n\n";

/// How many of a subcommand's arguments stand behind "--".
std::size_t countBehindDashes(const std::vector<std::string>& arguments);

/// What a list of inputs can be known by.
struct ListIdentity {
    std::uint64_t count = 0;  ///< of names
    std::string digest;       ///< of all of them; of relative entries of an audio set, with the folder of that

    bool operator==(const ListIdentity&) const = default;
};

/// The names of all inputs of a run, in order: the operands, those from standard input in the place of "-", then the
/// entries of the audio set. However many there are, they take little more room than their text.
///
/// On standard input and in an audio set each line is a name; empty lines and those that begin with "#" are skipped.
/// Nothing is trimmed, but a carriage return at the end of a line is ignored unless a file is called like that, and so
/// is a byte order mark at the start. What begins like audio is no list, nor is an audio set with zero bytes.
class InputNames {
public:
    /// Reads all names.
    ///
    /// @return false, after a message, when a list cannot be read; nothing of it is there, but the other names are
    /// @throw UsageError  when "-" is given twice
    bool gather(const InputArguments& arguments, Diagnostics& diagnostics);

    std::size_t size() const { return m_names.size(); }
    bool isEmpty() const { return m_names.empty(); }

    ListIdentity identity() const;

    /// Keeps the names from `first` to the one before `end`, and forgets all others.
    void keep(std::size_t first, std::size_t end);

    /// A name as it was given.
    std::string given(std::size_t index) const;

    /// Whom messages about an input are about before its file is found: the list that it stands in, or itself.
    std::string teller(std::size_t index) const;

    /// What an input is called in lists of what became of it: as in messages and tables, its file, or, when there is
    /// none, as it was given.
    std::string name(std::size_t index) const;

    /// The file of an input. Any number of threads may ask.
    ///
    /// @return nothing, after a message, when there is none; names that are not from an audio set are not looked up
    std::optional<std::string> find(std::size_t index, Diagnostics& diagnostics) const;

    /// The same without a message.
    std::optional<std::string> findQuietly(std::size_t index) const;

    /// Makes sure that no output replaces an input or the list that names it, each of which is looked up once, and none
    /// of the run itself any other recording.
    ///
    /// @throw UsageError  naming what would be replaced
    void refuseToOverwrite(const OutputPlaces& outputs) const;

    /// The same of outputs that have nothing to do with inputs, and which must differ from each other.
    void refuseToOverwrite(const std::vector<std::string>& outputs) const;

    /// Says why nothing must be done with an input.
    void refuse(std::size_t index, std::string why) { m_refused[index] = std::move(why); }

    /// What `refuse` said; null for an input that may be worked on.
    const std::string* refusal(std::size_t index) const;

    /// A list of which nothing is there, and why.
    struct Unreadable {
        std::string list;
        std::string why;
    };

    const std::vector<Unreadable>& unreadable() const { return m_unreadable; }

private:
    struct Name {
        std::uint32_t block = 0;
        std::uint32_t offset = 0;
        std::uint32_t length = 0;
    };

    void add(std::string_view name);
    std::optional<std::string> addLines(int descriptor, const std::function<bool(const std::string&)>& isFile);
    bool addStandardInput(Diagnostics& diagnostics);
    bool addAudioSet(Diagnostics& diagnostics);
    std::string_view at(std::size_t index) const;
    std::optional<std::string> find(std::size_t index) const;
    std::optional<std::string> findEntry(const std::string& name) const;

    std::deque<std::string> m_blocks;
    std::deque<Name> m_names;
    std::size_t m_uiAudioSet = 0;  // the first entry of the audio set
    std::string m_strAudioSet;
    std::vector<Unreadable> m_unreadable;
    std::map<std::size_t, std::string> m_refused;
};

}  // namespace Zantrix::Cli
