#include "AudioSet.h"
#include "Command.h"
#include "FeatureArguments.h"
#include "FeatureNames.h"
#include "FeatureRun.h"
#include "InputFile.h"
#include "Interrupt.h"
#include "Options.h"

#include <cstdint>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio features FILE... [--audioset LIST] --feature NAME... [OPTION]...\n"
    "Cuts mono audio files into windows and computes features of each.\n";

constexpr const char* c_szHelpRest =
    "After --feature, arguments are feature names as long as they can be: the first that is no known name but an\n"
    "existing file, or has a '.' or '/', is a FILE, and so are those behind it. Write ./NAME for a file called like\n"
    "a feature. All arguments behind '--' are files. 'murvane-audio list' names the features.\n\n"
    "An audio set is a text file with the name of one audio file on each line; empty lines and those that begin with\n"
    "'#' are skipped. A relative name is looked for beside the list, then in the folder $ZANTRIX_CPA_DATA.\n\n"
    "CSV has the columns file, time (the end of the window, in seconds) and one for each value: NAME for a feature\n"
    "of one value, else NAME[0], NAME[1] ... Numbers are the shortest that give back the same double; missing ones\n"
    "are nan. NPY is one matrix of float64, a row for each window, with the columns, the window and the first row of\n"
    "each input in PATH.json; the time of a row is that of the row before plus (window - overlap) / 1000. Names in\n"
    "it that are not UTF-8 have U+FFFD in place of each wrong byte, and all bytes in \"name_bytes_hex\".\n\n"
    "Windows are cut at each file's own rate; a rate other than 8000 Hz draws a warning. A file that fails is told\n"
    "of, leaves no rows, and the others are still done. A file of less than a window gives no rows.\n\n"
    "Examples:\n"
    "  murvane-audio features call.wav --feature SPECTRUM100HZ\n"
    "  murvane-audio features *.wav --feature FLATNESS_SPECTRUM ZEROCROSSINGRATE --output calls.csv\n"
    "  murvane-audio features --feature 'MAXSPECTRALRANGES(350,440)_SPECTRUM' --format npy -o tones.npy -- *.wav\n";

// The longest window: a minute. A typing error must not take all memory.
constexpr std::int64_t c_iMaxWindowMs = 60000;

struct FeaturesOptions {
    std::vector<std::string> files;
    std::string audioSet;
    std::vector<std::string> features;
    std::int64_t windowMs = 32;
    std::int64_t overlapMs = 16;
    bool suppressDc = false;
    std::string format = "csv";
    std::string path;
    LogOptions log;
};

po::options_description describe(FeaturesOptions& options) {
    po::options_description description("Options");
    description.add_options()  //
        ("audioset", po::value(&options.audioSet)->value_name("LIST"),
         "read the files that this list names, too, behind the others")  //
        ("feature", po::value(&options.features)->value_name("NAME..."),
         "the features, in the order of the columns; may be given again")  //
        ("window-ms", po::value(&options.windowMs)->value_name("MS"),
         "length of a window in milliseconds (default 32)")  //
        ("overlap-ms", po::value(&options.overlapMs)->value_name("MS"),
         "what consecutive windows share, less than a window (default 16)")  //
        ("suppress-dc", po::bool_switch(&options.suppressDc),
         "subtract the mean of all windows of the file so far from each window")                  //
        ("format", po::value(&options.format)->value_name("FORMAT"), "csv (the default) or npy")  //
        ("output,o", po::value(&options.path)->value_name("PATH"),
         "write to this file, which appears only when it is complete, instead of standard output");
    addCommonOptions(description, options.log);
    return description;
}

void check(const FeaturesOptions& options, const FeatureNames& featureNames) {
    if (options.features.empty()) {
        throw UsageError("no feature given; name at least one with --feature");
    }
    for (const std::string& feature : options.features) {
        if (const auto problem = featureNames.problem(feature)) {
            throw UsageError(*problem);
        }
    }
    if (options.files.empty() && options.audioSet.empty()) {
        throw UsageError("no file given");
    }
    if (options.windowMs < 1 || options.windowMs > c_iMaxWindowMs) {
        throw UsageError("a window of " + std::to_string(options.windowMs) + " ms is refused; it must be 1 to " +
                         std::to_string(c_iMaxWindowMs) + " ms");
    }
    if (options.overlapMs < 0 || options.overlapMs >= options.windowMs) {
        throw UsageError("an overlap of " + std::to_string(options.overlapMs) + " ms is refused; it must be 0 to " +
                         std::to_string(options.windowMs - 1) + " ms, less than the window");
    }
    if (options.format != "csv" && options.format != "npy") {
        throw UsageError("unknown format '" + options.format + "'; the formats are csv and npy");
    }
    if (options.format == "npy" && options.path.empty()) {
        throw UsageError("--format npy needs --output PATH");
    }
}

void protectInputs(const FeaturesOptions& options) {
    std::vector<std::string> inputs = options.files;
    inputs.push_back(options.audioSet);
    refuseToOverwrite(inputs, options.path);
    if (options.format == "npy") {
        refuseToOverwrite(inputs, options.path + ".json");
    }
}

Audio::LinearAudioWindower::Config windowConfig(const FeaturesOptions& options) {
    Audio::LinearAudioWindower::Config config;
    config.m_uiWindowSizeMs = static_cast<std::uint64_t>(options.windowMs);
    config.m_uiWindowOverlapMs = static_cast<std::uint64_t>(options.overlapMs);
    config.m_bSuppressDCOffset = options.suppressDc;
    return config;
}

int run(const FeaturesOptions& options, bool isAllDone, Diagnostics& diagnostics, TableWriter& writer) {
    using Outcome = FeatureRun::Outcome;
    Progress progress(diagnostics, options.files, options.path.empty());
    FeatureRun featureRun(options.features, windowConfig(options), writer, diagnostics, progress);
    const auto outputFailed = [&] {
        diagnostics.error(writer.describeError());
        return SomeFailed;
    };
    for (const std::string& file : options.files) {
        diagnostics.beginInput(file);
        const Outcome outcome = Interrupt::requested() ? Outcome::Interrupted : featureRun.add(file);
        diagnostics.endInput();
        if (outcome == Outcome::Interrupted) {
            writer.abandon();
            diagnostics.error("interrupted");
            return Interrupted;
        }
        if (outcome == Outcome::OutputFailed) {
            return outputFailed();
        }
        isAllDone = isAllDone && outcome == Outcome::Done;
    }
    if (!featureRun.finish()) {
        return outputFailed();
    }
    return isAllDone ? AllDone : SomeFailed;
}

}  // namespace

int runFeatures(const std::vector<std::string>& arguments) {
    FeaturesOptions options;
    const po::options_description description = describe(options);
    const FeatureNames featureNames;
    const std::vector<std::string> expanded =
        expandFeatureArguments(arguments, [&](const std::string& name) { return featureNames.isKnown(name); });
    const po::variables_map values = parseArguments(expanded, description, options.files);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return AllDone;
    }
    check(options, featureNames);
    Diagnostics diagnostics(options.log);
    const bool isSetWhole = options.audioSet.empty() || appendAudioSet(options.audioSet, options.files, diagnostics);
    if (options.files.empty()) {
        diagnostics.error("no file to process");
        return SomeFailed;
    }
    protectInputs(options);
    const std::unique_ptr<TableWriter> writer =
        options.format == "npy" ? makeNpyWriter(options.path, windowConfig(options)) : makeCsvWriter(options.path);
    if (!writer->open()) {
        diagnostics.error(writer->describeError());
        return SomeFailed;
    }
    return run(options, isSetWhole, diagnostics, *writer);
}

}  // namespace Zantrix::Cli
