#include <murvane/audio/batch/AudioFileEvaluator.h>
#include <murvane/core/Assertion.h>
#include <murvane/core/FileReplacement.h>
#include <murvane/core/FileReplacementBuffer.h>
#include <murvane/core/OS.h>
#include <murvane/core/Text.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <new>
#include <ostream>
#include <system_error>
#include <utility>

namespace Zantrix::Audio {

namespace {

// The wording of records and assertions stays as it is, "Failed to used" and names of variables long gone included:
// filters match it.
constexpr const char* c_szSource = "AudioFileEvaluator";
constexpr std::size_t c_uiSampleSize = 2;  // bytes of a sample, and of a value

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.AudioFileEvaluator");
    return logger;
}

// Leaves what is not a number as it is.
double clamped(double value) {
    if (value > 1.0) {
        return 1.0;
    }
    return value < -1.0 ? -1.0 : value;
}

// The number that stands for a clamped value. The scale makes 1 and -1 as far from 0 as each other.
std::int64_t toInteger(double value) {
    constexpr double scale = 32767.0;
    // Of what is not a number, processors make this; its low bits are 0.
    return std::isnan(value) ? std::numeric_limits<std::int64_t>::min() : static_cast<std::int64_t>(value * scale);
}

std::uint16_t toStored(double value) {
    return static_cast<std::uint16_t>(toInteger(clamped(value)));
}

}  // namespace

AudioFileEvaluator::AudioFileEvaluator() : ObjectWithLogger(logger()) {}

bool AudioFileEvaluator::configure(unsigned long long in_windowSize, LimitedObjPtr<Strategy> in_pStrategy,
                                   const char* in_szOutputFileSuffix, const char* in_szOutputDir) {
    refreshLogLevel();
    const TraceScope scope(*this, "configure", c_szSource, __LINE__);

    if (!Assertion(!in_pStrategy.isNull(), "!in_pStrategy.isNull()", c_szSource, __LINE__) ||
        !Assertion(in_szOutputFileSuffix != nullptr, "0 != in_szOutputFileSuffix", c_szSource, __LINE__) ||
        !Assertion(in_szOutputDir != nullptr, "0 != in_szOutputDir", c_szSource, __LINE__)) {
        return false;
    }
    // What could fail comes before anything is kept.
    const auto refuseSize = [&] {
        log(LogLevel::Error, c_szSource, __LINE__, "Failed to used audio window size of: ", in_windowSize);
        return false;
    };
    if (in_windowSize == 0) {
        return refuseSize();
    }
    Math::DoubleVector audio;
    try {
        audio.resize(in_windowSize);
    } catch (const std::exception&) {
        return refuseSize();
    }
    std::string outputDir;
    if (!OS::getCanonicalPath(in_szOutputDir, outputDir)) {
        log(LogLevel::Error, c_szSource, __LINE__, "Invalid output directory: ", in_szOutputDir);
        return false;
    }
    m_vAudio = std::move(audio);
    m_reader.setNbOfFramesToRead(in_windowSize);
    m_pStrategy = in_pStrategy;
    m_strOutputSuffix = std::string(".") + in_szOutputFileSuffix + ".wav";
    m_strOutputDir = outputDir + "/";
    return true;
}

bool AudioFileEvaluator::processFile(const char* in_szFileName) {
    refreshLogLevel();
    const TraceScope scope(*this, "processFile", c_szSource, __LINE__);

    const std::string name = Text::orEmpty(in_szFileName);
    const std::string rule(50, '*');
    log(LogLevel::Info, c_szSource, __LINE__, rule, "\nProcessing file: ", name, "\n", rule);
    if (!m_reader.setSourceAudioFile(name.c_str())) {
        log(LogLevel::Error, c_szSource, __LINE__, "Failed to load file: ", name);
        return false;
    }
    if (!Assertion(!m_pStrategy.isNull(), "!m_pStrategy.isNull()", c_szSource, __LINE__)) {
        return false;
    }
    try {
        return evaluateBlocks(name) && prepareOutputFile(name.c_str()) && endOutputFile();
    } catch (const std::bad_alloc&) {
        log(LogLevel::Error, c_szSource, __LINE__, "Not enough memory for file: ", name);
        return false;
    }
}

// Fills m_strFrames. A change of the number of channels ends that, but is no failure here: what is there may be
// complete.
bool AudioFileEvaluator::evaluateBlocks(const std::string& fileName) {
    m_strFrames.clear();
    bool isFirst = true;
    std::uint64_t position = 0;
    std::vector<Math::DoubleVector> channels;
    while (m_reader.getNextLinearFrames(m_vAudio)) {
        channels.clear();
        m_pStrategy->evaluateWindow(m_vAudio, channels);
        if (isFirst) {
            isFirst = false;
            m_uiNbChannels = channels.size();
        } else if (channels.size() != m_uiNbChannels) {
            log(LogLevel::Error, c_szSource, __LINE__,
                "evaluateWindow() returned a different number of channels. Can't continue with file: ", fileName);
            // The next block is still read, and reported by the reader.
            m_reader.getNextLinearFrames(m_vAudio);
            break;
        }
        for (const Math::DoubleVector& channel : channels) {
            if (!Assertion(channel.size() == m_vAudio.size(), "itChannel->size() == m_vAudio.size()", c_szSource,
                           __LINE__)) {
                return false;
            }
        }
        if (channels.empty()) {
            continue;
        }
        pushToOutputFile(m_vAudio.size(), channels);
        const std::uint64_t end = position + m_vAudio.size();
        log(LogLevel::Debug, c_szSource, __LINE__, "Pushed values for samples ", position, " to ", end);
        position = end;
    }
    return true;
}

void AudioFileEvaluator::pushToOutputFile(unsigned long long nbSamples,
                                          const std::vector<Math::DoubleVector>& channels) {
    const TraceScope scope(*this, "pushToOutputFile", c_szSource, __LINE__);

    log(LogLevel::Debug, c_szSource, __LINE__, "Scaling to ushort...");
    const std::size_t frameSize = getFrameSize();
    const std::size_t first = m_strFrames.size();
    m_strFrames.resize(first + nbSamples * frameSize);
    char* const pFirst = m_strFrames.data() + first;
    for (std::size_t c = 0; c < channels.size(); ++c) {
        const double* const values = channels[c].data();
        char* pStored = pFirst + (1 + c) * c_uiSampleSize;
        for (std::size_t i = 0; i < nbSamples; ++i, pStored += frameSize) {
            const std::uint16_t value = toStored(values[i]);
            pStored[0] = static_cast<char>(value & 0xff);
            pStored[1] = static_cast<char>(value >> 8);
        }
    }
    if (isLogEnabledFor(LogLevel::Debug)) {
        logTransformations(nbSamples, channels);
    }
}

void AudioFileEvaluator::logTransformations(unsigned long long nbSamples,
                                            const std::vector<Math::DoubleVector>& channels) const {
    for (std::size_t i = 0; i < nbSamples; ++i) {
        for (const Math::DoubleVector& channel : channels) {
            const double value = clamped(channel[i]);
            log(LogLevel::Debug, c_szSource, __LINE__, "Transformed ", value, " into ", toInteger(value));
        }
    }
}

std::size_t AudioFileEvaluator::getFrameSize() const {
    return (1 + m_uiNbChannels) * c_uiSampleSize;
}

std::size_t AudioFileEvaluator::getNbOfFrames() const {
    return m_strFrames.size() / getFrameSize();
}

bool AudioFileEvaluator::prepareOutputFile(const char* in_szFileName) {
    const TraceScope scope(*this, "prepareOutputFile", c_szSource, __LINE__);

    m_strOutputFileName = m_strOutputDir + OS::stripPathAndExtension(in_szFileName) + m_strOutputSuffix;
    std::error_code ignored;
    if (std::filesystem::equivalent(in_szFileName, m_strOutputFileName, ignored)) {
        log(LogLevel::Error, c_szSource, __LINE__, "Output file would replace the input file: ", m_strOutputFileName);
        return false;
    }
    // A pipe delivers nothing the second time, and would be waited for.
    std::ifstream file;
    if (std::filesystem::is_regular_file(in_szFileName, ignored)) {
        file.open(in_szFileName, std::ios::binary);
    }
    if (!file.is_open()) {
        log(LogLevel::Error, c_szSource, __LINE__, "Could not open input file : ", in_szFileName);
        return false;
    }
    if (!m_parser.read(file)) {
        log(LogLevel::Error, c_szSource, __LINE__, "Error parsing input WAV file : ", in_szFileName);
        return false;
    }
    if (!readFormat()) {
        return false;
    }
    m_probInfo.clear();
    return Assertion(m_pStrategy->getProbabilitiesInfo(m_probInfo), "m_pStrategy->getProbabilitiesInfo( m_probInfo )",
                     c_szSource, __LINE__) &&
           widenFormat();
}

// Takes the recording's format, and checks that it is the one that outputs are made from.
bool AudioFileEvaluator::readFormat() {
    IFF::ChunkPos position;
    if (!m_parser.find("fmt ", position) ||
        !m_fmt.decode(position.getChunk()->getData(), position.getChunk()->getSize())) {
        log(LogLevel::Error, c_szSource, __LINE__, "Invalid WAV file : no chunk fmt");
        return false;
    }
    return Assertion(m_fmt.m_usNbOfChannels == 1, "out_fmt.m_usNbOfChannels == 0x01", c_szSource, __LINE__) &&
           Assertion(m_fmt.m_usCompressionCode == 1, "out_fmt.m_usCompressionCode == 0x01", c_szSource, __LINE__) &&
           Assertion(m_fmt.m_usSignBitsPerSample == 16, "out_fmt.m_usSignBitsPerSample == 16", c_szSource, __LINE__);
}

// Makes the recording's format the output's: the samples' channel and the strategy's.
bool AudioFileEvaluator::widenFormat() {
    const std::uint64_t nbChannels = 1 + (getNbOfFrames() == 0 ? 0 : m_uiNbChannels);
    const std::uint64_t blockAlign = m_fmt.m_usSignBitsPerSample / 8 * nbChannels;
    const std::uint64_t bytesPerSecond = m_fmt.m_uiSampleRate * blockAlign;
    if (blockAlign > std::numeric_limits<std::uint16_t>::max() ||
        bytesPerSecond > std::numeric_limits<std::uint32_t>::max()) {
        log(LogLevel::Error, c_szSource, __LINE__, "Output does not fit a WAV file : ", nbChannels, " channels of ",
            m_fmt.m_uiSampleRate, " samples per second");
        return false;
    }
    m_fmt.m_usNbOfChannels = static_cast<std::uint16_t>(nbChannels);
    m_fmt.m_usBlockAlign = static_cast<std::uint16_t>(blockAlign);
    m_fmt.m_uiAverageBytesPerSecond = static_cast<std::uint32_t>(bytesPerSecond);
    std::vector<char> bytes;
    m_fmt.encode(bytes);
    IFF::ChunkPos position;
    m_parser.find("fmt ", position);
    position.getChunk()->setData(bytes.data(), static_cast<unsigned>(bytes.size()));
    return true;
}

bool AudioFileEvaluator::endOutputFile() {
    const TraceScope scope(*this, "endOutputFile", c_szSource, __LINE__);

    IFF::ChunkPos position;
    if (!m_parser.find("data", position)) {
        log(LogLevel::Error, c_szSource, __LINE__, "Invalid WAV file : no chunk data");
        return false;
    }
    IFF::Chunk& data = *position.getChunk();
    if (!fillInSamples(data.getData(), data.getSize())) {
        return false;
    }
    const auto pFrames = std::make_shared<const std::string>(std::exchange(m_strFrames, {}));
    data.setData(IFF::SharedBytes(pFrames, *pFrames));
    return writeOutputFile();
}

// Puts the recording's samples, as they stand, beside the strategy's values.
bool AudioFileEvaluator::fillInSamples(const char* samples, std::size_t size) {
    const std::size_t nbSamples = size / c_uiSampleSize;
    if (!Assertion(nbSamples * c_uiSampleSize == size,
                   "(m_fmt.m_usSignBitsPerSample/8) *(uiSizeOfData*8/m_fmt.m_usSignBitsPerSample) == uiSizeOfData",
                   c_szSource, __LINE__) ||
        !Assertion(nbSamples == getNbOfFrames(), "uiNbSamples == m_vValues.size()", c_szSource, __LINE__)) {
        return false;
    }
    if (m_strFrames.size() > std::numeric_limits<std::uint32_t>::max()) {
        log(LogLevel::Error, c_szSource, __LINE__, "Output does not fit a WAV file : ", m_strFrames.size(),
            " bytes of samples");
        return false;
    }
    const std::size_t frameSize = getFrameSize();
    char* pFrame = m_strFrames.data();
    for (std::size_t i = 0; i < nbSamples; ++i, samples += c_uiSampleSize, pFrame += frameSize) {
        std::copy_n(samples, c_uiSampleSize, pFrame);
    }
    return true;
}

bool AudioFileEvaluator::writeOutputFile() {
    FileReplacement file;
    if (!file.open(m_strOutputFileName, FileReplacement::InPlace::Allowed)) {
        log(LogLevel::Error, c_szSource, __LINE__, "Could not open output file for writing: ", m_strOutputFileName);
        return false;
    }
    FileReplacementBuffer buffer(file);
    std::ostream os(&buffer);
    if (!m_parser.write(os).flush() || !file.commit()) {
        const std::string& reason = m_parser.getError().empty() ? file.getError() : m_parser.getError();
        log(LogLevel::Error, c_szSource, __LINE__, "Could not write output file: ", m_strOutputFileName, ", ", reason);
        return false;
    }
    return true;
}

}  // namespace Zantrix::Audio
