#include <murvane/audio/batch/AudioSetApplicationHelper.h>
#include <murvane/core/Assertion.h>
#include <murvane/core/Logging.h>

#include <cstdint>
#include <ostream>

namespace Zantrix::Audio {

namespace {

namespace po = boost::program_options;

constexpr const char* c_szSource = "AudioSetApplicationHelper";
constexpr const char* c_szFilesOption = "files-to-process";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.AudioSetApplicationHelper");
    return logger;
}

}  // namespace

AudioSetApplicationHelper::AudioSetApplicationHelper(Strategy* in_pNewStrategy) : m_pStrategy(in_pNewStrategy) {
    Assertion(in_pNewStrategy != nullptr, "in_pNewStrategy", c_szSource, __LINE__);
}

bool AudioSetApplicationHelper::addOptions(po::options_description& visible, po::options_description&,
                                           po::positional_options_description& positional) {
    const TraceScope scope(logger(), "addOptions", c_szSource, __LINE__);

    visible.add_options()("audioset", po::value(&m_strAudioSetFilename))(c_szFilesOption, po::value(&m_vFilesToProcess),
                                                                         "input file(s)");
    positional.add(c_szFilesOption, -1);
    return true;
}

bool AudioSetApplicationHelper::processCmdlineVarsMap(const po::variables_map&) {
    const TraceScope scope(logger(), "processCmdlineVarsMap", c_szSource, __LINE__);

    if (!m_strAudioSetFilename.empty()) {
        m_audioSetParser.setAudioSetFilename(m_strAudioSetFilename.c_str());
        m_audioSetParser.gotoFirstAudioFile();
    }
    // At the first file of a set of one the parser is at its end already: such a set does not count here.
    if (m_vFilesToProcess.empty() && m_audioSetParser.atEnd()) {
        logger().log(LogLevel::Error, c_szSource, __LINE__, "need at least one file to process");
        return false;
    }
    return true;
}

bool AudioSetApplicationHelper::processAllFiles() {
    const TraceScope scope(logger(), "processAllFiles", c_szSource, __LINE__);

    if (!Assertion(!m_pStrategy.isNull(), "!m_pStrategy.isNull()", c_szSource, __LINE__)) {
        return false;
    }
    bool result = true;
    std::uint64_t fromCommandLine = 0;
    for (const std::string& name : m_vFilesToProcess) {
        result &= m_pStrategy->processFile(name.c_str());
        ++fromCommandLine;
    }
    if (fromCommandLine > 0) {
        logger().log(LogLevel::Info, c_szSource, __LINE__, "Processed ", fromCommandLine, " files from command line");
    }
    std::uint64_t fromAudioSet = 0;
    if (m_audioSetParser.gotoFirstAudioFile()) {
        for (std::string name; m_audioSetParser.getNextAudioFile(name);) {
            result &= m_pStrategy->processFile(name.c_str());
            ++fromAudioSet;
        }
        logger().log(LogLevel::Info, c_szSource, __LINE__, "Processed ", fromAudioSet, " files from audio set");
    }
    if (fromCommandLine == 0 && fromAudioSet == 0) {
        logger().log(LogLevel::Error, c_szSource, __LINE__, "No file to process");
        return false;
    }
    return result;
}

std::ostream& AudioSetApplicationHelper::writeUsage(std::ostream& os) const {
    return os << "wavFile1 wavFile2 ...\n";
}

}  // namespace Zantrix::Audio
