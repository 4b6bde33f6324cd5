// Prints what formulas give for the window of a recording that ends at a time, or what is wrong with them.
//
//     formulas CALL.wav SECONDS FORMULA...
#include <murvane/audio.h>

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

#include <cstdlib>
#include <iostream>

using Zantrix::Audio::LinearAudioWindower;
using Zantrix::Audio::WindowedAudioFileReader;
using Zantrix::Math::DoubleVector;
using Zantrix::Math::Xpr::ExpressionList;
using Zantrix::Math::Xpr::FormulaError;

int main(int argc, char** argv) {
    if (argc < 4) {
        std::cerr << "Usage: formulas CALL.wav SECONDS FORMULA...\n";
        return 2;
    }
    // The library reports its errors to log4cplus as well; here they are printed.
    const log4cplus::Initializer logging;
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);

    ExpressionList list;
    for (int i = 3; i < argc; ++i) {
        FormulaError error;
        if (!list.add(argv[i], argv[i], error)) {
            std::cerr << error.rendered << '\n';
            return 1;
        }
    }
    LinearAudioWindower::Config config;  // 8000 Hz
    config.m_uiWindowSizeMs = 32;
    config.m_uiWindowOverlapMs = 16;
    WindowedAudioFileReader reader;
    if (!reader.configure(config) || !reader.setSourceAudioFile(argv[1])) {
        std::cerr << "cannot read " << argv[1] << '\n';
        return 1;
    }
    // Every window is evaluated, since some functions remember the ones before.
    const double seconds = std::atof(argv[2]);
    DoubleVector window;
    DoubleVector values;
    do {
        if (!reader.getNextWindow(window)) {
            std::cerr << argv[1] << " ends before\n";
            return 1;
        }
        if (!list.evaluate(window, values)) {
            std::cerr << list.getError() << '\n';
            return 1;
        }
    } while (reader.getCurrentAudioTime() < seconds);
    for (const double value : values) {
        std::cout << value << '\n';
    }
}
