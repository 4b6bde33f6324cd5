#include "Signals.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace CallProgress {

namespace {

// One bin of the spectrum to either side at 64 ms: pairs as close as 440 + 480 Hz stay apart.
constexpr int c_iNarrowHz = 15;

std::vector<Signal> makeSignals() {
    std::vector<Signal> signals = {
        {"dial tone", {{350, 440}, c_iNarrowHz}, {500, c_iNoEnd}, {}, 1},
        {"ringback", {{440, 480}, c_iNarrowHz}, {1700, 2300}, {3400, 4600}, 1},
        {"busy", {{480, 620}, c_iNarrowHz}, {420, 580}, {420, 580}, 2},
        {"reorder", {{480, 620}, c_iNarrowHz}, {200, 300}, {200, 300}, 2},
        {"call waiting tone", {{440}, c_iNarrowHz}, {250, 350}, {}, 1},
        // A calling terminal may be 38 Hz off, and 15 % in its cadence of 0.5 s and 3 s.
        {"fax calling tone", {{1100}, 38}, {420, 580}, {2550, 3450}, 1},
    };
    constexpr std::array rowsHz = {697, 770, 852, 941};
    constexpr std::array columnsHz = {1209, 1336, 1477, 1633};
    constexpr std::string_view keys = "123A456B789C*0#D";
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const Tone tone{{rowsHz[i / columnsHz.size()], columnsHz[i % columnsHz.size()]}, c_iNarrowHz};
        signals.push_back({std::string("dtmf ") + keys[i], tone, {40, c_iNoEnd}, {}, 1});
    }
    return signals;
}

}  // namespace

const std::vector<Signal>& signals() {
    static const std::vector<Signal> all = makeSignals();
    return all;
}

const Sequence& specialInformation() {
    static const Sequence sequence = {
        "special information tones",
        {{{{914}, c_iNarrowHz}, {{985}, c_iNarrowHz}},
         {{{1371}, c_iNarrowHz}, {{1429}, c_iNarrowHz}},
         {{{1777}, c_iNarrowHz}}},
        {230, 430},
        {0, 60},
    };
    return sequence;
}

std::vector<Tone> allTones() {
    std::vector<Tone> tones;
    const auto add = [&](const Tone& tone) {
        if (std::find(tones.begin(), tones.end(), tone) == tones.end()) {
            tones.push_back(tone);
        }
    };
    for (const Signal& signal : signals()) {
        add(signal.tone);
    }
    for (const std::vector<Tone>& part : specialInformation().parts) {
        std::for_each(part.begin(), part.end(), add);
    }
    return tones;
}

}  // namespace CallProgress
