#include "Command.h"
#include "shell/Diagnostics.h"
#include "shell/Interrupt.h"
#include "shell/Output.h"

#include <log4cplus/initializer.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <iostream>
#include <iterator>

namespace {

using namespace Zantrix::Cli;

struct Subcommand {
    const char* name;
    const char* summary;
    int (*run)(const std::vector<std::string>& arguments);
};

constexpr Subcommand c_subcommands[] = {
    {"annotations", "keep labelled intervals inside WAV files; import and export them", runAnnotations},
    {"features", "compute features of every window of audio files, as CSV or NPY", runFeatures},
    {"evaluate", "write curves, decisions and annotations of formulas beside the audio of WAV files", runEvaluate},
    {"info", "tell format, rate, duration and clipping of audio files", runInfo},
    {"list", "list the features and the functions of formulas, or explain one", runList},
    {"merge", "join the parts of a table that features --shard made", runMerge},
};

const Subcommand* findSubcommand(const std::string& name) {
    const auto* found = std::find_if(std::begin(c_subcommands), std::end(c_subcommands),
                                     [&](const Subcommand& subcommand) { return name == subcommand.name; });
    return found == std::end(c_subcommands) ? nullptr : found;
}

void printUsage(std::ostream& os) {
    os << "Usage: murvane-audio SUBCOMMAND [OPTION]... [FILE]...\n"
          "Analysis of mono telephone audio.\n\n"
          "Subcommands:\n";
    for (const Subcommand& subcommand : c_subcommands) {
        os << "  " << subcommand.name << std::string(13 - std::string(subcommand.name).size(), ' ')
           << subcommand.summary << '\n';
    }
    os << "\n"
          "  murvane-audio SUBCOMMAND --help   tells all about one of them\n"
          "  murvane-audio --version           prints the version\n\n"
          "Results go to standard output, messages to standard error. The exit code is 0 when all was done, 1 when\n"
          "some input failed (every other one was still done), 2 for wrong usage, 130 when interrupted, 141 when "
          "nobody\n"
          "reads standard output to its end.\n";
}

int run(std::vector<std::string> arguments) {
    if (arguments.empty()) {
        printUsage(std::cerr);
        return WrongUsage;
    }
    const std::string first = arguments.front();
    arguments.erase(arguments.begin());
    if (first == "--version") {
        std::cout << "murvane-audio " << MURVANE_VERSION << std::endl;
        return AllDone;
    }
    if (first == "--help" || first == "-h" || (first == "help" && arguments.empty())) {
        printUsage(std::cout);
        return AllDone;
    }
    const std::string name = first == "help" ? arguments.front() : first;
    const Subcommand* subcommand = findSubcommand(name);
    if (subcommand == nullptr) {
        std::cerr << "murvane-audio: unknown " << (name.rfind('-', 0) == 0 ? "option" : "subcommand") << " '" << name
                  << "'\nTry 'murvane-audio --help'.\n";
        return WrongUsage;
    }
    if (first == "help") {
        arguments = {"--help"};
    }
    try {
        return subcommand->run(arguments);
    } catch (const UsageError& error) {
        return tellWrongUsage(error, name);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const log4cplus::Initializer initializer;
    Diagnostics::begin();
    Interrupt::install();
    try {
        const int exitCode = run(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
        if (Output::hasReaderGone() && exitCode != Interrupted) {
            return ReaderGone;
        }
        if (exitCode != AllDone || std::cout.flush()) {
            return exitCode;
        }
        // Help, or a list.
        if (errno == EPIPE) {
            return ReaderGone;
        }
        std::cerr << "murvane-audio: cannot write standard output\n";
    } catch (const std::bad_alloc&) {
        std::cerr << "murvane-audio: not enough memory\n";
    } catch (const std::exception& exception) {
        std::cerr << "murvane-audio: " << exception.what() << '\n';
    }
    return SomeFailed;
}
