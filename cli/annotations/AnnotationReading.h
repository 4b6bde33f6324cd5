#pragma once

#include "annotations/ChunkScan.h"
#include "annotations/Recording.h"
#include "shell/Diagnostics.h"
#include "shell/Options.h"
#include "shell/WavHeader.h"

#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <murvane/core/FileStamp.h>

#include <optional>
#include <string>

namespace Zantrix::Cli {

struct ReadOptions {
    /// Take what can be saved of files whose cue points, intervals and labels do not fit together.
    bool lenient = false;

    /// Keep what gaps among the numbers of cue points read as (see `isFiller`).
    bool keepFillers = false;
};

/// Adds the options of these.
void addReadOptions(boost::program_options::options_description& description, ReadOptions& options);

/// What lenient reading makes of the loops of a sampler.
enum class Loops { Regions, OnlyOfCues };

/// A file in memory, and which one it was.
struct LoadedFile {
    LoadedFile() = default;
    LoadedFile(const LoadedFile&) = delete;
    LoadedFile& operator=(const LoadedFile&) = delete;

    Audio::AnnotatedFile file;
    std::optional<ChunkScan> scan;  ///< of the file as it was loaded: gone stale once it is saved
    FileStamp stamp;
    std::optional<WavHeader> header;  ///< nothing of what has no audio, or is no regular file

    /// Why its audio cannot be annotated.
    std::string obstacle() const;

    /// Why the header does not tell where the audio ends.
    std::optional<std::string> headerDefect() const;
};

/// What to do about such a header, to go behind the defect in an error.
inline constexpr const char* c_szHeaderHint = "; use a copy made by an audio tool that does not trust this length";

/// Loads a file. Whatever stands in the way is reported.
///
/// @param loaded  holds the file's chunks afterwards and, unless `lenient` let a file pass that does not fit together,
///                its annotations
bool loadAnnotated(const std::string& path, bool lenient, Diagnostics& diagnostics, LoadedFile& loaded);

/// The annotations of a file that was loaded, as `options` ask for them.
Recording recordingOf(const LoadedFile& loaded, const ReadOptions& options, Loops loops);

/// Both at once, for looking only: tells also what of the file's labels is not among its annotations, and whether its
/// header is right about its length.
bool readRecording(const std::string& path, const ReadOptions& options, Diagnostics& diagnostics, Recording& recording);

/// Whether an annotation is what the library reads where there is none: "SF_MIN", from 0 s to 0 s.
bool isFiller(const SampledLabel& annotation);

/// The samples of an annotation, as a file with this rate stores them: start and length are rounded.
SampledLabel toSamples(const TimedLabel& label, std::uint32_t rate);

/// The times of an annotation, as the library gives them.
TimedLabel toTimes(const SampledLabel& label, std::uint32_t rate);

}  // namespace Zantrix::Cli
