#include "features/FeatureWorker.h"

#include "features/CopiedRows.h"
#include "features/RowComputer.h"
#include "shell/InputFile.h"
#include "shell/Interrupt.h"
#include "shell/SamplingRate.h"
#include "shell/Text.h"

#include <algorithm>

namespace Zantrix::Cli {

namespace {

// Messages of an input that wait for its turn; an input that has more to say waits itself.
constexpr std::size_t c_uiMaxHeldMessages = std::size_t(1) << 20;

constexpr std::uint64_t c_uiWindowsPerRead = 16;
constexpr std::uint64_t c_uiMaxSamplesPerRead = std::uint64_t(1) << 20;

// How many windows there are in so many samples.
std::uint64_t windowsIn(const Audio::LinearAudioWindower::Config& config, std::uint64_t samples) {
    const std::uint64_t window = config.getWindowSizeInSamples();
    const std::uint64_t hop = window - config.getWindowOverlapInSamples();
    return samples < window ? 0 : (samples - window) / hop + 1;
}

// Whether windows follow each other at another pace than their times do.
bool drifts(const Audio::LinearAudioWindower::Config& config) {
    const std::uint64_t hop = config.getWindowSizeInSamples() - config.getWindowOverlapInSamples();
    return hop * 1000 != config.m_uiSampleRate * (config.m_uiWindowSizeMs - config.m_uiWindowOverlapMs);
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

FeatureWorker::FeatureWorker(std::vector<Column> columns, const Audio::LinearAudioWindower::Config& config,
                             FeatureTable& table, const PreviousTable* pPrevious, std::unique_ptr<RowEncoder> pEncoder,
                             Diagnostics& diagnostics, Progress& progress)
    : m_requested(std::move(columns)),
      m_config(config),
      m_table(table),
      m_pPrevious(pPrevious),
      m_pEncoder(std::move(pEncoder)),
      m_diagnostics(diagnostics),
      m_progress(progress) {}

std::unique_ptr<Delivery> FeatureWorker::process(const std::string& name, Turn& turn) {
    if (m_pPrevious != nullptr && m_pPrevious->holds(name)) {
        if (auto pRows = takeOver(name)) {
            return pRows;
        }
    }
    InputFile input(name);
    if (!input.check(m_diagnostics)) {
        return nullptr;
    }
    // Closed before the input, which may have to wait for that.
    Audio::WindowedAudioFileReader reader;
    // Of an input that does not tell its rate before it is opened, chunks are large enough for a window at any.
    reader.setNbOfFramesToRead(
        framesPerRead(input.rate() == 0 ? c_uiHighestRate : input.rate(), m_config.m_uiWindowSizeMs));
    if (!input.open(reader, m_diagnostics)) {
        return nullptr;
    }
    m_config.m_uiSampleRate = reader.getSamplingRate();
    m_progress.beginInput(name, static_cast<double>(input.samples()) / static_cast<double>(m_config.m_uiSampleRate));
    if (!configure(reader)) {
        return nullptr;
    }
    if (const auto problem = chooseColumns(m_config.m_uiSampleRate)) {
        m_diagnostics.error(*problem);
        return nullptr;
    }
    auto pRows = std::make_unique<InputRows>(
        turn, m_table, m_diagnostics, TableInput{name, m_config.m_uiSampleRate, drifts(m_config), m_pColumns, 0.0});
    m_pEncoder->begin(name, *pRows);
    const bool isDone = addWindows(reader, turn, *pRows) && checkEnd(input.samples());
    if (isDone || pRows->wantsRowsOfFailed()) {
        pRows->end(m_pEncoder->drain() && isDone);
    } else {
        m_pEncoder->forget();
    }
    return pRows;
}

// Null when rows of this input, computed today, would have other columns.
std::unique_ptr<Delivery> FeatureWorker::takeOver(const std::string& name) {
    const PreviousTable::Rows rows = m_pPrevious->find(name, 0);
    m_config.m_uiSampleRate = rows.rate;
    if (rows.rate == 0 || rows.rate > c_uiHighestRate || chooseColumns(rows.rate) ||
        (rows.rowCount > 0 && m_pColumns->names() != m_pPrevious->summary().columns)) {
        return nullptr;
    }
    return std::make_unique<CopiedRows>(m_table, *m_pPrevious, m_diagnostics,
                                        TableInput{name, rows.rate, drifts(m_config), m_pColumns, 0.0});
}

bool FeatureWorker::configure(Audio::WindowedAudioFileReader& reader) {
    const std::uint64_t rate = m_config.m_uiSampleRate;
    if (rate == 0 || rate > c_uiHighestRate || !reader.configure(m_config)) {
        return fail("windows of " + std::to_string(m_config.m_uiWindowSizeMs) + " ms that overlap by " +
                    std::to_string(m_config.m_uiWindowOverlapMs) + " ms cannot be cut at " + std::to_string(rate) +
                    " Hz");
    }
    warnOfRate(rate, m_diagnostics);
    return true;
}

// The columns follow from the length of a window, which follows from the rate. Tells why there are none, if so.
std::optional<std::string> FeatureWorker::chooseColumns(std::uint64_t rate) {
    if (m_uiColumnsRate == rate) {
        return std::nullopt;
    }
    FeatureColumns columns(m_requested);
    if (auto problem = columns.measure(static_cast<std::size_t>(m_config.getWindowSizeInSamples()))) {
        return problem;
    }
    m_pColumns = std::make_shared<const FeatureColumns>(std::move(columns));
    m_uiColumnsRate = rate;
    return std::nullopt;
}

bool FeatureWorker::addWindows(Audio::WindowedAudioFileReader& reader, Turn& turn, InputRows& rows) {
    RowComputer computer(m_requested);
    const QuietLog oddSpectra(c_strOddSpectrum);
    m_uiWindows = 0;
    for (std::size_t count = c_uiBatch; count == c_uiBatch;) {
        for (count = 0; count < c_uiBatch && reader.getNextWindow(m_windows[count]); ++count) {
            m_times[count] = reader.getCurrentAudioTime();
        }
        if (count == 0) {
            break;
        }
        if (!mayGoOn(turn, rows)) {
            return false;
        }
        const std::span<Math::DoubleVector> values = std::span(m_rows).first(count);
        if (!computer.compute(std::span(m_windows).first(count), values)) {
            return fail(computer.describeFailure("the windows that end at " + shortest(m_times[0]) + " to " +
                                                 shortest(m_times[count - 1]) + " s"));
        }
        if (m_uiWindows == 0 && !oddSpectra.firstError().empty()) {
            m_diagnostics.warning("spectra of a number of samples that is no power of two (its windows have " +
                                  std::to_string(m_config.getWindowSizeInSamples()) + ") are computed slowly");
        }
        for (std::size_t i = 0; i < count; ++i, ++m_uiWindows) {
            if (!m_pColumns->arrange(m_uiWindows, values[i])) {
                return fail("the features give another number of values for the window that ends at " +
                            shortest(m_times[i]) + " s than for those before");
            }
            if (!m_pEncoder->add(m_times[i], values[i])) {
                return false;
            }
        }
        m_progress.advance(m_times[count - 1]);
    }
    return true;
}

// Before each batch of windows.
bool FeatureWorker::mayGoOn(Turn& turn, InputRows& rows) {
    if (Interrupt::requested() || (m_uiWindows == 0 && !rows.start(m_times[0]))) {
        return false;
    }
    return m_diagnostics.input().lines.size() <= c_uiMaxHeldMessages || (turn.await() && rows.settle());
}

bool FeatureWorker::checkEnd(std::uint64_t promisedSamples) {
    if (m_uiWindows < windowsIn(m_config, promisedSamples)) {
        return fail("cannot be read to its end: " + std::to_string(m_uiWindows) + " windows instead of " +
                    std::to_string(windowsIn(m_config, promisedSamples)));
    }
    if (m_uiWindows == 0) {
        m_diagnostics.warning("is shorter than one window of " + std::to_string(m_config.getWindowSizeInSamples()) +
                              " samples: no rows");
    }
    return true;
}

bool FeatureWorker::fail(const std::string& message) {
    m_diagnostics.error(message);
    return false;
}

}  // namespace Zantrix::Cli
