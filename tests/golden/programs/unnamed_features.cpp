/// Prints the features that no name builds, over a recording, as `murvane-audio features` prints the others: so that
/// the independent computation can check them, too. Windows of 32 ms, every 16 ms.
///
///     unnamed_features CALL.wav

#include <murvane/audio.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Zantrix;
using namespace Zantrix::Audio;

struct Column {
    const char* name;  // as features_reference.py calls it
    std::unique_ptr<Math::SignalFeature> pFeature;
    bool isOfSpectrum;
    std::size_t valueCount;
};

std::vector<Column> makeColumns() {
    std::vector<Column> columns;
    columns.push_back({"CLIPPINGRATE(100)", std::make_unique<ClippingRateFeature>(-0.1, 0.1), false, 1});
    columns.push_back({"ENERGYHISTOGRAM(50,8)", std::make_unique<EnergyHistogramFeature>(0.05, 8), false, 8});
    columns.push_back({"MEANENERGYABOVETHRESH(10)", std::make_unique<MeanEnergyAboveThreshFeature>(0.01), false, 1});
    columns.push_back({"MEANMAX(64,2)", std::make_unique<MeanMaxFeature>(64, 0.002), false, 2});
    columns.push_back({"NONLOGPEAKS_SPECTRUM", std::make_unique<NonLogPeaksFeature>(), true, 5});
    columns.push_back({"PONDERATEDPEAKS_SPECTRUM", std::make_unique<PonderatedPeaksFeature>(), true, 3});
    return columns;
}

void printHeader(const std::vector<Column>& columns) {
    std::printf("file,time");
    for (const Column& column : columns) {
        for (std::size_t i = 0; i < column.valueCount; ++i) {
            const std::string index = column.valueCount == 1 ? "" : "[" + std::to_string(i) + "]";
            std::printf(",\"%s%s\"", column.name, index.c_str());
        }
    }
    std::printf("\n");
}

}  // namespace

int main(int, char** argv) {
    LinearAudioWindower::Config config;
    config.m_uiWindowSizeMs = 32;
    config.m_uiWindowOverlapMs = 16;
    WindowedAudioFileReader reader;
    if (!reader.configure(config) || !reader.setSourceAudioFile(argv[1])) {
        return 1;
    }
    const std::vector<Column> columns = makeColumns();
    printHeader(columns);
    SpectrumFeature spectrumFeature;
    Math::DoubleVector window;
    Math::DoubleVector spectrum;
    Math::DoubleVector values;
    while (reader.getNextWindow(window)) {
        spectrum.clear();
        if (!spectrumFeature.compute(window, spectrum)) {
            return 1;
        }
        std::printf("%s,%.17g", argv[1], reader.getCurrentAudioTime());
        for (const Column& column : columns) {
            values.clear();
            if (!column.pFeature->compute(column.isOfSpectrum ? spectrum : window, values) ||
                values.size() != column.valueCount) {
                return 1;
            }
            for (const double value : values) {
                std::printf(",%.17g", value);
            }
        }
        std::printf("\n");
    }
    return 0;
}
