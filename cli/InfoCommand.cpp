#include "Command.h"
#include "shell/InputFile.h"
#include "shell/InputNames.h"
#include "shell/Interrupt.h"
#include "shell/Options.h"
#include "shell/Output.h"
#include "shell/Progress.h"
#include "shell/Text.h"

#include <murvane/audio/features/ZeroCrossingFeatures.h>
#include <murvane/audio/input/AudioFileReader.h>

#include <cmath>
#include <optional>
#include <sstream>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio info FILE... [--audioset LIST] [OPTION]...\n"
    "Tells format, rate, duration and clipping of mono audio files.\n";

constexpr const char* c_szHelpRest =
    "A sample is clipped when its magnitude reaches the clipping value of the file's encoding, to six decimals.\n"
    "Files are read to their ends; one that cannot be read is reported, and the others are still done.\n\n";

constexpr const char* c_szHelpExamples =
    "Examples:\n"
    "  murvane-audio info call.wav\n"
    "  murvane-audio info --format csv calls/*.wav\n"
    "  find calls -name '*.wav' | murvane-audio info --format csv -\n";

constexpr std::size_t c_uiChunkFrames = 8192;

// Clipping values are the largest samples of their encodings, rounded to six decimals: up for mu-law, whose clipped
// samples would else be missed.
constexpr double c_dClippingTolerance = 0.5e-6;

struct AudioInfo {
    std::string name;
    std::string format;
    std::uint64_t rate = 0;
    std::uint64_t samples = 0;
    std::uint64_t clippedSamples = 0;
    double clippingValue = 0.0;

    double seconds() const { return static_cast<double>(samples) / static_cast<double>(rate); }
    double clippedShare() const { return static_cast<double>(clippedSamples) / static_cast<double>(samples); }
};

std::string fixed(double value, int decimals) {
    std::ostringstream text;
    text.precision(decimals);
    text << std::fixed << value;
    return text.str();
}

std::string asText(const AudioInfo& info, bool) {
    return info.name + "\n  format          " + info.format + "\n  rate            " + std::to_string(info.rate) +
           " Hz\n  duration        " + fixed(info.seconds(), 3) + " s\n  samples         " +
           std::to_string(info.samples) + "\n  clipping value  " + shortest(info.clippingValue) +
           "\n  clipped         " + fixed(100.0 * info.clippedShare(), 4) + " % (" +
           std::to_string(info.clippedSamples) + " samples)\n";
}

std::string asCsv(const AudioInfo& info, bool isFirst) {
    const std::string header = "file,format,rate_hz,duration_s,samples,clipping_value,clipped_samples,clipped_share\n";
    return (isFirst ? header : "") + csvField(info.name) + ',' + csvField(info.format) + ',' +
           std::to_string(info.rate) + ',' + shortest(info.seconds()) + ',' + std::to_string(info.samples) + ',' +
           shortest(info.clippingValue) + ',' + std::to_string(info.clippedSamples) + ',' +
           shortest(info.clippedShare()) + '\n';
}

std::string asJson(const AudioInfo& info, bool isFirst) {
    std::string json = std::string(isFirst ? "[" : ",") + "\n  {\"name\": " + jsonString(info.name);
    if (!isUtf8(info.name)) {
        json += ", \"name_bytes_hex\": \"" + hexBytes(info.name) + '"';
    }
    return json + ", \"format\": " + jsonString(info.format) + ", \"rate_hz\": " + std::to_string(info.rate) +
           ", \"duration_s\": " + jsonNumber(info.seconds()) + ", \"samples\": " + std::to_string(info.samples) +
           ", \"clipping_value\": " + jsonNumber(info.clippingValue) +
           ", \"clipped_samples\": " + std::to_string(info.clippedSamples) +
           ", \"clipped_share\": " + jsonNumber(info.clippedShare()) + '}';
}

struct Format {
    const char* name;
    std::string (*write)(const AudioInfo& info, bool isFirst);
    const char* endOfNone;  // what ends the output when no file was told of
    const char* end;
};

constexpr Format c_formats[] = {{"text", asText, "", ""}, {"csv", asCsv, "", ""}, {"json", asJson, "[]\n", "\n]\n"}};

const Format& findFormat(const std::string& name) {
    for (const Format& format : c_formats) {
        if (name == format.name) {
            return format;
        }
    }
    throw UsageError("unknown format '" + name + "'; the formats are text, csv and json");
}

std::optional<AudioInfo> inspect(const std::string& name, Diagnostics& diagnostics, Progress& progress) {
    InputFile input(name);
    if (!input.check(diagnostics)) {
        return std::nullopt;
    }
    Audio::AudioFileReader reader;
    reader.setNbOfFramesToRead(c_uiChunkFrames);
    if (!input.open(reader, diagnostics)) {
        return std::nullopt;
    }
    AudioInfo info;
    info.name = name;
    std::ostringstream format;
    reader.getFileInfo(format);
    info.format = format.str();
    info.rate = reader.getSamplingRate();
    info.clippingValue = reader.getClippingValue();
    const double threshold = info.clippingValue - c_dClippingTolerance;
    Audio::ClippingRateFeature clipping(-threshold, threshold);
    Math::DoubleVector samples;
    Math::DoubleVector rate;
    progress.beginInput(name, static_cast<double>(input.samples()) / static_cast<double>(info.rate));
    while (!Interrupt::requested() && reader.getNextLinearFrames(samples) && !samples.empty()) {
        rate.clear();
        clipping.compute(samples, rate);
        info.samples += samples.size();
        info.clippedSamples += static_cast<std::uint64_t>(std::llround(rate[0] * static_cast<double>(samples.size())));
        progress.advance(reader.getCurrentAudioTime());
    }
    if (info.samples == 0) {
        diagnostics.error("holds no audio");
        return std::nullopt;
    }
    if (info.samples < input.samples() && !Interrupt::requested()) {
        diagnostics.error("cannot be read to its end: " + std::to_string(info.samples) + " samples instead of " +
                          std::to_string(input.samples()));
        return std::nullopt;
    }
    return info;
}

}  // namespace

int runInfo(const std::vector<std::string>& arguments) {
    LogOptions log;
    std::string formatName = "text";
    std::string path;
    InputArguments inputArguments;
    po::options_description options("Options");
    addInputOptions(options, inputArguments);
    options.add_options()                                                                            //
        ("format", po::value(&formatName)->value_name("FORMAT"), "text (the default), csv or json")  //
        ("output,o", po::value(&path)->value_name("PATH"),
         "write to this file, which appears only when it is complete, instead of standard output (which is also '-')");
    addCommonOptions(options, log);
    const po::variables_map values = parseArguments(arguments, options, inputArguments.files);
    inputArguments.behindDashes = countBehindDashes(arguments);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, options, std::string(c_szHelpRest) + c_szInputsHelp + c_szHelpExamples);
        return AllDone;
    }
    const Format& format = findFormat(formatName);
    if (path == c_szStandardOutput) {
        path.clear();
    }
    if (inputArguments.isEmpty()) {
        throw UsageError("no file given");
    }
    Diagnostics diagnostics(log);
    InputNames inputs;
    bool isAllDone = inputs.gather(inputArguments, diagnostics);
    inputs.refuseToOverwrite({path});
    Output output;
    const auto outputFailed = [&] {
        if (!Output::hasReaderGone()) {
            diagnostics.error(output.describeError());
        }
        return SomeFailed;
    };
    if (!output.open(path)) {
        return outputFailed();
    }
    Progress progress(diagnostics, inputs, path.empty());
    bool isToldAny = false;
    for (std::size_t i = 0; i < inputs.size() && !Interrupt::requested(); ++i) {
        const Progress::Input counted(progress);
        diagnostics.beginInput(inputs.teller(i));
        const auto file = inputs.find(i, diagnostics);
        if (file) {
            diagnostics.renameInput(*file);
        }
        const auto info = file ? inspect(*file, diagnostics, progress) : std::nullopt;
        diagnostics.endInput();
        if (info && !Interrupt::requested()) {
            const std::string text = format.write(*info, !isToldAny);
            isToldAny = true;
            if (!output.write(text.data(), text.size())) {
                break;
            }
        }
        isAllDone = isAllDone && info;
    }
    if (Interrupt::requested()) {
        output.abandon();
        diagnostics.error("interrupted");
        return Interrupted;
    }
    if (inputs.isEmpty()) {
        diagnostics.error("no file to process");
        return SomeFailed;
    }
    const std::string end = isToldAny ? format.end : format.endOfNone;
    const bool isWanted = isToldAny || path.empty();
    if (isWanted && !(output.write(end.data(), end.size()) && output.commit())) {
        return outputFailed();
    }
    return isAllDone ? AllDone : SomeFailed;
}

}  // namespace Zantrix::Cli
