#include "guide/FeatureGuide.h"

#include "shell/Text.h"

#include <algorithm>

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szHarmonicNote =
    "Values belong to candidates for the fundamental, one a bin; those below 100 Hz are 0.";

constexpr FeatureDescription c_guide[] = {
    {"AMPLITUDE", "", "any values", "the same values", "the input itself",
     "As the last element of a name it is the samples of the window, full scale 1.", "AMPLITUDE", "AMPLITUDE"},
    {"MEAN", "", "any values", "1 value", "the arithmetic mean", "0 for no values.", "MEAN_AMPLITUDE", "MEAN"},
    {"TEMPORALMEAN", "", "any values", "as many values",
     "the mean, value by value, over all windows of the file so far, this one included", "",
     "TEMPORALMEAN_SPECTRUM100HZ", "TEMPORALMEAN"},
    {"SLIDINGWINDOW", "(n)", "any values", "n values", "the last n values, oldest first, those of this window included",
     "Values from before the start of a file are nan.", "SLIDINGWINDOW(5)_ZEROCROSSINGRATE", "SLIDINGWINDOW(1)"},
    {"RANGE", "(start,length)", "at least start+length values", "length values", "a slice of the input, counted from 0",
     "", "RANGE(0,32)_SPECTRUM", "RANGE(0,1)"},
    {"SPECTRUM", "", "N samples", "L = N/2 values", "the power spectrum under a Hann window, scaled to the sum 1",
     "Bin k lies at k times the sampling rate divided by N, 31.25 Hz apart for 256 samples at 8000 Hz. All bins of a\n"
     "silent window are 0. Fast where N is a power of two; any other N is exact as well, but slow.",
     "SPECTRUM", "SPECTRUM"},
    {"SPECTRUM100HZ", "", "N samples", "40 values", "the spectrum summed into 40 bands of equal width",
     "Bands are whole numbers of bins, so that the last ones do not fill the range exactly. A spectrum of fewer bins\n"
     "is left as it is.",
     "SPECTRUM100HZ", "SPECTRUM100HZ"},
    {"SPECTRUM200HZ", "", "N samples", "20 values", "the spectrum summed into 20 bands of equal width",
     "Bands are whole numbers of bins, so that the last ones do not fill the range exactly. A spectrum of fewer bins\n"
     "is left as it is.",
     "SPECTRUM200HZ", "SPECTRUM200HZ"},
    {"SPECTRUM500HZ", "", "N samples", "8 values", "the spectrum summed into 8 bands of equal width",
     "Bands are whole numbers of bins. The last band also holds bin 7 once more. A spectrum of fewer bins is left as\n"
     "it is.",
     "SPECTRUM500HZ", "SPECTRUM500HZ"},
    {"FLATNESS", "", "spectrum, L values", "1 value",
     "how close a spectrum is to white noise: its geometric by its arithmetic mean, at most 1",
     "Bins that are 0 are left out of the product.", "FLATNESS_SPECTRUM", "FLATNESS"},
    {"SPECTRALWEIGHTEDAREA", "", "spectrum, L values", "1 value",
     "the power between 500 and 1500 Hz, each bin weighted with its frequency in Hz", "",
     "SPECTRALWEIGHTEDAREA_SPECTRUM", "SPECTRALWEIGHTEDAREA"},
    {"HARMONICPRODUCT", "", "spectrum, L values", "(L-1)/5 + 1 values",
     "for each frequency, the product of its bin with those of its harmonics 2 to 5", c_szHarmonicNote,
     "HARMONICPRODUCT_SPECTRUM", "HARMONICPRODUCT"},
    {"ROBUSTHARMONICPRODUCT", "", "spectrum, L values", "(L-1)/5 + 1 values",
     "the harmonic product with harmonics taken one candidate further up, where the spectrum reaches so far",
     c_szHarmonicNote, "ROBUSTHARMONICPRODUCT_SPECTRUM", "ROBUSTHARMONICPRODUCT"},
    {"OLDHARMONICPRODUCT", "", "spectrum, L values", "L values",
     "an earlier harmonic product of four factors; values from L/4 on are 0",
     "Factors of candidate i are bins i, 2i+1, 3i+2 and 4i+3.", "OLDHARMONICPRODUCT_SPECTRUM", "OLDHARMONICPRODUCT"},
    {"ANTIHARMONICPRODUCT", "", "spectrum, L > 10 values", "(L-1)/5 - 1 values",
     "for each frequency, the product of the bins half-way between its harmonics",
     "The candidates begin with bin 2. All values are 1 for silence.", "ANTIHARMONICPRODUCT_SPECTRUM",
     "ANTIHARMONICPRODUCT"},
    {"PEAKS", "", "at least 1 value", "6 values",
     "the heights of the three highest peaks, then the logarithms of their positions",
     "A peak counts with the whole lobe around it. One that does not exist has height 0 and the logarithm of 1e-6.",
     "PEAKS_SPECTRUM", "PEAKS"},
    {"SPECTRALRANGE", "(centreHz,halfWidthHz)", "spectrum, L values", "2w + 2 values",
     "the bins around a frequency, then where in its bin that frequency lies (-0.5 to 0.5)",
     "w is the half-width in bins, rounded up. The range may neither reach bin 0 nor go beyond the last one.",
     "SPECTRALRANGE(440,20)_SPECTRUM", "SPECTRALRANGE(440,20)"},
    {"MAXSPECTRALRANGES", "(centreHz,...)", "spectrum, L values", "2w + 2 values",
     "of several ranges of 20 Hz to either side, the one with the strongest bin",
     "It is given as SPECTRALRANGE gives it.", "MAXSPECTRALRANGES(350,440)_SPECTRUM", "MAXSPECTRALRANGES(440)"},
    {"LOWFREQENERGYRATIO", "", "spectrum, L values", "1 value", "the share of the power below 1000 Hz", "",
     "LOWFREQENERGYRATIO_SPECTRUM", "LOWFREQENERGYRATIO"},
    {"LOWFREQENERGYRATIOS", "", "spectrum, L values", "2 values",
     "the share of the power below 100 Hz, and that from 100 to 1000 Hz", "", "LOWFREQENERGYRATIOS_SPECTRUM",
     "LOWFREQENERGYRATIOS"},
    {"ZEROCROSSINGRATE", "[(rateHz)]", "N samples", "1 value",
     "the share of samples at which the signal crosses or reaches zero",
     "A run of zeros counts once. The first sample is compared with the last one of the window before. The parameter\n"
     "does not change the value.",
     "ZEROCROSSINGRATE", "ZEROCROSSINGRATE"},
    {"SILENCERATIO", "", "N samples", "1 value", "the share of samples below 1/50 of the window's peak",
     "0 for a window of zeros.", "SILENCERATIO", "SILENCERATIO"},
    {"NOISERATIO", "", "N samples", "1 value", "the share of samples below 1/10 of the window's peak",
     "0 for a window of zeros.", "NOISERATIO", "NOISERATIO"},
    {"AMPLITUDEDISTRIBUTION", "", "N samples", "4 values",
     "the shares of samples above 1/5, 1/10 and 1/50 of the window's peak, and of the rest",
     "Each sample counts in the first band it fits.", "AMPLITUDEDISTRIBUTION", "AMPLITUDEDISTRIBUTION"},
    {"TEMPORALAMPLITUDEDISTRIBUTION", "", "N samples", "4 values",
     "the amplitude distribution measured by the peak of the file so far", "", "TEMPORALAMPLITUDEDISTRIBUTION",
     "TEMPORALAMPLITUDEDISTRIBUTION"},
    {"NEIGHBOURHOODOFMAX", "", "at least 4 values", "3 values", "the largest value between its neighbours",
     "At an end of the input, the three values at that end.", "NEIGHBOURHOODOFMAX_SPECTRUM", "NEIGHBOURHOODOFMAX"},
    {"DELTATOSLIDINGMEAN", "", "1 value", "1 value", "the value minus the mean of the last five, itself included", "",
     "DELTATOSLIDINGMEAN_FLATNESS_SPECTRUM", "DELTATOSLIDINGMEAN"},
};

}  // namespace

FeatureGuide::FeatureGuide(const std::function<bool(const std::string& name)>& isKnown) {
    for (const FeatureDescription& row : c_guide) {
        if (isKnown(row.trial)) {
            m_vRows.push_back(&row);
        }
    }
}

const FeatureDescription* FeatureGuide::find(std::string_view name) const {
    const std::string wanted = upperCase(name);
    const auto found =
        std::find_if(m_vRows.begin(), m_vRows.end(), [&](const auto* row) { return wanted == row->name; });
    return found == m_vRows.end() ? nullptr : *found;
}

std::vector<std::string> FeatureGuide::names() const {
    std::vector<std::string> names;
    names.reserve(m_vRows.size());
    for (const FeatureDescription* row : m_vRows) {
        names.emplace_back(row->name);
    }
    return names;
}

}  // namespace Zantrix::Cli
