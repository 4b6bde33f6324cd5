#include "Command.h"
#include "features/TableParts.h"
#include "shell/Diagnostics.h"
#include "shell/Interrupt.h"
#include "shell/Options.h"
#include "shell/Output.h"
#include "shell/OutputPlaces.h"

#include <optional>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio merge PART... --output PATH [OPTION]...\n"
    "Joins the parts of a table that 'murvane-audio features --shard' made.\n";

constexpr const char* c_szHelpRest =
    "PART is what --output said, with PART.json beside it. Parts may stand in any order; all of them must be there. "
    "The\n"
    "result is, to the byte, what one run over the whole list would have written; parts stay as they are. Parts of\n"
    "other lists, features, windows or formats, parts that overlap and parts whose rows were changed since are "
    "refused,\n"
    "and then no output appears.\n\n"
    "Examples:\n"
    "  murvane-audio merge part1.csv part2.csv --output calls.csv\n\n"
    "The parts come from\n"
    "  murvane-audio features --audioset calls.txt --feature MEAN --shard 1/2 --output part1.csv\n"
    "  murvane-audio features --audioset calls.txt --feature MEAN --shard 2/2 --output part2.csv\n";

void protectFiles(const std::vector<std::string>& parts, const std::string& path, const LogOptions& log) {
    OutputPlaces outputs;
    outputs.add(path);
    outputs.add(manifestPathOf(path));
    outputs.refuseToReplace(log.config);
    for (const std::string& part : parts) {
        outputs.refuseToReplace(part);
        outputs.refuseToReplace(manifestPathOf(part));
    }
    outputs.refuseToReplaceAudio();
}

bool write(const TableParts& parts, const std::string& path, Diagnostics& diagnostics) {
    const std::string manifestPath = manifestPathOf(path);
    Output table;
    std::optional<ManifestWriter> manifest;
    // A manifest that is there already would tell of another table.
    if (parts.whole().definition.format == "npy" || looksLikeManifest(manifestPath)) {
        refuseToReplaceOther(manifestPath);
        manifest.emplace(parts.whole().definition, parts.whole().inputs);
    }
    const bool isWritten = table.open(path) && (!manifest || manifest->open(manifestPath)) && parts.writeTable(table) &&
                           (!manifest || parts.writeManifest(*manifest));
    if (Interrupt::requested()) {
        diagnostics.error("interrupted");
        return false;
    }
    table.setTime(parts.time());
    if (isWritten && (manifest ? manifest->finish(parts.whole().rowCount, table.position()) &&
                                     commitTable(table, manifest->output(), path, manifestPath)
                               : table.commit())) {
        return true;
    }
    diagnostics.error(table.getError().empty() && manifest ? manifest->describeError() : table.describeError());
    return false;
}

}  // namespace

int runMerge(const std::vector<std::string>& arguments) {
    LogOptions log;
    std::string path;
    po::options_description options("Options");
    options.add_options()("output,o", po::value(&path)->value_name("PATH"),
                          "write to this file, which appears only when it is complete");
    addCommonOptions(options, log);
    std::vector<std::string> paths;
    const po::variables_map values = parseArguments(arguments, options, paths);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, options, c_szHelpRest);
        return AllDone;
    }
    if (paths.empty()) {
        throw UsageError("no part given");
    }
    if (path.empty()) {
        throw UsageError("merge needs --output PATH");
    }
    if (path == c_szStandardOutput) {
        throw UsageError("merge needs a file for its output; './-' is one called '-'");
    }
    protectFiles(paths, path, log);
    Diagnostics diagnostics(log);
    try {
        const TableParts parts(paths);
        if (!parts.whole().columns) {
            diagnostics.error("no input was done in any part: there is no table");
            return SomeFailed;
        }
        const bool isWritten = write(parts, path, diagnostics);
        return isWritten ? AllDone : Interrupt::requested() ? Interrupted : SomeFailed;
    } catch (const TableError& error) {
        diagnostics.error(error.what());
        return SomeFailed;
    }
}

}  // namespace Zantrix::Cli
