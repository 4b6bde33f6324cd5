#include <murvane/audio.h>

#include <iostream>

// Prints, for every window of a recording, its time and the flatness of its spectrum.
int main(int, char** argv) {
    Zantrix::Audio::LinearAudioWindower::Config config;  // 8000 samples per second, unless it says otherwise
    config.m_uiWindowSizeMs = 32;
    config.m_uiWindowOverlapMs = 16;

    Zantrix::Audio::WindowedAudioFileReader reader;
    Zantrix::Audio::FeatureComputerWithInputsImpl computer;
    if (!reader.configure(config) || !reader.setSourceAudioFile(argv[1]) || !computer.addFeature("FLATNESS_SPECTRUM")) {
        return 1;
    }
    Zantrix::Math::DoubleVector window;
    Zantrix::Math::DoubleVector values;
    computer.setInput("Amplitude", window);
    while (reader.getNextWindow(window) && computer.computeFeatures(values)) {
        std::cout << reader.getCurrentAudioTime() << ' ' << values[0] << '\n';
    }
}
