#include "shell/InputFile.h"

#include "shell/OutputPlaces.h"
#include "shell/RepairedStream.h"
#include "shell/WavHeader.h"

#include <sndfile.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Zantrix::Cli {

namespace {

// libsndfile keeps why an opening failed for the whole process, until the next opening on any thread. Many may open at
// the same time, but who asks for a reason is alone.
std::shared_mutex g_openings;

// Except that the library may open a file that is known to be sound, for longer than anybody could wait: that leaves
// no reason at all.
constexpr int c_iTries = 1000;

std::string reasonOfFailure(const std::string& path) {
    const std::unique_lock alone(g_openings);
    std::string reason;
    for (int i = 0; i < c_iTries; ++i) {
        SF_INFO info{};
        if (SNDFILE* pFile = sf_open(path.c_str(), SFM_READ, &info)) {
            sf_close(pFile);
            return "it changes while it is looked at";
        }
        reason = sf_strerror(nullptr);
        if (reason != sf_error_number(SF_ERR_NO_ERROR)) {
            break;
        }
    }
    return reason;
}

// What libsndfile has no words of its own for.
std::string explainFailure(const std::string& path) {
    const auto header = readWavHeader(path);
    if (header && header->format && header->format->rate == 0) {
        return "its header says 0 samples a second";
    }
    if (const auto counts = countWavChunks(path); counts && counts->data > 1) {
        return "it has " + std::to_string(counts->data) + " data chunks";
    }
    return reasonOfFailure(path);
}

}  // namespace

InputFile::InputFile(std::string name) : m_strName(std::move(name)), m_strPath(m_strName) {
    if (m_strPath == "-") {
        m_strPath = "./-";  // a file like any other, where libsndfile would read standard input
    }
}

InputFile::~InputFile() = default;

bool InputFile::check(Diagnostics& diagnostics) {
    if (!checkNotEmpty(m_strPath, diagnostics)) {
        return false;
    }
    if (fileBytes(m_strPath) == 0) {
        return true;
    }
    return checkHeader(diagnostics) && (m_pRepaired != nullptr || checkAudio(diagnostics));
}

bool InputFile::checkHeader(Diagnostics& diagnostics) {
    const auto header = readWavHeader(m_strPath);
    if (!header) {
        return true;
    }
    const std::string present = std::to_string(header->presentBytes);
    switch (header->size) {
        case WavHeader::Size::Fits:
            return true;
        case WavHeader::Size::Cut:
            diagnostics.error(header->describe());
            return false;
        case WavHeader::Size::Streamed:
            diagnostics.warning("its header gives no true length; taking all " + present + " bytes to the end");
            return true;
        case WavHeader::Size::NeverSet:
            break;
    }
    m_pRepaired = std::make_unique<RepairedStream>();
    if (!m_pRepaired->start(m_strPath)) {
        diagnostics.error("its header says 0 bytes of audio though " + present + " follow, and it cannot be read as " +
                          "a stream: " + m_pRepaired->getError());
        return false;
    }
    diagnostics.warning("its header was never completed; taking all " + present + " bytes to the end");
    m_strPath = m_pRepaired->path();
    return true;
}

bool InputFile::checkAudio(Diagnostics& diagnostics) {
    const std::optional<AudioProperties> audio = lookAt(m_strPath);
    m_bOpens = audio.has_value();
    if (!m_bOpens) {
        diagnostics.error("cannot be read as audio: " + explainFailure(m_strPath));
        return false;
    }
    if (audio->channels != 1) {
        diagnostics.error("has " + std::to_string(audio->channels) + " channels; only mono audio can be analysed");
        return false;
    }
    if (audio->isEmpty) {
        diagnostics.error("holds no audio");
        return false;
    }
    m_iFormat = audio->format;
    m_uiRate = audio->rate;
    m_uiSamples = audio->samples;
    return true;
}

bool InputFile::isPlainWav() const {
    return m_iFormat == (SF_FORMAT_WAV | SF_FORMAT_PCM_16);
}

std::optional<AudioProperties> lookAt(const std::string& path) {
    SF_INFO info{};
    {
        const std::shared_lock among(g_openings);
        SNDFILE* pFile = sf_open(path.c_str(), SFM_READ, &info);
        if (pFile == nullptr) {
            return std::nullopt;
        }
        sf_close(pFile);
    }
    AudioProperties audio;
    audio.channels = info.channels;
    audio.rate = static_cast<std::uint64_t>(info.samplerate);
    audio.samples = info.frames < SF_COUNT_MAX ? static_cast<std::uint64_t>(info.frames) : 0;
    audio.isEmpty = info.frames == 0;
    audio.format = info.format;
    return audio;
}

bool checkReadable(const std::string& path, Diagnostics& diagnostics) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        diagnostics.error(std::strerror(errno));
        return false;
    }
    if (S_ISDIR(status.st_mode)) {
        diagnostics.error("is a directory");
        return false;
    }
    if (::access(path.c_str(), R_OK) != 0) {
        diagnostics.error(std::strerror(errno));
        return false;
    }
    return true;
}

bool checkNotEmpty(const std::string& path, Diagnostics& diagnostics) {
    if (!checkReadable(path, diagnostics)) {
        return false;
    }
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size == 0) {
        diagnostics.error("is empty");
        return false;
    }
    return true;
}

bool InputFile::open(Audio::AudioFileReader& reader, Diagnostics& diagnostics) const {
    std::shared_lock among(g_openings, std::defer_lock);
    if (m_bOpens) {
        among.lock();  // not for pipes, which may keep whoever opens them waiting
    }
    if (!reader.setSourceAudioFile(m_strPath.c_str())) {
        diagnostics.error("cannot be opened");
        return false;
    }
    return true;
}

std::uint64_t fileBytes(const std::string& path) {
    struct stat status {};
    const bool isFile = ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? static_cast<std::uint64_t>(status.st_size) : 0;
}

void refuseToOverwrite(const std::vector<std::string>& inputs, const std::string& output) {
    OutputPlaces outputs;
    outputs.add(output);
    std::for_each(inputs.begin(), inputs.end(), [&](const std::string& input) { outputs.refuseToReplace(input); });
    outputs.refuseToReplaceAudio();
}

}  // namespace Zantrix::Cli
