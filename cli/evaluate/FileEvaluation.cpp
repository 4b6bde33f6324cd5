#include "evaluate/FileEvaluation.h"

#include "annotations/AnnotationEdit.h"
#include "evaluate/ChannelStrategy.h"
#include "features/FeatureColumns.h"
#include "shell/SamplingRate.h"
#include "shell/WavHeader.h"

#include <murvane/core/FileReplacement.h>
#include <murvane/iff/IFFParser.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>
#include <unistd.h>

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szOnlyPlain = "; only WAV files of 16-bit PCM are evaluated";

// Why the library could not take a WAV file of 16-bit PCM apart; nothing when it can.
std::optional<std::string> findDefect(const InputFile& input) {
    const auto header = readWavHeader(input.path());
    if (header && header->format && header->format->bitsPerSample != 16) {
        return "has " + std::to_string(header->format->bitsPerSample) + " bits in use of each sample" + c_szOnlyPlain;
    }
    if (header && std::min(header->claimedBytes, header->presentBytes) % 2 != 0) {
        return "its data chunk has " + std::to_string(std::min(header->claimedBytes, header->presentBytes)) +
               " bytes, which do not divide into samples of 16 bits";
    }
    // What else may be wrong is a matter of lists, and costs as much as to read the file once more.
    const auto counts = countWavChunks(input.path());
    if (counts && (counts->lists > 0 || !counts->areAllCounted)) {
        IFF::IFFParser parser;
        std::ifstream file(input.path(), std::ios::binary);
        if (!parser.read(file)) {
            return "cannot be taken apart: " + parser.getError();
        }
    }
    return std::nullopt;
}

// Why a folder takes no output; nothing when it does. The library would not say.
std::optional<std::string> findObstacle(const std::string& folder, const std::string& output) {
    if (::access(folder.c_str(), W_OK | X_OK) == 0) {
        return std::nullopt;
    }
    // What is there already may be written to all the same.
    FileReplacement trial;
    return trial.open(output) ? std::nullopt : std::optional("cannot write " + output + ": " + trial.getError());
}

// Links stay, and what they lead to: that may be a device.
void removeFile(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(std::filesystem::symlink_status(path, ignored))) {
        std::filesystem::remove(path, ignored);
    }
}

}  // namespace

FileEvaluation::FileEvaluation(const EvaluateOptions& options, Diagnostics& diagnostics, Progress& progress)
    : m_options(options), m_diagnostics(diagnostics), m_progress(progress) {}

bool FileEvaluation::process(const std::string& name) {
    InputFile input(name);
    if (!checkInput(input) || !checkFormulas(input.rate())) {
        return false;
    }
    m_progress.beginInput(name, static_cast<double>(input.samples()) / static_cast<double>(input.rate()));
    return (m_options.batch.resume && isUpToDate(input)) || evaluate(input);
}

// Whatever would keep the evaluator from a file is found before, and told in words for users of the command.
bool FileEvaluation::checkInput(InputFile& input) {
    std::error_code ignored;
    if (std::filesystem::exists(input.path(), ignored) && !std::filesystem::is_directory(input.path(), ignored) &&
        !std::filesystem::is_regular_file(input.path(), ignored)) {
        m_diagnostics.error("is no regular file; only files that can be read twice are evaluated");
        return false;
    }
    const auto header = readWavHeader(input.path());
    if (header && header->size == WavHeader::Size::NeverSet) {
        m_diagnostics.error(header->describe());
        return false;
    }
    if (!input.check(m_diagnostics)) {
        return false;
    }
    if (!input.isPlainWav()) {
        return failFormat(input);
    }
    if (const auto defect = findDefect(input)) {
        return fail(*defect);
    }
    const std::uint64_t bytes = input.samples() * 2 * (1 + m_options.channels.size());
    if (bytes > std::numeric_limits<std::uint32_t>::max()) {
        return fail("its output of " + std::to_string(bytes) + " bytes would not fit into a WAV file");
    }
    const std::uint64_t rate = input.rate();
    if (rate > c_uiHighestRate || samplesOf(rate, static_cast<std::uint64_t>(m_options.windowMs)) == 0) {
        m_diagnostics.error("blocks of " + std::to_string(m_options.windowMs) + " ms cannot be cut at " +
                            std::to_string(rate) + " Hz");
        return false;
    }
    return true;
}

bool FileEvaluation::checkFormulas(std::uint64_t rate) {
    warnOfRate(rate, m_diagnostics);
    const auto context = static_cast<std::size_t>(samplesOf(rate, m_options.contextMsInForce()));
    const bool hasSpectrum =
        std::any_of(m_options.channels.begin(), m_options.channels.end(),
                    [](const Channel& channel) { return channel.formula.text.find("spectrum") != std::string::npos; });
    if (hasSpectrum && !std::has_single_bit(context)) {
        m_diagnostics.warning("a formula sees " + std::to_string(context) +
                              " samples, which are no power of two: its " + "spectra are computed slowly");
    }
    if (rate == m_uiCheckedRate) {
        return true;
    }
    for (const Channel& channel : m_options.channels) {
        FeatureColumns values({channel.formula});
        if (const auto problem = values.measure(context)) {
            m_diagnostics.error(*problem);
            return false;
        }
        if (values.size() != 1) {
            m_diagnostics.error("the channel " + channel.formula.name + " gives " + std::to_string(values.size()) +
                                " values for " + std::to_string(context) + " samples; it must give one");
            return false;
        }
    }
    m_uiCheckedRate = rate;
    return true;
}

// Outputs appear when they are whole: one that is there is from a run that got to its end.
bool FileEvaluation::isUpToDate(const InputFile& input) const {
    const auto isNewer = [&](const std::string& output) {
        std::error_code error;
        const auto written = std::filesystem::last_write_time(output, error);
        return !error && written > std::filesystem::last_write_time(input.path(), error) && !error;
    };
    const std::string curves = m_options.curvesPath(input.name());
    if (!isNewer(curves) || (m_options.annotateMs && !isNewer(m_options.annotatedPath(input.name())))) {
        return false;
    }
    const auto written = lookAt(curves);
    return written && written->channels == static_cast<int>(m_options.channels.size() + 1) &&
           written->samples == input.samples() && written->rate == input.rate();
}

bool FileEvaluation::evaluate(const InputFile& input) {
    if (const auto obstacle = findObstacle(m_options.outputDir, m_options.curvesPath(input.name()))) {
        return fail(*obstacle);
    }
    const std::uint64_t rate = input.rate();
    AnnotationEdit annotated(input.path(), {}, m_diagnostics);
    if (m_options.annotateMs && !annotated.load()) {
        return false;
    }
    const auto onBlock = [&](double seconds) { m_progress.advance(seconds); };
    ChannelStrategy strategy(m_options.channels,
                             static_cast<std::size_t>(samplesOf(rate, m_options.contextMsInForce())), rate, onBlock);
    try {
        Audio::AudioFileEvaluator evaluator;
        if (!evaluator.configure(samplesOf(rate, static_cast<std::uint64_t>(m_options.windowMs)), &strategy,
                                 m_options.suffix.c_str(), m_options.outputDir.c_str()) ||
            !evaluator.processFile(input.path().c_str())) {
            return fail("cannot be evaluated");
        }
    } catch (const ChannelStrategy::Failure& failure) {
        return fail(failure.what());
    } catch (const ChannelStrategy::Interruption&) {
        return false;
    }
    if (!m_options.annotateMs || (annotated.append(longEnough(strategy.finishRuns(), rate), "") &&
                                  annotated.saveCopy(m_options.annotatedPath(input.name())))) {
        return true;
    }
    removeFile(m_options.curvesPath(input.name()));
    return false;
}

std::vector<TimedLabel> FileEvaluation::longEnough(const std::vector<ChannelRun>& runs, std::uint64_t rate) const {
    const auto shortest = static_cast<double>(*m_options.annotateMs) * static_cast<double>(rate) / 1000.0;
    std::vector<TimedLabel> labels;
    for (const ChannelRun& run : runs) {
        if (static_cast<double>(run.length()) >= shortest) {
            const auto time = [&](std::uint64_t sample) {
                return static_cast<double>(sample) / static_cast<double>(rate);
            };
            labels.push_back({m_options.channels[run.channel].formula.name, time(run.start), time(run.stop)});
        }
    }
    return labels;
}

// Tells what the file is instead, in the library's words.
bool FileEvaluation::failFormat(const InputFile& input) {
    Audio::AudioFileReader reader;
    std::ostringstream text;
    if (input.open(reader, m_diagnostics)) {
        reader.getFileInfo(text);
        m_diagnostics.error("is " + text.str() + c_szOnlyPlain);
    }
    return false;
}

bool FileEvaluation::fail(const std::string& message) {
    m_diagnostics.error(message);
    return false;
}

}  // namespace Zantrix::Cli
