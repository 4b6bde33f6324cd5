#pragma once

#include <murvane/audio/input/TimeSource.h>
#include <murvane/core/Logging.h>
#include <murvane/math/DoubleVector.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

struct sf_private_tag;  // libsndfile's open file

namespace Zantrix::Audio {

/// Reads a mono audio file, of any container and encoding that libsndfile opens, as linear samples (full scale 1.0)
/// in chunks.
///
///     closed --setSourceAudioFile--> open --getNextLinearFrames--> ... --> at end
///                                     ^-- gotoStart, gotoAudioTime --------'
///
/// An open or a rewind that fails leaves the reader closed, and so does anything that starts chunks for which there is
/// no memory. Sampling rate, time and clipping value are then those of an earlier file or of the one refused, and mean
/// nothing.
///
/// Copies share the open file and its position: read through one of them only. The last one closes it. A reader
/// belongs to one thread.
class MURVANE_API AudioFileReader : public virtual TimeSource, public ObjectWithLogger {
public:
    /// No file; chunks of 1024 frames.
    AudioFileReader();
    AudioFileReader(const AudioFileReader&) = default;
    AudioFileReader& operator=(const AudioFileReader&) = default;
    ~AudioFileReader() override;

    // Ahead of the operations of its own, which this way follow each other in the virtual table: readers derived in
    // programs are built with these places.
    /// The time of the position in the file, in seconds.
    double getCurrentAudioTime() const override { return m_dCurrentAudioTime; }

    /// Opens a file and closes the one that was open, if any.
    ///
    /// @return false, after an ERROR record and with the reader closed, when libsndfile cannot open the file, or it
    ///         has other than one channel
    virtual bool setSourceAudioFile(const char* path);

    /// Goes back to the first frame. Where the file cannot seek, it is opened anew.
    ///
    /// @return false when that fails; the reader is then closed
    virtual bool gotoStart();

    /// Goes to the frame nearest to a time.
    ///
    /// @return false, after an ERROR record and with nothing changed, when the file cannot seek there
    virtual bool gotoAudioTime(double seconds);

    /// Reads the next chunk. The last one is short, or even empty when the chunks fit the file exactly. A closed reader
    /// has one last chunk, an empty one; chunks of 0 frames have no last one.
    ///
    /// @param out  replaced by the samples of the chunk
    /// @return false, with `out` empty, once the last chunk has been read
    virtual bool getNextLinearFrames(Math::DoubleVector& out);

    /// Sets the number of frames per chunk, from the next open, rewind or seek on; always true.
    bool setNbOfFramesToRead(std::size_t n);

    /// Rewinds and reads the whole file, in chunks of 1024 frames whatever is set.
    ///
    /// @param out  the samples are appended
    /// @return whether `out` holds anything; false, after an assertion record and with the chunk size left at 1024,
    ///         when the file cannot be rewound
    bool getAllLinearFrames(Math::DoubleVector& out);

    /// The file's sampling rate in Hz; 0 before the first file.
    std::size_t getSamplingRate() const { return m_uiSampleRate; }

    /// Whether the last chunk has been read.
    bool atEnd() const { return m_bAtEnd; }

    /// The magnitude from which samples count as clipped: the largest that the file's encoding decodes to, to six
    /// digits. 0.980347 (32124 / 32768) for mu-law, 0.984375 (32256 / 32768) for A-law, and 0.999969 (32767 / 32768)
    /// for 16-bit samples, for every other encoding, whatever its width, and before the first file.
    double getClippingValue() const;

    /// Writes the names of container and encoding, such as "WAV (Microsoft) (.wav) Signed 16 bit PCM"; nothing when
    /// no file is open.
    std::ostream& getFileInfo(std::ostream& os) const;

private:
    using SndFile = sf_private_tag;

    bool seek(std::uint64_t frame);
    bool startChunks(std::uint64_t frame);
    void readChunk(Math::DoubleVector& out);

    Math::DoubleVector m_vReadBuffer;
    std::uint64_t m_uiNbFramesRead = 0;  // position in the file
    double m_dCurrentAudioTime = 0.0;
    std::string m_strFileName;  // empty when no file is open
    std::uint64_t m_uiNbFramesToRead;
    std::uint64_t m_uiSampleRate = 0;
    double m_dSamplePeriod = 0.0;
    std::shared_ptr<SndFile> m_pSndFile;
    std::int32_t m_iFormat = 0;  // libsndfile's code: container in the high half, encoding in the low half
    bool m_bAtEnd = false;
    std::vector<short> m_vShorts;  // one chunk of 16-bit samples, as they stand in the file
};

}  // namespace Zantrix::Audio
