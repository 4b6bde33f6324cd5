#include "CallProgress.h"

#include "Signals.h"
#include "Windows.h"

#include <algorithm>
#include <utility>

namespace CallProgress {

namespace {

// A voice has harmonics in many windows, where noise of any colour has none, and its level changes with its syllables,
// where hum and other steady sounds go on: by 6 dB, without the loudest and the softest tenth of the windows.
constexpr double c_dFlatVoice = 0.35;
constexpr double c_dVoicedShare = 0.15;
constexpr double c_dVoiceChange = 4.0;

constexpr int c_iLeastToneMs = 32;       // what is shorter is chance
constexpr int c_iEdgeMs = 48;            // where a tone begins or ends, windows are filled by halves
constexpr int c_iUnknownToneMs = 200;    // no voice holds one line that long
constexpr int c_iPauseInSpeechMs = 300;  // closures, and breaths between words
constexpr int c_iLeastSpeechMs = 100;

// Windows of one kind, from the first to before the last.
struct Run {
    int kind;
    std::size_t first;
    std::size_t last;
    std::string name = {};

    int milliseconds() const { return static_cast<int>(last - first) * c_iStepMs; }
};

bool fits(int milliseconds, const RangeMs& range) {
    return milliseconds >= range.first && milliseconds <= range.last;
}

int kindOf(const Tone& tone, const std::vector<Tone>& tones) {
    return static_cast<int>(std::find(tones.begin(), tones.end(), tone) - tones.begin());
}

// Neighbours of one kind and one name become one run.
std::vector<Run> joined(const std::vector<Run>& runs) {
    std::vector<Run> result;
    for (const Run& run : runs) {
        if (!result.empty() && result.back().kind == run.kind && result.back().name == run.name) {
            result.back().last = run.last;
        } else {
            result.push_back(run);
        }
    }
    return result;
}

std::vector<Run> runsOf(const std::vector<Window>& windows) {
    std::vector<Run> runs;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        runs.push_back({windows[i].kind, i, i + 1});
    }
    return joined(runs);
}

// Drops tones that are chance, then gives tones the windows that they fill by halves.
std::vector<Run> withWholeTones(std::vector<Run> runs) {
    for (Run& run : runs) {
        if (run.kind >= 0 && run.milliseconds() < c_iLeastToneMs) {
            run.kind = c_iOther;
        }
    }
    runs = joined(runs);
    for (std::size_t i = 0; i < runs.size(); ++i) {
        if (runs[i].kind != c_iOther || runs[i].milliseconds() > c_iEdgeMs) {
            continue;
        }
        if (i > 0 && runs[i - 1].kind >= 0) {
            runs[i].kind = runs[i - 1].kind;
        } else if (i + 1 < runs.size() && runs[i + 1].kind >= 0) {
            runs[i].kind = runs[i + 1].kind;
        }
    }
    return joined(runs);
}

// The pause between two runs, which may be noisy; nothing where another tone is between them.
std::optional<int> pauseBetween(const std::vector<Run>& runs, std::size_t a, std::size_t b) {
    int milliseconds = 0;
    for (std::size_t i = a + 1; i < b; ++i) {
        if (runs[i].kind >= 0) {
            return {};
        }
        milliseconds += runs[i].milliseconds();
    }
    return milliseconds;
}

// Names the bursts of a signal: rows of bursts as long as they should be, with pauses as they should be. A burst that
// the recording cuts belongs to a row, but makes none.
void nameBursts(std::vector<Run>& runs, const Signal& signal, int kind) {
    std::vector<std::size_t> row;
    int whole = 0;
    const auto finish = [&] {
        for (const std::size_t i : row) {
            runs[i].name = whole >= signal.leastBursts ? signal.name : "";
        }
        row.clear();
        whole = 0;
    };
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const bool isCut = i == 0 || i + 1 == runs.size();
        const bool isWhole = fits(runs[i].milliseconds(), signal.on);
        if (runs[i].kind != kind || !runs[i].name.empty() ||
            !(isWhole || (isCut && runs[i].milliseconds() < signal.on.first))) {
            continue;
        }
        const auto pause = row.empty() ? std::nullopt : pauseBetween(runs, row.back(), i);
        if (!pause || !fits(*pause, signal.off)) {
            finish();
        }
        row.push_back(i);
        whole += isWhole ? 1 : 0;
    }
    finish();
}

// Makes one run of the parts of a sequence, the pauses between them included.
std::vector<Run> withSequence(std::vector<Run> runs, const Sequence& sequence, const std::vector<Tone>& tones) {
    const auto isPart = [&](std::size_t i, std::size_t part) {
        return i < runs.size() && fits(runs[i].milliseconds(), sequence.on) &&
               std::any_of(sequence.parts[part].begin(), sequence.parts[part].end(),
                           [&](const Tone& tone) { return kindOf(tone, tones) == runs[i].kind; });
    };
    for (std::size_t first = 0; first < runs.size(); ++first) {
        std::size_t i = first;
        std::size_t part = 0;
        while (part < sequence.parts.size() && isPart(i, part)) {
            if (++part == sequence.parts.size()) {
                break;
            }
            const bool hasPause =
                i + 1 < runs.size() && runs[i + 1].kind == c_iSilence && fits(runs[i + 1].milliseconds(), sequence.off);
            i += hasPause ? 2 : 1;
        }
        if (part == sequence.parts.size()) {
            for (std::size_t k = first; k <= i; ++k) {
                runs[k].kind = runs[first].kind;
                runs[k].name = sequence.name;
            }
            first = i;
        }
    }
    return joined(runs);
}

// The pauses inside a run do not count.
bool isVoice(const Run& run, const std::vector<Window>& windows) {
    std::vector<double> levels;
    std::size_t voiced = 0;
    for (std::size_t i = run.first; i < run.last; ++i) {
        if (windows[i].kind != c_iSilence) {
            levels.push_back(windows[i].level);
            voiced += windows[i].flatness < c_dFlatVoice ? 1 : 0;
        }
    }
    const std::size_t tenth = levels.size() / 10;
    std::sort(levels.begin(), levels.end());
    return run.milliseconds() >= c_iLeastSpeechMs &&
           static_cast<double>(voiced) >= c_dVoicedShare * static_cast<double>(levels.size()) &&
           levels[levels.size() - 1 - tenth] >= c_dVoiceChange * levels[tenth];
}

// Gives names to what is no signal: pauses inside a voice belong to it.
std::vector<Run> withOtherSounds(std::vector<Run> runs, const std::vector<Window>& windows) {
    for (Run& run : runs) {
        if (run.kind >= 0 && run.name.empty()) {
            run.name = run.milliseconds() >= c_iUnknownToneMs ? "unknown tone" : "";
            run.kind = run.name.empty() ? c_iOther : run.kind;
        }
    }
    runs = joined(runs);
    for (std::size_t i = 1; i + 1 < runs.size(); ++i) {
        if (runs[i].kind == c_iSilence && runs[i].milliseconds() < c_iPauseInSpeechMs && runs[i - 1].kind == c_iOther &&
            runs[i + 1].kind == c_iOther) {
            runs[i].kind = c_iOther;
        }
    }
    runs = joined(runs);
    for (Run& run : runs) {
        if (run.kind == c_iSilence) {
            run.name = "silence";
        } else if (run.kind == c_iOther) {
            run.name = isVoice(run, windows) ? "speech" : "noise";
        }
    }
    return runs;
}

}  // namespace

std::optional<std::vector<Phase>> findPhases(const std::string& path, std::string& error) {
    const auto classified = classifyWindows(path, error);
    if (!classified) {
        return {};
    }
    const std::vector<Window>& windows = *classified;
    const std::vector<Tone> tones = allTones();
    std::vector<Run> runs = withSequence(withWholeTones(runsOf(windows)), specialInformation(), tones);
    for (const Signal& signal : signals()) {
        nameBursts(runs, signal, kindOf(signal.tone, tones));
    }
    runs = withOtherSounds(std::move(runs), windows);

    // The first and the last window speak for the ends of the recording, too.
    constexpr double toMiddle = (c_iWindowMs - c_iStepMs) / 2 / 1000.0;
    const double end = (static_cast<double>(windows.size() - 1) * c_iStepMs + c_iWindowMs) / 1000.0;
    std::vector<Phase> phases;
    for (const Run& run : runs) {
        phases.push_back(
            {run.name, run.first == 0 ? 0.0 : static_cast<double>(run.first) * c_iStepMs / 1000.0 + toMiddle,
             run.last == windows.size() ? end : static_cast<double>(run.last) * c_iStepMs / 1000.0 + toMiddle});
    }
    return phases;
}

}  // namespace CallProgress
