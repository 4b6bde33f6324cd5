#include "evaluate/EvaluateOptions.h"

#include "Command.h"
#include "shell/OutputPlaces.h"

#include <murvane/core/OS.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szChannel = "channel";
constexpr const char* c_szThreshold = "threshold";
constexpr const char* c_szAnnotatedSuffix = "annotated";

constexpr const char* c_szUsage =
    "Usage: murvane-audio evaluate FILE... [--audioset LIST] {--channel [NAME=]FORMULA}... [OPTION]...\n"
    "Evaluates mono 16-bit WAV files block by block, and writes each again with a curve beside its samples for each\n"
    "channel: call.wav becomes call.prob.wav, to look at in any viewer of audio files.\n";

constexpr const char* c_szHelpRest =
    "A channel is a formula of x, as --expr of 'murvane-audio features' has them ('murvane-audio list' names the\n"
    "functions). It gives one value for a block, which holds for all of its samples. Values are clamped to -1 to 1\n"
    "and stored as -32767 to 32767; what is not a number is stored as 0. The first channel of the output is the\n"
    "audio; those behind it are in the order of the options. All other chunks of the file are carried over.\n\n"
    "x is the audio that ends with the block: as long as the block, or as --context-ms says, with silence before the\n"
    "start. The last block of a file may be shorter; x then ends with the file, and is as long as ever. Spectra are\n"
    "made for powers of two: 16, 32 or 64 ms at 8000 Hz. Of other lengths they are computed slowly, with a warning.\n\n"
    "With a threshold, a channel is 1 where its value, before it is clamped, is the threshold or above, else 0.\n"
    "--annotate writes call.annotated.wav, too: the file with an annotation, labelled by the channel, for each run of\n"
    "blocks where a channel is on, as the threshold says; without one, from 0.5 on. Annotations that the file has "
    "stay.\n"
    "\n"
    "A file that fails is told of, leaves no output, and the others are still done. An output appears when it is\n"
    "whole. With --resume, files are skipped whose outputs are newer than they are, as long, and have as many\n"
    "channels; that the formulas were the same is for you to know. With --shard I/N the I-th of N runs of the list of\n"
    "all inputs is done.\n\n"
    "Examples:\n"
    "  murvane-audio evaluate call.wav --channel 'tonal=1 - flatness(spectrum(x))' --context-ms 32\n"
    "  murvane-audio evaluate *.wav --channel 'noise=flatness(spectrum(x))' --channel 'zcr=zeroCrossingRate(x)' \\\n"
    "      --threshold noise=0.3 --annotate 200 --output-dir curves\n"
    "  find calls -name '*.wav' | murvane-audio evaluate - --channel 'zcr=zeroCrossingRate(x)' --output-dir curves \\\n"
    "      --resume --failures failed.txt\n";

po::options_description describe(EvaluateOptions& options, std::int64_t& contextMs, std::int64_t& annotateMs) {
    po::options_description description("Options");
    addInputOptions(description, options.inputs);
    description.add_options()  //
        (c_szChannel, po::value<std::vector<std::string>>()->value_name("[NAME=]FORMULA"),
         "a channel of the output, such as 'tonal=1 - flatness(spectrum(x))'; may be given again")  //
        ("window-ms", po::value(&options.windowMs)->value_name("MS"),
         "length of a block in milliseconds (default 16)")  //
        ("context-ms", po::value(&contextMs)->value_name("MS"),
         "how much audio a formula sees, up to the end of the block; at least the block (the default)")  //
        (c_szThreshold, po::value<std::vector<std::string>>()->value_name("[NAME=]VALUE"),
         "turn the values of a channel, or of all without a threshold of their own, into 0 and 1; may be given "
         "again")  //
        ("annotate", po::value(&annotateMs)->value_name("MS"),
         "write an annotated copy of the file, too, with all runs of at least this length")  //
        ("suffix", po::value(&options.suffix)->value_name("TEXT"),
         "what goes between the name of a file and \".wav\" (default prob)")  //
        ("output-dir", po::value(&options.outputDir)->value_name("DIR"),
         "the folder for all outputs, which must exist (default: the working folder)");
    addBatchOptions(description, options.batch);
    addCommonOptions(description, options.log);
    return description;
}

// Formulas and thresholds may begin with "-": "--channel -x" becomes "--channel=-x".
std::vector<std::string> joinValues(const std::vector<std::string>& arguments) {
    std::vector<std::string> joined;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (*argument == "--") {
            joined.insert(joined.end(), argument, arguments.end());
            break;
        }
        joined.push_back(*argument);
        const bool takesAny =
            *argument == std::string("--") + c_szChannel || *argument == std::string("--") + c_szThreshold;
        const auto next = std::next(argument);
        if (takesAny && next != arguments.end() && next->rfind("--", 0) != 0) {
            joined.back() += '=' + *next;
            argument = next;
        }
    }
    return joined;
}

void checkTimes(const EvaluateOptions& options) {
    checkMilliseconds("window", options.windowMs, 1);
    if (options.contextMs) {
        checkMilliseconds("context", *options.contextMs, options.windowMs);
    }
    if (options.annotateMs && *options.annotateMs < 0) {
        throw UsageError("--annotate takes the length of the shortest run in milliseconds, 0 or more");
    }
}

void checkOutput(const EvaluateOptions& options) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(options.outputDir, ignored)) {
        throw UsageError("the output folder '" + options.outputDir + "' " +
                         (std::filesystem::exists(options.outputDir, ignored) ? "is no folder" : "does not exist"));
    }
    if (options.suffix.empty() || options.suffix.find('/') != std::string::npos) {
        throw UsageError("the suffix '" + options.suffix + "' cannot be part of a file's name");
    }
    if (options.annotateMs && options.suffix == c_szAnnotatedSuffix) {
        throw UsageError("--annotate gives its files the suffix 'annotated'; --suffix must be another");
    }
}

std::string outputPath(const std::string& folder, const std::string& file, const std::string& suffix) {
    return (std::filesystem::path(folder) / (OS::stripPathAndExtension(file) + '.' + suffix + ".wav")).string();
}

}  // namespace

std::string EvaluateOptions::curvesPath(const std::string& file) const {
    return outputPath(outputDir, file, suffix);
}

std::string EvaluateOptions::annotatedPath(const std::string& file) const {
    return outputPath(outputDir, file, c_szAnnotatedSuffix);
}

std::optional<EvaluateOptions> parseEvaluateOptions(const std::vector<std::string>& arguments) {
    EvaluateOptions options;
    std::int64_t contextMs = 0;
    std::int64_t annotateMs = 0;
    const po::options_description description = describe(options, contextMs, annotateMs);
    const std::vector<std::string> joined = joinValues(arguments);
    const po::variables_map values = parseArguments(joined, description, options.inputs.files);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return std::nullopt;
    }
    options.inputs.behindDashes = countBehindDashes(joined);
    if (values.count("context-ms") != 0) {
        options.contextMs = contextMs;
    }
    if (values.count("annotate") != 0) {
        options.annotateMs = annotateMs;
    }
    if (values.count(c_szChannel) != 0) {
        const auto& texts = values[c_szChannel].as<std::vector<std::string>>();
        std::transform(texts.begin(), texts.end(), std::back_inserter(options.channels), makeChannel);
    }
    checkChannels(options.channels);
    if (values.count(c_szThreshold) != 0) {
        setThresholds(values[c_szThreshold].as<std::vector<std::string>>(), options.channels);
    }
    if (options.inputs.isEmpty()) {
        throw UsageError("no file given");
    }
    checkTimes(options);
    checkOutput(options);
    return options;
}

void protectFiles(const EvaluateOptions& options, InputNames& inputs) {
    OutputPlaces outputs;
    outputs.add(options.batch.failures);
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const std::string file = inputs.name(i);
        std::vector<std::string> paths = {options.curvesPath(file)};
        if (options.annotateMs) {
            paths.push_back(options.annotatedPath(file));
        }
        if (const auto taken = outputs.add(paths, i)) {
            inputs.refuse(i, taken->owner == i ? "two of its outputs would go to " + taken->path
                                               : "its output " + taken->path + " is that of " +
                                                     inputs.name(taken->owner) + ", which stands before it");
        }
    }
    outputs.refuseToReplace(options.log.config);
    inputs.refuseToOverwrite(outputs);
}

}  // namespace Zantrix::Cli
