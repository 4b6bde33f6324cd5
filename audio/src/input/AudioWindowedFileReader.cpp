#include <murvane/audio/input/AudioWindowedFileReader.h>

namespace Zantrix::Audio {

namespace {

// Lines given as numbers are those by which log filters know the record; they never change (see Logging.h).
constexpr const char* c_szSource = "AudioWindowedFileReader";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.WindowedAudioFileReader");
    return logger;
}

}  // namespace

WindowedAudioFileReader::WindowedAudioFileReader() {
    const TraceScope scope(logger(), "WindowedAudioFileReader ctor", c_szSource, __LINE__);
}

bool WindowedAudioFileReader::configure(const LinearAudioWindower::Config& config) {
    const TraceScope scope(logger(), "WindowedAudioFileReader::configure", c_szSource, __LINE__);

    return m_windower.configure(config) && setChunkReadFactor(m_uiChunkReadFactor);
}

bool WindowedAudioFileReader::setChunkReadFactor(std::size_t factor) {
    const TraceScope scope(logger(), "WindowedAudioFileReader::setChunkReadFactor", c_szSource, __LINE__);

    m_uiChunkReadFactor = factor;
    return setNbOfFramesToRead(m_windower.getConfig().getWindowSizeInSamples() * m_uiChunkReadFactor);
}

bool WindowedAudioFileReader::setSourceAudioFile(const char* path) {
    const TraceScope scope(logger(), "WindowedAudioFileReader::setSourceAudioFile", c_szSource, __LINE__);

    return AudioFileReader::setSourceAudioFile(path) && m_windower.reset();
}

bool WindowedAudioFileReader::gotoStart() {
    const TraceScope scope(logger(), "WindowedAudioFileReader::gotoStart", c_szSource, __LINE__);

    return AudioFileReader::gotoStart() && m_windower.reset();
}

bool WindowedAudioFileReader::gotoAudioTime(double seconds) {
    const TraceScope scope(logger(), "WindowedAudioFileReader::gotoAudioTime", c_szSource, __LINE__);

    return AudioFileReader::gotoAudioTime(seconds) && m_windower.reset() && m_windower.setCurrentAudioTime(seconds);
}

bool WindowedAudioFileReader::getNextWindow(Math::DoubleVector& window) {
    const TraceScope scope(logger(), "WindowedAudioFileReader::getNextWindow", c_szSource, __LINE__);

    if (m_windower.popWindow(window)) {
        return true;
    }
    // The caller's vector carries the chunk, too: its storage is there already.
    if (!getNextLinearFrames(window) || !m_windower.pushLinearAudio(window.data(), window.data() + window.size())) {
        return false;
    }
    if (m_windower.popWindow(window)) {
        return true;
    }
    logger().log(LogLevel::Debug, c_szSource, 133, "New data not enough to make a new window");
    logger().log(LogLevel::Debug, c_szSource, 134, "End of file reached");
    return false;
}

}  // namespace Zantrix::Audio
