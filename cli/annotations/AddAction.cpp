#include "Command.h"
#include "annotations/Actions.h"
#include "shell/Text.h"

#include <cmath>
#include <cstdint>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio annotations add FILE --label LABEL --start SECONDS --stop SECONDS [OPTION]...\n"
    "Adds one annotation behind those that the file has.\n";

constexpr const char* c_szHelpRest =
    "Start and stop are rounded to samples of the file. An annotation that starts beyond the end of the audio is\n"
    "refused; one that ends there is cut off, with a warning.\n\n"
    "Examples:\n"
    "  murvane-audio annotations add call.wav --label SF_440 --start 0.5 --stop 1.0\n"
    "  murvane-audio annotations add call.wav --label AM_1000x50 --start-sample 16000 --stop-sample 20000\n";

void addEndOptions(po::options_description& description, const std::string& name) {
    const std::string text = "its " + name + ", in seconds";
    description.add_options()  //
        (name.c_str(), po::value<double>()->value_name("SECONDS"), text.c_str())(
            (name + "-sample").c_str(), po::value<std::int64_t>()->value_name("SAMPLE"), "the same, in samples");
}

/// One end of the annotation, given one way or the other.
struct End {
    End(const po::variables_map& values, const std::string& name) : isSample(values.count(name + "-sample") != 0) {
        const bool isTime = values.count(name) != 0;
        if (isSample == isTime) {
            throw UsageError(isTime ? "--" + name + " and --" + name + "-sample are the same; only one can be given"
                                    : "either --" + name + " or --" + name + "-sample is needed");
        }
        value = isSample ? static_cast<double>(values[name + "-sample"].as<std::int64_t>()) : values[name].as<double>();
        if (!std::isfinite(value) || value < 0.0) {
            throw UsageError("the " + name + ' ' + shortest(value) + " is no time; times are 0 or more");
        }
    }

    double time(std::uint32_t rate) const { return isSample ? value / rate : value; }

    bool isSample;
    double value;
};

}  // namespace

int runAnnotationsAdd(const std::vector<std::string>& arguments) {
    EditOptions options;
    std::string label;
    po::options_description description("Options");
    description.add_options()("label", po::value(&label)->value_name("LABEL"), "what it is called");
    addEndOptions(description, "start");
    addEndOptions(description, "stop");
    addEditOptions(description, options);
    std::vector<std::string> files;
    const po::variables_map values = parseArguments(arguments, description, files);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return AllDone;
    }
    demandOperands(files, 1, "FILE");
    if (values.count("label") == 0) {
        throw UsageError("--label is needed");
    }
    const End start(values, "start");
    const End stop(values, "stop");
    if (start.isSample == stop.isSample && start.value > stop.value) {
        throw UsageError("the start " + shortest(start.value) + " is after the stop " + shortest(stop.value));
    }
    Diagnostics diagnostics(options.log);
    return editFile(files.front(), options, diagnostics, [&](AnnotationEdit& edit) {
        return edit.append({{label, start.time(edit.rate()), stop.time(edit.rate())}}, "");
    });
}

}  // namespace Zantrix::Cli
