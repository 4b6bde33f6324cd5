#pragma once

#include "shell/Diagnostics.h"

#include <murvane/audio/input/AudioFileReader.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Zantrix::Cli {

class RepairedStream;

/// One input: looked at before the library opens it, so that whatever is wrong with it is told in one line.
class InputFile {
public:
    explicit InputFile(std::string name);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Whether the input exists and holds mono audio. What is wrong, or only odd, goes to `diagnostics`. Pipes and
    /// devices pass unseen, as a look would consume them.
    bool check(Diagnostics& diagnostics);

    const std::string& name() const { return m_strName; }

    /// The path to open; it may be opened once.
    const std::string& path() const { return m_strPath; }

    /// Opens the input, once, after `check`; false after a message.
    bool open(Audio::AudioFileReader& reader, Diagnostics& diagnostics) const;

    /// The sampling rate in Hz; 0 when it is not known before the input is opened.
    std::uint64_t rate() const { return m_uiRate; }

    /// The number of samples that the header promises; 0 when it is not known.
    std::uint64_t samples() const { return m_uiSamples; }

    /// Whether it is a WAV file of 16-bit PCM, in the plain form of the header; false when that is not known.
    bool isPlainWav() const;

private:
    bool checkHeader(Diagnostics& diagnostics);
    bool checkAudio(Diagnostics& diagnostics);

    std::string m_strName;
    std::string m_strPath;
    std::uint64_t m_uiRate = 0;
    std::uint64_t m_uiSamples = 0;
    std::int32_t m_iFormat = 0;  // libsndfile's code; 0 when it is not known
    bool m_bOpens = false;       // it was opened for a look
    std::unique_ptr<RepairedStream> m_pRepaired;
};

/// What an audio file says that it is.
struct AudioProperties {
    int channels = 0;
    std::uint64_t rate = 0;     ///< in Hz
    std::uint64_t samples = 0;  ///< of each channel; 0 when it is not known, or there are none
    bool isEmpty = false;       ///< there are none
    std::int32_t format = 0;    ///< libsndfile's code
};

/// Opens an audio file for a look; nothing when it cannot be read as audio. All looks go through here: of failures on
/// several threads each keeps its own reason.
std::optional<AudioProperties> lookAt(const std::string& path);

/// Whether a path leads to something that can be read, and is no directory. What is wrong goes to `diagnostics`.
bool checkReadable(const std::string& path, Diagnostics& diagnostics);

/// The same of what cannot be an empty file, such as audio.
bool checkNotEmpty(const std::string& path, Diagnostics& diagnostics);

/// The bytes of a file; 0 for what is not a regular file.
std::uint64_t fileBytes(const std::string& path);

/// Makes sure that an output, which is no audio, replaces none of the inputs, and no other recording.
///
/// @param output  its path; "" is standard output
/// @throw UsageError naming what would be replaced
void refuseToOverwrite(const std::vector<std::string>& inputs, const std::string& output);

}  // namespace Zantrix::Cli
