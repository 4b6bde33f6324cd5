#include "Command.h"
#include "annotations/Actions.h"
#include "annotations/AnnotationTable.h"
#include "annotations/OwnWords.h"
#include "shell/AudioSet.h"
#include "shell/InputFile.h"
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
    "Examples:\n"
    "  murvane-audio annotations list calls/*.wav\n"
    "  murvane-audio annotations list --format json call.wav\n"
    "  murvane-audio annotations list --lenient markers.wav\n";

struct ListOptions {
    ReadOptions read;
    LogOptions log;
    std::string audioSet;
    std::string format = "text";
    std::string path;
    std::vector<std::string> files;
};

int list(const ListOptions& options, const ListFormat& format, bool isSetWhole, Diagnostics& diagnostics) {
    Output output;
    ToneKinds kinds;
    std::size_t told = 0;
    bool isOpen = output.open(options.path);
    for (const std::string& file : options.files) {
        if (Interrupt::requested() || !isOpen) {
            break;
        }
        Recording recording;
        diagnostics.beginInput(file);
        if (readRecording(file, options.read, diagnostics, recording)) {
            const std::string text = format.write(file, recording, kinds, told == 0);
            isOpen = output.write(text.data(), text.size());
            ++told;
        }
        diagnostics.endInput();
    }
    if (Interrupt::requested()) {
        output.abandon();
        diagnostics.error("interrupted");
        return Interrupted;
    }
    const std::string end = told == 0 ? format.endOfNone : format.end;
    const bool isWanted = told > 0 || options.path.empty();
    if (!isOpen || (isWanted && !(output.write(end.data(), end.size()) && output.commit()))) {
        diagnostics.error(output.describeError());
        return SomeFailed;
    }
    return isSetWhole && told == options.files.size() ? AllDone : SomeFailed;
}

}  // namespace

int runAnnotationsList(const std::vector<std::string>& arguments) {
    ListOptions options;
    po::options_description description("Options");
    description.add_options()  //
        ("audioset", po::value(&options.audioSet)->value_name("LIST"),
         "list the files that this list names, too, behind the others")                                  //
        ("format", po::value(&options.format)->value_name("FORMAT"), "text (the default), csv or json")  //
        ("output,o", po::value(&options.path)->value_name("PATH"),
         "write to this file, which appears only when it is complete, instead of standard output");
    addReadOptions(description, options.read);
    addCommonOptions(description, options.log);
    const po::variables_map values = parseArguments(arguments, description, options.files);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return AllDone;
    }
    const ListFormat& format = chooseListFormat(options.format);
    if (options.files.empty() && options.audioSet.empty()) {
        throw UsageError("no file given");
    }
    Diagnostics diagnostics(options.log);
    const OwnWords ownWords(options.log);
    const bool isSetWhole = options.audioSet.empty() || appendAudioSet(options.audioSet, options.files, diagnostics);
    refuseToOverwrite(options.files, options.path);
    return list(options, format, isSetWhole, diagnostics);
}

}  // namespace Zantrix::Cli
