#include "features/FeatureRun.h"

#include "features/RowComputer.h"
#include "shell/InputFile.h"
#include "shell/Interrupt.h"
#include "shell/SamplingRate.h"
#include "shell/Text.h"

#include <algorithm>

namespace Zantrix::Cli {

namespace {

constexpr std::uint64_t c_uiWindowsPerRead = 16;
constexpr std::uint64_t c_uiMaxSamplesPerRead = std::uint64_t(1) << 20;

std::uint64_t windowSamples(const Audio::LinearAudioWindower::Config& config) {
    return config.getWindowSizeInSamples();
}

// How many windows there are in so many samples.
std::uint64_t windowsIn(const Audio::LinearAudioWindower::Config& config, std::uint64_t samples) {
    const std::uint64_t window = config.getWindowSizeInSamples();
    const std::uint64_t hop = window - config.getWindowOverlapInSamples();
    return samples < window ? 0 : (samples - window) / hop + 1;
}

std::size_t framesPerRead(std::uint64_t rate, std::uint64_t milliseconds) {
    Audio::LinearAudioWindower::Config config;
    config.m_uiSampleRate = rate;
    config.m_uiWindowSizeMs = milliseconds;
    const std::uint64_t window = config.getWindowSizeInSamples();
    return static_cast<std::size_t>(window *
                                    std::clamp<std::uint64_t>(c_uiMaxSamplesPerRead / window, 1, c_uiWindowsPerRead));
}

}  // namespace

FeatureRun::FeatureRun(std::vector<Column> columns, const Audio::LinearAudioWindower::Config& config,
                       TableWriter& writer, Diagnostics& diagnostics, Progress& progress)
    : m_requested(std::move(columns)),
      m_config(config),
      m_writer(writer),
      m_diagnostics(diagnostics),
      m_progress(progress) {}

FeatureRun::Outcome FeatureRun::add(const std::string& name) {
    InputFile input(name);
    if (!input.check(m_diagnostics)) {
        return Outcome::InputFailed;
    }
    // Closed before the input, which may have to wait for that.
    Audio::WindowedAudioFileReader reader;
    // Of an input that does not tell its rate before it is opened, chunks are large enough for a window at any.
    reader.setNbOfFramesToRead(
        framesPerRead(input.rate() == 0 ? c_uiHighestRate : input.rate(), m_config.m_uiWindowSizeMs));
    if (!reader.setSourceAudioFile(input.path().c_str())) {
        m_diagnostics.error("cannot be opened");
        return Outcome::InputFailed;
    }
    m_config.m_uiSampleRate = reader.getSamplingRate();
    m_progress.beginInput(name, static_cast<double>(input.samples()) / static_cast<double>(m_config.m_uiSampleRate));
    const bool wasBegun = m_bBegun;
    const bool isWritten = m_writer.beginInput(name, m_config.m_uiSampleRate);
    const Outcome outcome = isWritten ? addOpened(reader, input.samples()) : Outcome::OutputFailed;
    m_progress.endInput();
    if (outcome == Outcome::Done) {
        m_writer.endInput();
        m_bAnyDone = true;
        if (!m_columns) {
            m_columns = m_current;
        }
    } else if (outcome == Outcome::InputFailed) {
        if (m_writer.dropInput()) {
            m_bBegun = wasBegun;  // the head of the table is gone as well, if this input brought it
        } else {
            m_diagnostics.error("rows that it gave before stand in the output");
        }
    }
    return outcome;
}

FeatureRun::Outcome FeatureRun::addOpened(Audio::WindowedAudioFileReader& reader, std::uint64_t promisedSamples) {
    const std::uint64_t rate = m_config.m_uiSampleRate;
    const std::uint64_t window = windowSamples(m_config);
    if (rate == 0 || rate > c_uiHighestRate || !reader.configure(m_config)) {
        return fail("windows of " + std::to_string(m_config.m_uiWindowSizeMs) + " ms that overlap by " +
                    std::to_string(m_config.m_uiWindowOverlapMs) + " ms cannot be cut at " + std::to_string(rate) +
                    " Hz");
    }
    warnOfRate(rate, m_diagnostics);
    if (!chooseColumns(rate)) {
        return Outcome::InputFailed;
    }
    std::uint64_t windowCount = 0;
    const Outcome outcome = addWindows(reader, windowCount);
    if (outcome != Outcome::Done) {
        return outcome;
    }
    if (windowCount < windowsIn(m_config, promisedSamples)) {
        return fail("cannot be read to its end: " + std::to_string(windowCount) + " windows instead of " +
                    std::to_string(windowsIn(m_config, promisedSamples)));
    }
    if (windowCount == 0) {
        m_diagnostics.warning("is shorter than one window of " + std::to_string(window) + " samples: no rows");
    }
    return Outcome::Done;
}

FeatureRun::Outcome FeatureRun::addWindows(Audio::WindowedAudioFileReader& reader, std::uint64_t& windowCount) {
    RowComputer computer(m_requested);
    for (std::size_t count = c_uiBatch; count == c_uiBatch;) {
        for (count = 0; count < c_uiBatch && reader.getNextWindow(m_windows[count]); ++count) {
            m_times[count] = reader.getCurrentAudioTime();
        }
        if (Interrupt::requested()) {
            return Outcome::Interrupted;
        }
        if (count == 0) {
            break;
        }
        const std::span<Math::DoubleVector> rows = std::span(m_rows).first(count);
        if (!computer.compute(std::span(m_windows).first(count), rows)) {
            return fail(computer.describeFailure("the windows that end at " + shortest(m_times[0]) + " to " +
                                                 shortest(m_times[count - 1]) + " s"));
        }
        for (std::size_t i = 0; i < count; ++i, ++windowCount) {
            if (!m_current->arrange(windowCount, rows[i])) {
                return fail("the features give another number of values for the window that ends at " +
                            shortest(m_times[i]) + " s than for those before");
            }
        }
        if (!beginTable(*m_current) || !m_writer.addRows(std::span(m_times).first(count), rows)) {
            return Interrupt::requested() ? Outcome::Interrupted : Outcome::OutputFailed;
        }
        m_progress.advance(m_times[count - 1]);
    }
    return Outcome::Done;
}

// The columns follow from the length of a window, which follows from the rate. The first window decides them.
bool FeatureRun::chooseColumns(std::uint64_t rate) {
    if (m_uiCurrentRate != rate) {
        m_current.emplace(m_requested);
        m_uiCurrentRate = rate;
        if (const auto problem = m_current->measure(static_cast<std::size_t>(windowSamples(m_config)))) {
            m_uiCurrentRate = 0;
            m_diagnostics.error(*problem);
            return false;
        }
    }
    if (m_bBegun && !m_current->isAlike(*m_columns)) {
        m_diagnostics.error("does not fit into the table: " + m_current->difference(*m_columns) + " at " +
                            std::to_string(rate) + " Hz, but " + m_columns->difference(*m_current) +
                            " for the inputs before");
        return false;
    }
    return true;
}

bool FeatureRun::beginTable(const FeatureColumns& columns) {
    if (m_bBegun) {
        return true;
    }
    m_columns = columns;
    m_bBegun = true;
    return m_writer.begin(m_columns->names());
}

bool FeatureRun::finish() {
    if (!m_bAnyDone) {
        m_writer.abandon();
        return true;
    }
    return beginTable(*m_columns) && m_writer.finish();
}

FeatureRun::Outcome FeatureRun::fail(const std::string& message) {
    m_diagnostics.error(message);
    return Outcome::InputFailed;
}

}  // namespace Zantrix::Cli
