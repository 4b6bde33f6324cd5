#include "Command.h"
#include "annotations/Actions.h"
#include "annotations/AnnotationTable.h"
#include "shell/InputNames.h"
#include "shell/Interrupt.h"
#include "shell/Output.h"

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio annotations list FILE... [--audioset LIST] [OPTION]...\n"
    "Shows the annotations of mono WAV files.\n";

constexpr const char* c_szHelpRest =
    "Labels SF_440 tell a single frequency, AM_1000x50 a carrier and what modulates it. CSV and JSON give times that\n"
    "lead back to the same samples, and the samples: stop_sample is the first behind the annotation. A file that "
    "fails\n"
    "is told of, and the others are still listed.\n\n"
    "An audio set is a text file with the name of one file on each line, as 'murvane-audio info --help' tells.\n"
    "In place of a FILE, '-' takes such lines from standard input.\n\n"
    "Examples:\n"
    "  murvane-audio annotations list calls/*.wav\n"
    "  murvane-audio annotations list --format json call.wav\n"
    "  murvane-audio annotations list --lenient markers.wav\n";

struct ListOptions {
    ReadOptions read;
    LogOptions log;
    InputArguments inputs;
    std::string format = "text";
    std::string path;
};

int list(const ListOptions& options, const ListFormat& format, const InputNames& inputs, Diagnostics& diagnostics) {
    if (inputs.isEmpty() && !Interrupt::requested()) {
        diagnostics.error("no file to process");
        return SomeFailed;
    }
    Output output;
    ToneKinds kinds;
    bool isToldAny = false;
    output.open(options.path);
    const bool isAllDone = forEachFile(inputs, output, diagnostics, [&](const std::string& file) {
        Recording recording;
        if (!readRecording(file, options.read, diagnostics, recording)) {
            return false;
        }
        const std::string text = format.write(file, recording, kinds, !isToldAny);
        isToldAny = true;
        return output.write(text.data(), text.size());
    });
    if (Interrupt::requested()) {
        output.abandon();
        diagnostics.error("interrupted");
        return Interrupted;
    }
    const std::string end = isToldAny ? format.end : format.endOfNone;
    const bool isWanted = isToldAny || options.path.empty();
    if (!output.getError().empty() || (isWanted && !(output.write(end.data(), end.size()) && output.commit()))) {
        if (!Output::hasReaderGone()) {
            diagnostics.error(output.describeError());
        }
        return SomeFailed;
    }
    return isAllDone ? AllDone : SomeFailed;
}

}  // namespace

int runAnnotationsList(const std::vector<std::string>& arguments) {
    ListOptions options;
    po::options_description description("Options");
    addInputOptions(description, options.inputs);
    description.add_options()                                                                            //
        ("format", po::value(&options.format)->value_name("FORMAT"), "text (the default), csv or json")  //
        ("output,o", po::value(&options.path)->value_name("PATH"),
         "write to this file, which appears only when it is complete, instead of standard output");
    addReadOptions(description, options.read);
    addCommonOptions(description, options.log);
    const po::variables_map values = parseArguments(arguments, description, options.inputs.files);
    options.inputs.behindDashes = countBehindDashes(arguments);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return AllDone;
    }
    const ListFormat& format = chooseListFormat(options.format);
    if (options.inputs.isEmpty()) {
        throw UsageError("no file given");
    }
    Diagnostics diagnostics(options.log);
    InputNames inputs;
    const bool areListsRead = inputs.gather(options.inputs, diagnostics);
    inputs.refuseToOverwrite({options.path});
    const int exitCode = list(options, format, inputs, diagnostics);
    return exitCode == AllDone && !areListsRead ? SomeFailed : exitCode;
}

}  // namespace Zantrix::Cli
