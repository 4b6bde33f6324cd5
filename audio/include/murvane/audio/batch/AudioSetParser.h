#pragma once

#include <murvane/core/Object.h>
#include <murvane/core/StringVector.h>

#include <cstddef>
#include <string>

namespace Zantrix::Audio {

/// Reads an audio set, a text file that lists recordings one per line, and hands out those that exist.
///
/// Empty lines and lines that begin with "#" are skipped; nothing is trimmed. A relative name is looked for beside the
/// list, then in the folder that the environment variable "ZANTRIX_CPA_DATA" names. Names that lead to no file are
/// reported at ERROR and skipped.
///
/// Life: `setAudioSetFilename`, `gotoFirstAudioFile`, then `getNextAudioFile` until it returns false.
class MURVANE_API AudioSetParser : public virtual Object {
public:
    /// Adds the entries of a list to those read before.
    ///
    /// @return false, after an ERROR record and with nothing changed, when the list cannot be read
    bool setAudioSetFilename(const char* fileName);

    /// The list read last, as it was named; "" before the first.
    const char* getAudioSetFilename() const { return m_strAudioSetFilename.c_str(); }

    /// How many entries were read so far, whether or not they lead to a file.
    std::size_t getNbOfEntries() const { return m_vFiles.size(); }

    /// Goes back to the first entry; false when there is none.
    bool gotoFirstAudioFile();

    /// Takes the next entry that leads to a file.
    ///
    /// @param out  its canonical path, or the name as it stands in the list if it is absolute; "" at the end
    /// @return false at the end
    bool getNextAudioFile(std::string& out);

    /// Whether the current entry is the last one or there is none. It is true while the last entry has not been
    /// handed out yet: a loop that asks it takes the current entry first.
    bool atEnd() const;

    /// Looks for the file of one entry, as `getNextAudioFile` does; any number of threads may at the same time.
    ///
    /// @param listName  the list in which the entry stands; it is not opened
    /// @param out       as `getNextAudioFile` gives it; "" when there is none
    /// @return false, after an ERROR record, when the entry leads to no file
    static bool findAudioFile(const char* listName, const char* entry, std::string& out);

private:
    void goToNextValidFilename();
    const char* getFullFilename(const char* name);

    std::string m_strAudioSetFilename;
    StringVector m_vFiles;
    std::size_t m_uiCurrent = 0;
    bool m_bFirst = false;  // the current entry has not been looked at yet
    std::string m_strFullFilename;
};

}  // namespace Zantrix::Audio
