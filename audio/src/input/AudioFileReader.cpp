#include <murvane/audio/input/AudioFileReader.h>
#include <murvane/core/Assertion.h>
#include <murvane/core/Text.h>

#include <sndfile.h>

#include <array>
#include <exception>
#include <ios>
#include <ostream>

namespace Zantrix::Audio {

namespace {

// Lines given as numbers are those by which log filters know the record; they never change (see Logging.h).
constexpr const char* c_szSource = "AudioFileReader";
constexpr std::uint64_t c_uiDefaultNbFramesToRead = 1024;
constexpr std::int32_t c_iSubtypeMask = SF_FORMAT_SUBMASK;

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.AudioFileReader");
    return logger;
}

// What libsndfile knows of a format code, or of an encoding alone.
SF_FORMAT_INFO formatInfo(int format) {
    SF_FORMAT_INFO info{};
    info.format = format;
    sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof(info));
    return info;
}

// Whether the samples are 16-bit numbers and nothing more. Not so in every container that says so: a sample dump packs
// 21 bits of each, whatever its encoding.
bool isPlain16Bit(int format) {
    if ((format & c_iSubtypeMask) != SF_FORMAT_PCM_16) {
        return false;
    }
    switch (format & SF_FORMAT_TYPEMASK) {
        case SF_FORMAT_WAV:
        case SF_FORMAT_WAVEX:
        case SF_FORMAT_AIFF:
        case SF_FORMAT_AU:
        case SF_FORMAT_FLAC:
            return true;
        default:
            return false;
    }
}

}  // namespace

AudioFileReader::AudioFileReader() : ObjectWithLogger(logger()), m_uiNbFramesToRead(c_uiDefaultNbFramesToRead) {
    const TraceScope scope(*this, "AudioFileReader ctor", c_szSource, __LINE__);
}

AudioFileReader::~AudioFileReader() {
    const TraceScope scope(*this, "AudioFileReader dtor", c_szSource, __LINE__);
    m_pSndFile.reset();
}

bool AudioFileReader::setSourceAudioFile(const char* path) {
    refreshLogLevel();
    const TraceScope scope(*this, "AudioFileReader::setSourceAudioFile", c_szSource, __LINE__);

    // A copy: the caller may have passed the name of the file that is about to be forgotten.
    const std::string name = Text::orEmpty(path);
    m_strFileName.clear();
    m_bAtEnd = false;
    m_vReadBuffer.clear();
    m_pSndFile.reset();

    SF_INFO info{};
    SNDFILE* pSndFile = sf_open(name.c_str(), SFM_READ, &info);
    if (pSndFile == nullptr) {
        std::array<char, 2048> error{};
        sf_error_str(nullptr, error.data(), error.size());
        log(LogLevel::Error, c_szSource, 99, "failed to open ", name, ", ", error.data());
        return false;
    }
    m_pSndFile = std::shared_ptr<SndFile>(pSndFile, [](SNDFILE* pFile) { sf_close(pFile); });
    m_iFormat = info.format;
    log(LogLevel::Debug, c_szSource, 106, name, " : sfInfo.format=0x", std::hex, m_iFormat);
    if (info.channels != 1) {
        log(LogLevel::Error, c_szSource, 110, "Audio file is not mono (more than 1 channel)");
        m_pSndFile.reset();
        return false;
    }
    m_strFileName = name;
    m_uiSampleRate = static_cast<std::uint64_t>(static_cast<std::int64_t>(info.samplerate));
    m_dSamplePeriod = 1.0 / static_cast<double>(m_uiSampleRate);
    return startChunks(0);
}

bool AudioFileReader::setNbOfFramesToRead(std::size_t n) {
    const TraceScope scope(*this, "AudioFileReader::setNbOfFramesToRead", c_szSource, __LINE__);

    m_uiNbFramesToRead = n;
    return true;
}

bool AudioFileReader::getNextLinearFrames(Math::DoubleVector& out) {
    const TraceScope scope(*this, "AudioFileReader::getNextLinearFrames", c_szSource, __LINE__);

    if (m_bAtEnd) {
        out.clear();
        log(LogLevel::Debug, c_szSource, 214, "End of file reached");
        return false;
    }
    // The chunk in force is the one that the buffer was made for; a closed reader has nothing to fill it with.
    const std::size_t chunk = m_pSndFile == nullptr ? m_uiNbFramesToRead : m_vReadBuffer.size();
    if (m_pSndFile == nullptr) {
        out.clear();
    } else {
        readChunk(out);
    }
    const std::size_t framesRead = out.size();
    if (framesRead != chunk) {
        log(LogLevel::Debug, c_szSource, 202, "Last chunk of audio read, end of file reached");
        m_bAtEnd = true;
        m_vReadBuffer.resize(framesRead);
    }
    m_uiNbFramesRead += framesRead;
    m_dCurrentAudioTime += static_cast<double>(framesRead) * m_dSamplePeriod;
    return true;
}

// Replaces `out` by the next chunk, as far as the file reaches.
void AudioFileReader::readChunk(Math::DoubleVector& out) {
    const auto wanted = static_cast<sf_count_t>(m_vReadBuffer.size());
    if (!isPlain16Bit(m_iFormat)) {
        const sf_count_t framesRead = sf_read_double(m_pSndFile.get(), m_vReadBuffer.data(), wanted);
        out.assign(m_vReadBuffer.begin(), m_vReadBuffer.begin() + framesRead);
        return;
    }
    // The commonest encoding, read as it stands and scaled here: the same samples to the bit, three times as fast. They
    // go to their place at once, which has its size already if the caller passes the vector of the last chunk.
    const auto framesRead = static_cast<std::size_t>(sf_read_short(m_pSndFile.get(), m_vShorts.data(), wanted));
    out.resize(framesRead);
    for (std::size_t i = 0; i < framesRead; ++i) {
        out[i] = m_vShorts[i] * (1.0 / 0x8000);
    }
}

bool AudioFileReader::getAllLinearFrames(Math::DoubleVector& out) {
    const TraceScope scope(*this, "AudioFileReader::getAllLinearFrames", c_szSource, __LINE__);

    const std::uint64_t uiNbFramesToRead = m_uiNbFramesToRead;
    m_uiNbFramesToRead = c_uiDefaultNbFramesToRead;
    if (!Assertion(AudioFileReader::gotoStart(), "AudioFileReader::gotoStart()", c_szSource, 244)) {
        return false;
    }
    Math::DoubleVector chunk;
    while (getNextLinearFrames(chunk)) {
        out.append(chunk);
    }
    m_uiNbFramesToRead = uiNbFramesToRead;
    return !out.empty();
}

bool AudioFileReader::gotoStart() {
    const TraceScope scope(*this, "AudioFileReader::gotoStart", c_szSource, __LINE__);

    if (!seek(0)) {
        log(LogLevel::Warn, c_szSource, 147,
            "Audio file is not seekable, will need to close and then open the file to rewind it");
        return setSourceAudioFile(std::string(m_strFileName).c_str());
    }
    return startChunks(0);
}

bool AudioFileReader::gotoAudioTime(double seconds) {
    const TraceScope scope(*this, "AudioFileReader::gotoAudioTime", c_szSource, __LINE__);

    const double frame = static_cast<double>(m_uiSampleRate) * seconds + 0.5;
    // Written so that NaN fails too.
    const bool isFrame = frame > -1.0 && frame < 0x1p63;
    if (!isFrame || !seek(static_cast<std::uint64_t>(frame))) {
        log(LogLevel::Error, c_szSource, 177, "Audio file is not seekable, gotoAudioTime() is not supported");
        return false;
    }
    return startChunks(static_cast<std::uint64_t>(frame));
}

bool AudioFileReader::seek(std::uint64_t frame) {
    return m_pSndFile != nullptr && sf_seek(m_pSndFile.get(), static_cast<sf_count_t>(frame), SEEK_SET) != -1;
}

// Chunks begin at this frame, in the size asked for last. A size beyond all memory closes the file.
bool AudioFileReader::startChunks(std::uint64_t frame) {
    m_bAtEnd = false;
    m_vReadBuffer.clear();
    try {
        m_vReadBuffer.resize(m_uiNbFramesToRead);
        m_vShorts.resize(isPlain16Bit(m_iFormat) ? m_uiNbFramesToRead : 0);
    } catch (const std::exception& exception) {
        log(LogLevel::Error, c_szSource, __LINE__, "no memory for chunks of ", m_uiNbFramesToRead, " frames of ",
            m_strFileName, ", ", exception.what());
        m_strFileName.clear();
        m_pSndFile.reset();
        return false;
    }
    m_uiNbFramesRead = frame;
    m_dCurrentAudioTime = static_cast<double>(frame) * m_dSamplePeriod;
    return true;
}

// What the largest sample of the encoding decodes to, 32124, 32256 or 32767 of 32768, to six digits.
double AudioFileReader::getClippingValue() const {
    switch (m_iFormat & c_iSubtypeMask) {
        case SF_FORMAT_ULAW:
            return 0.980347;
        case SF_FORMAT_ALAW:
            return 0.984375;
        default:
            return 0.999969;
    }
}

std::ostream& AudioFileReader::getFileInfo(std::ostream& os) const {
    if (m_pSndFile == nullptr) {
        return os;
    }
    const SF_FORMAT_INFO container = formatInfo(m_iFormat);
    const SF_FORMAT_INFO encoding = formatInfo(m_iFormat & c_iSubtypeMask);
    return os << Text::orEmpty(container.name) << " (." << Text::orEmpty(container.extension) << ") "
              << Text::orEmpty(encoding.name);
}

}  // namespace Zantrix::Audio
