#pragma once

#include <murvane/audio/batch/AudioSetParser.h>
#include <murvane/core/MemAccount.h>
#include <murvane/core/RefCountedObjPtr.h>
#include <murvane/core/StringVector.h>

#include <boost/program_options.hpp>

#include <iosfwd>
#include <string>

namespace Zantrix::Audio {

/// Gives a batch tool its file selection and its main loop: files named on the command line, and those of an audio set,
/// each handed to the tool's strategy.
///
/// Life:
/// 1. Construct it with the tool's strategy, and `addOptions` to the tool's own.
/// 2. The tool parses its command line, stores and notifies the variables map.
/// 3. `processCmdlineVarsMap`, then `processAllFiles`.
class MURVANE_API AudioSetApplicationHelper : public virtual Object {
public:
    /// What the tool does with one file.
    class MURVANE_API Strategy : public virtual Object {
    public:
        /// Processes one file and says whether it succeeded. A failure does not keep the others from being tried.
        virtual bool processFile(const char* in_szFileName) = 0;
    };

    MURVANE_MEM_ACCOUNT("AudioSetApplicationHelper")

    /// Takes ownership of the strategy; copies of the helper share it. Null is reported as a failed assertion.
    explicit AudioSetApplicationHelper(Strategy* in_pNewStrategy);

    /// Declares the options "audioset" and "files-to-process", the latter also as any number of positional ones. They
    /// are bound to this object, which must outlive the notification of the variables map. Always true.
    ///
    /// @param visible     takes both options
    /// @param hidden      stays as it is
    /// @param positional  makes every bare argument a file to process
    bool addOptions(boost::program_options::options_description& visible,
                    boost::program_options::options_description& hidden,
                    boost::program_options::positional_options_description& positional);

    /// Reads the audio set, if one was named.
    ///
    /// @return false, after an ERROR record, when no file was named and the audio set has fewer than two entries: its
    ///         parser is at the end as soon as its last entry is the current one
    bool processCmdlineVarsMap(const boost::program_options::variables_map& variables);

    /// Hands every file to the strategy: those of the command line in their order, then those of the audio set.
    ///
    /// @return false when one of them failed, or, after an ERROR record, when there was none
    bool processAllFiles();

    /// Writes what follows the options in a usage line, and ends the line.
    std::ostream& writeUsage(std::ostream& os) const;

private:
    RefCountedObjPtr<Strategy> m_pStrategy;
    std::string m_strAudioSetFilename;
    StringVector m_vFilesToProcess;
    AudioSetParser m_audioSetParser;
};

}  // namespace Zantrix::Audio
