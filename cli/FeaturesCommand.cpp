#include "Command.h"
#include "batch/BatchCommand.h"
#include "features/ComputerArchive.h"
#include "features/FeatureArguments.h"
#include "features/FeatureNames.h"
#include "features/FeatureTable.h"
#include "features/FeatureWorker.h"
#include "features/FeaturesConfig.h"
#include "features/FeaturesOptions.h"
#include "shell/InputNames.h"
#include "shell/Output.h"
#include "shell/SmallFile.h"

#include <memory>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio features FILE... [--audioset LIST] {--feature NAME | --expr FORMULA}... [OPTION]...\n"
    "Cuts mono audio files into windows and computes features and formulas of each.\n";

constexpr const char* c_szHelpNames =
    "After --feature, arguments are feature names as long as they can be: the first that is no known name but an\n"
    "existing file, or has a '.' or '/', is a FILE, and so are those behind it. Write ./NAME for a file called like\n"
    "a feature. All arguments behind '--' are files. 'murvane-audio list' names the features.\n\n";

constexpr const char* c_szHelpRest =
    "A formula is made of numbers, x (the window), + - * / and ( ), element by element, and of functions, which\n"
    "'murvane-audio list' names. Its column is called NAME, or by the text of the formula.\n\n"
    "CSV has the columns file, time (the end of the window, in seconds) and one for each value: NAME for a feature\n"
    "of one value, else NAME[0], NAME[1] ... Numbers are the shortest that give back the same double; missing ones\n"
    "are nan. NPY is one matrix of float64, a row for each window, with the columns, the window and the first row of\n"
    "each input in PATH.json; the time of a row is that of the row before plus (window - overlap) / 1000. Names in\n"
    "it that are not UTF-8 have U+FFFD in place of each wrong byte, and all bytes in \"name_bytes_hex\".\n\n"
    "Windows are cut at each file's own rate; a rate other than 8000 Hz draws a warning. A file that fails is told\n"
    "of, leaves no rows, and the others are still done. A file of less than a window gives no rows.\n"
    "Several files are worked on at a time; rows and messages come in the order of the files, and the output is the\n"
    "same, whatever --jobs says. Only where output cannot be taken back, as in a pipe, do rows of a file that fails\n"
    "stand, if there are more than 256 KB of them.\n\n"
    "With --shard I/N the I-th of N runs of the list of all inputs is done, and PATH.json beside the output tells of\n"
    "each. 'murvane-audio merge' joins all N outputs to what one run would have written.\n"
    "With --resume, PATH.json is written, too, and rows in PATH of inputs that were not modified since the run that\n"
    "wrote it are not computed again; the result is that of a fresh run. When it would be the same, PATH stays.\n\n"
    "Examples:\n"
    "  murvane-audio features call.wav --feature SPECTRUM100HZ\n"
    "  murvane-audio features *.wav --feature FLATNESS_SPECTRUM ZEROCROSSINGRATE --output calls.csv\n"
    "  murvane-audio features --audioset calls.txt --feature MEAN --resume --output calls.csv\n"
    "  find calls -name '*.wav' | murvane-audio features - --feature MEAN --output calls.csv --failures failed.txt\n"
    "  murvane-audio features call.wav --feature MEAN --expr 'busy=spectralRange(spectrum(x), frequencyHz=480, "
    "widthHz=20)'\n"
    "  murvane-audio features --feature MEAN FLATNESS_SPECTRUM --window-ms 64 --save-config call.conf\n"
    "  murvane-audio features call.wav --config call.conf\n"
    "  murvane-audio features --feature 'MAXSPECTRALRANGES(350,440)_SPECTRUM' --format npy -o tones.npy -- *.wav\n";

TableTarget targetOf(const FeaturesOptions& options, const ListIdentity& list) {
    TableTarget target;
    target.path = options.path;
    target.definition = {options.format, options.columns, static_cast<std::uint64_t>(options.windowMs),
                         static_cast<std::uint64_t>(options.overlapMs), options.suppressDc};
    target.inputs = {list, options.batch.shard};
    target.hasManifest = hasManifest(options);
    return target;
}

// What comes of all inputs.
BatchRun::Result fill(TableWriter& writer, const PreviousTable* pPrevious, const FeaturesOptions& options,
                      Diagnostics& diagnostics, BatchRun& run, Crew& crew, Progress& progress) {
    FeatureTable table(writer);
    run.onFailed = [&](const std::string& name) { return table.addFailed(name); };
    BatchRun::Result result = run.run([&] {
        return std::make_unique<FeatureWorker>(options.columns, windowConfig(options), table, pPrevious,
                                               options.format == "npy" ? makeNpyEncoder() : makeCsvEncoder(crew),
                                               diagnostics, progress);
    });
    if (result == BatchRun::Result::Interrupted) {
        writer.abandon();
    } else if (result == BatchRun::Result::OutputFailed || !table.finish()) {
        if (!Output::hasReaderGone()) {
            diagnostics.error(writer.describeError());
        }
        result = BatchRun::Result::OutputFailed;
    } else {
        for (const std::string& oddity : table.oddities()) {
            diagnostics.warning(oddity);
        }
    }
    return result;
}

BatchRun::Result run(const FeaturesOptions& options, const TableTarget& target, Diagnostics& diagnostics, BatchRun& run,
                     Crew& crew, Progress& progress) {
    const std::unique_ptr<PreviousTable> pPrevious =
        options.batch.resume ? PreviousTable::open(target, diagnostics) : nullptr;
    TableWriter writer(target, pPrevious.get());
    if (!writer.open()) {
        diagnostics.error(writer.describeError());
        return BatchRun::Result::OutputFailed;
    }
    try {
        return fill(writer, pPrevious.get(), options, diagnostics, run, crew, progress);
    } catch (const TableError& error) {
        diagnostics.error(error.what());
        return BatchRun::Result::OutputFailed;
    }
}

// Writes the files that say what is done.
bool save(const FeaturesOptions& options, Diagnostics& diagnostics) {
    std::string error;
    if (!options.saveConfig.empty()) {
        error = writeSmallFile(options.saveConfig, writeConfig(options));
    }
    if (error.empty() && !options.saveComputer.empty()) {
        std::vector<std::string> features;
        for (const Column& column : options.columns) {
            features.push_back(column.text);
        }
        error = writeSmallFile(options.saveComputer, archiveComputer(features));
    }
    if (!error.empty() && !Output::hasReaderGone()) {
        diagnostics.error(error);
    }
    return error.empty();
}

}  // namespace

int runFeatures(const std::vector<std::string>& arguments) {
    FeaturesOptions options;
    const po::options_description description = describeOptions(options);
    const FeatureNames featureNames;
    const std::vector<std::string> expanded =
        expandFeatureArguments(arguments, [&](const std::string& name) { return featureNames.isKnown(name); });
    std::vector<GivenOption> given;
    const po::variables_map values = parseArguments(expanded, description, options.inputs.files, &given);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, std::string(c_szHelpNames) + c_szInputsHelp + c_szHelpRest);
        return AllDone;
    }
    options.inputs.behindDashes = countBehindDashes(expanded);
    if (values.count("config") != 0) {
        readConfig(options.config, featureNames, options);
        // Once more: what arguments say holds.
        parseArguments(expanded, description, options.inputs.files);
    }
    if (std::vector<Column> columns = collectColumns(given, featureNames); !columns.empty()) {
        options.columns = std::move(columns);
    }
    if (options.path == c_szStandardOutput) {
        options.path.clear();
    }
    checkOptions(options, featureNames);
    Diagnostics diagnostics(options.log);
    InputNames inputs;
    inputs.gather(options.inputs, diagnostics);
    protectInputs(options, inputs);
    if (!save(options, diagnostics)) {
        return SomeFailed;
    }
    if (options.inputs.isEmpty()) {
        return AllDone;
    }
    const TableTarget target = targetOf(options, inputs.identity());
    return runBatch(options.batch, inputs, diagnostics, options.path.empty(),
                    [&](BatchRun& batch, Crew& crew, Progress& progress) {
                        return run(options, target, diagnostics, batch, crew, progress);
                    });
}

}  // namespace Zantrix::Cli
