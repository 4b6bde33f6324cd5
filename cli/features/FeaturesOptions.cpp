#include "features/FeaturesOptions.h"

#include "Command.h"
#include "features/ComputerArchive.h"
#include "features/ManifestReader.h"
#include "shell/Output.h"
#include "shell/OutputPlaces.h"

#include <algorithm>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szFeature = "feature";
constexpr const char* c_szFormula = "expr";
constexpr const char* c_szComputer = "computer";

void checkWindow(const FeaturesOptions& options) {
    checkMilliseconds("window", options.windowMs, 1);
    if (options.overlapMs < 0 || options.overlapMs >= options.windowMs) {
        throw UsageError("an overlap of " + std::to_string(options.overlapMs) + " ms is refused; it must be 0 to " +
                         std::to_string(options.windowMs - 1) + " ms, less than the window");
    }
}

void checkOutputs(const FeaturesOptions& options) {
    checkFormat(options.format);
    if ((options.batch.shard || options.batch.resume) && options.path.empty() && !options.inputs.isEmpty()) {
        throw UsageError((options.batch.shard ? "--shard" : "--resume") + std::string(" needs --output PATH"));
    }
    if (options.format == "npy" && options.path.empty() && !options.inputs.isEmpty()) {
        throw UsageError("--format npy needs --output PATH");
    }
    const bool hasTable = options.path.empty() && !options.inputs.isEmpty();
    if (hasTable + (options.saveConfig == c_szStandardOutput) + (options.saveComputer == c_szStandardOutput) > 1) {
        throw UsageError("two outputs would go to standard output");
    }
    const bool hasFormula = std::any_of(options.columns.begin(), options.columns.end(),
                                        [](const Column& column) { return column.kind == Column::Kind::Formula; });
    if (!options.saveComputer.empty() && hasFormula) {
        throw UsageError("a feature computer holds no formulas: --save-computer goes with features only");
    }
}

}  // namespace

po::options_description describeOptions(FeaturesOptions& options) {
    po::options_description description("Options");
    addInputOptions(description, options.inputs);
    description.add_options()  //
        (c_szFeature, po::value<std::vector<std::string>>()->value_name("NAME..."),
         "features by name; may be given again")  //
        (c_szFormula, po::value<std::vector<std::string>>()->value_name("[NAME=]FORMULA"),
         "a formula of the window x, such as 'f0=harmonicProduct(spectrum(x))'; may be given again")  //
        (c_szComputer, po::value(&options.computers)->value_name("ARCHIVE"),
         "the features of an archived feature computer (text, binary or XML); columns are in the order of all these")  //
        ("window-ms", po::value(&options.windowMs)->value_name("MS"),
         "length of a window in milliseconds (default 32)")  //
        ("overlap-ms", po::value(&options.overlapMs)->value_name("MS"),
         "what consecutive windows share, less than a window (default 16)")  //
        ("suppress-dc", po::value(&options.suppressDc)->implicit_value(true, "yes")->value_name("yes|no"),
         "subtract the mean of all windows of the file so far from each window")                  //
        ("format", po::value(&options.format)->value_name("FORMAT"), "csv (the default) or npy")  //
        ("output,o", po::value(&options.path)->value_name("PATH"),
         "write to this file, which appears only when it is complete, instead of standard output (which is also "
         "'-')")  //
        ("config", po::value(&options.config)->value_name("FILE"),
         "take window, format and columns from a file as --save-config writes it; what other options say holds "
         "instead, and with any of --feature, --expr and --computer the file's columns do not count")  //
        ("save-config", po::value(&options.saveConfig)->value_name("FILE"),
         "write the window, the format and the columns to a file for --config; no FILE to analyse is needed then")  //
        ("save-computer", po::value(&options.saveComputer)->value_name("ARCHIVE"),
         "write an XML archive of a feature computer of the features; no FILE to analyse is needed then");
    addBatchOptions(description, options.batch);
    addCommonOptions(description, options.log);
    return description;
}

void checkFormat(const std::string& format) {
    if (format != "csv" && format != "npy") {
        throw UsageError("unknown format '" + format + "'; the formats are csv and npy");
    }
}

std::vector<Column> collectColumns(const std::vector<GivenOption>& given, const FeatureNames& featureNames) {
    std::vector<Column> columns;
    for (const GivenOption& option : given) {
        if (option.name == c_szFeature) {
            columns.push_back(makeFeatureColumn(option.value));
        } else if (option.name == c_szFormula) {
            columns.push_back(makeFormulaColumn(option.value));
        } else if (option.name == c_szComputer) {
            for (const std::string& feature : loadComputer(option.value)) {
                if (const auto problem = featureNames.problem(feature)) {
                    throw UsageError(option.value + ": " + *problem);
                }
                columns.push_back(makeFeatureColumn(feature));
            }
        }
    }
    return columns;
}

void checkOptions(const FeaturesOptions& options, const FeatureNames& featureNames) {
    if (options.columns.empty()) {
        throw UsageError("no feature given; name at least one with --feature, or write a formula with --expr");
    }
    checkColumns(options.columns, featureNames);
    if (options.inputs.isEmpty() && options.saveConfig.empty() && options.saveComputer.empty()) {
        throw UsageError("no file given");
    }
    checkWindow(options);
    checkOutputs(options);
}

void protectInputs(const FeaturesOptions& options, const InputNames& inputs) {
    OutputPlaces outputs;
    for (const std::string* pPath : {&options.path, &options.saveComputer, &options.batch.failures}) {
        outputs.add(*pPath);
    }
    if (hasManifest(options)) {
        outputs.add(manifestPathOf(options.path));
    }
    outputs.refuseToReplace(options.config);
    outputs.add(options.saveConfig);  // may well be the one that was read, brought up to date
    outputs.refuseToReplace(options.log.config);
    std::for_each(options.computers.begin(), options.computers.end(),
                  [&](const std::string& archive) { outputs.refuseToReplace(archive); });
    inputs.refuseToOverwrite(outputs);
    if (hasManifest(options)) {
        refuseToReplaceOther(manifestPathOf(options.path));
    }
}

bool hasManifest(const FeaturesOptions& options) {
    // A manifest that is there already would tell of another table.
    return !options.path.empty() && (options.format == "npy" || options.batch.shard || options.batch.resume ||
                                     looksLikeManifest(manifestPathOf(options.path)));
}

Audio::LinearAudioWindower::Config windowConfig(const FeaturesOptions& options) {
    Audio::LinearAudioWindower::Config config;
    config.m_uiWindowSizeMs = static_cast<std::uint64_t>(options.windowMs);
    config.m_uiWindowOverlapMs = static_cast<std::uint64_t>(options.overlapMs);
    config.m_bSuppressDCOffset = options.suppressDc;
    return config;
}

}  // namespace Zantrix::Cli
