#pragma once

#include <murvane/audio/input/AudioFileReader.h>
#include <murvane/core/LimitedObjPtr.h>
#include <murvane/core/Logging.h>
#include <murvane/core/MemAccount.h>
#include <murvane/core/StringVector.h>
#include <murvane/iff/IFFParser.h>
#include <murvane/iff/WavChunks.h>
#include <murvane/math/DoubleVector.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Zantrix::Audio {

/// Runs a strategy over a recording, block by block, and writes the recording again with the strategy's values beside
/// the samples: the curves of a detector under the audio that caused them, for any viewer of audio files.
///
/// The recording is a WAV file, mono, 16-bit PCM. The output has its rate and encoding and 1 + K channels: the samples
/// as they were, then each of the strategy's K channels, where 1.0 is stored as 32767 and -1.0 as -32767. All chunks
/// but "fmt " and "data" are carried over as they are.
///
/// Life: `configure` once, then `processFile` for any number of recordings. A copy keeps the configuration and shares
/// the strategy. An evaluator belongs to one thread, and holds a recording and its values in memory.
class MURVANE_API AudioFileEvaluator : public ObjectWithLogger {
public:
    /// What a program computes from a recording. The evaluator never owns one.
    class MURVANE_API Strategy {
    public:
        /// Computes the values of one block.
        ///
        /// @param in_window     consecutive samples, full scale 1.0. All blocks of a file have the configured size,
        ///                      but the last is shorter; it is empty when the file ends with a whole block
        /// @param out_channels  empty; takes one vector for each channel, each as long as the block, of values from
        ///                      -1 to 1: others are clamped, what is not a number is stored as 0. The number of
        ///                      channels is the same for every block of a file
        /// @return ignored
        virtual bool evaluateWindow(const Math::DoubleVector& in_window,
                                    std::vector<Math::DoubleVector>& out_channels) = 0;

        /// Names the channels. Asked for once a file, after its last block.
        ///
        /// @param out_info  empty; takes one text for each channel
        /// @return false keeps the output from being written
        virtual bool getProbabilitiesInfo(StringVector& out_info) = 0;

    protected:
        // Nobody deletes a strategy through this interface. A virtual destructor would move the places of the
        // operations in its virtual table, and strategies of programs are built with these.
        ~Strategy() = default;
    };

    MURVANE_MEM_ACCOUNT("AudioFileEvaluator")

    /// Not configured.
    AudioFileEvaluator();

    /// Says how recordings are evaluated, and where the results go: "dir/call1.wav" becomes "OUT/call1.SUFFIX.wav".
    ///
    /// @param in_windowSize          samples in a block, at least 1
    /// @param in_pStrategy           must outlive the evaluator and its copies
    /// @param in_szOutputFileSuffix  the output's name has it between two points ahead of "wav"
    /// @param in_szOutputDir         an existing folder
    /// @return false when a pointer is null (a failed assertion), or, after an ERROR record, when there cannot be
    ///         blocks of this size or the folder's name is none. What was configured before then stays
    bool configure(unsigned long long in_windowSize, LimitedObjPtr<Strategy> in_pStrategy,
                   const char* in_szOutputFileSuffix, const char* in_szOutputDir);

    /// Evaluates one recording and writes the output file, which appears when it is whole. A recording without samples
    /// becomes one without further channels.
    ///
    /// Every failure is reported, by an ERROR record or a failed assertion, and leaves no output file, nor a part of
    /// one; an older one stays. It fails when
    /// - the recording cannot be opened or is not as told above; what a mono WAV file can be found out to be is
    ///   found out after the strategy has seen all of it;
    /// - the strategy's channels are not as told above. After another number of them than before, the values up to
    ///   there are still written if they are complete, as they are when this happened in an empty last block;
    /// - the output would be the recording itself, does not fit a WAV file, or cannot be written.
    /// The evaluator is ready for the next recording in any case, also after an exception of the strategy.
    bool processFile(const char* in_szFileName);

private:
    bool evaluateBlocks(const std::string& fileName);
    bool prepareOutputFile(const char* in_szFileName);
    void pushToOutputFile(unsigned long long nbSamples, const std::vector<Math::DoubleVector>& channels);
    bool endOutputFile();

    bool readFormat();
    bool widenFormat();
    bool fillInSamples(const char* samples, std::size_t size);
    bool writeOutputFile();
    void logTransformations(unsigned long long nbSamples, const std::vector<Math::DoubleVector>& channels) const;
    std::size_t getFrameSize() const;
    std::size_t getNbOfFrames() const;

    LimitedObjPtr<Strategy> m_pStrategy;
    AudioFileReader m_reader;
    std::string m_strOutputSuffix;
    std::string m_strOutputDir;
    std::string m_strOutputFileName;
    Math::DoubleVector m_vAudio;
    StringVector m_probInfo;
    IFF::IFFParser m_parser;
    IFF::WavFmtChunk m_fmt;
    // The output's audio as it will stand in the file: for each sample of the recording 2 bytes that wait for it, then
    // the strategy's values, m_uiNbChannels of them.
    std::string m_strFrames;
    std::size_t m_uiNbChannels = 0;
};

}  // namespace Zantrix::Audio
