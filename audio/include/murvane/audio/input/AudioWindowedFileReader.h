#pragma once

#include <murvane/audio/input/AudioFileReader.h>
#include <murvane/audio/input/AudioLinearWindower.h>

#include <cstddef>
#include <cstdint>

namespace Zantrix::Audio {

/// Delivers a mono audio file window by window: a file reader whose chunks feed a windower.
///
/// Life: construct, `configure`, `setSourceAudioFile`, then `getNextWindow` until it returns false; `gotoStart`,
/// `gotoAudioTime` or another file to go again.
///
/// The lengths come from the configuration alone: whoever configures it gives the rate of the files to be read.
///
/// What the base offers stays in place and is about chunks: after `atEnd()` windows may still be pending, and a chunk
/// taken by `getNextLinearFrames` does not go into the windows.
class MURVANE_API WindowedAudioFileReader : public AudioFileReader {
public:
    WindowedAudioFileReader();

    /// Copies share the open file. A constructed copy's windower is freshly reset; an assigned one takes over what is
    /// pending (see `LinearAudioWindower`).
    WindowedAudioFileReader(const WindowedAudioFileReader&) = default;
    WindowedAudioFileReader& operator=(const WindowedAudioFileReader&) = default;

    /// Configures the windower, and the chunks with it.
    ///
    /// @return false when the windower refuses; the chunks then stay as they are
    bool configure(const LinearAudioWindower::Config& config);

    /// Sets how many windows' worth of frames each read fetches, from the next open, rewind or seek on; true.
    bool setChunkReadFactor(std::size_t factor);

    /// As for the base; the windower starts anew.
    bool setSourceAudioFile(const char* path) override;
    bool gotoStart() override;

    /// As for the base; the windower starts anew, and the first window ends one window length after `seconds`.
    bool gotoAudioTime(double seconds) override;

    /// Takes the next window. Samples at the end of the file that do not fill a window are never delivered.
    ///
    /// @param window  replaced by the samples of the window
    /// @return false at the end of the file, and when the windower fails
    virtual bool getNextWindow(Math::DoubleVector& window);

    /// The time of the end of the last window delivered, in seconds.
    double getCurrentAudioTime() const override { return m_windower.getCurrentAudioTime(); }

private:
    std::uint64_t m_uiChunkReadFactor = 1;
    LinearAudioWindower m_windower;
};

}  // namespace Zantrix::Audio
