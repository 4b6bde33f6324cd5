/// Prints the features that no name builds, over a recording, as `murvane-audio features` prints the others: made by
/// their constructors, given windows of 32 ms, every 16 ms, or the spectra of these. docs/features.md draws them from
/// here, and the independent computation checks them.
///
///     unnamed_features CALL.wav
///
/// Exit status: 0 done, 1 the recording could not be read, 2 wrong usage.

#include <murvane/audio.h>

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Zantrix;
using namespace Zantrix::Audio;

struct Column {
    const char* name;  // and the numbers of its constructor, thresholds in thousandths
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

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "Usage: unnamed_features CALL.wav\n");
        return 2;
    }
    // The library reports its errors to log4cplus as well; here the exit status tells.
    const log4cplus::Initializer logging;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);

    LinearAudioWindower::Config config;
    config.m_uiWindowSizeMs = 32;
    config.m_uiWindowOverlapMs = 16;
    WindowedAudioFileReader reader;
    if (!reader.configure(config) || !reader.setSourceAudioFile(argv[1])) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
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
