#pragma once

#include <span>
#include <vector>

/// Sound that measures like telephone speech, though nobody says anything: a glottal pulse train with intonation,
/// jitter and shimmer through moving formants, noise for fricatives and bursts, closures, about four syllables a
/// second.
namespace SampleCall {

enum class Onset { None, Nasal, Stop, Fricative };
enum class Vowel { Ee, Eh, Aa, Aw, Oo, Uh };

struct Syllable {
    Onset onset;
    Vowel vowel;
    int milliseconds;
    double stress;  // 1.0 is neutral: scales the loudness and, less, the pitch
};

/// A phrase, begun and ended in silence, its largest sample `peak`.
///
/// @param syllables  spoken one after the other; the length is the sum of theirs
/// @param seed       of its jitter and its noise, not 0
std::vector<double> speak(std::span<const Syllable> syllables, double peak, unsigned seed);

}  // namespace SampleCall
