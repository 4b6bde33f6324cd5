#include "batch/BatchOptions.h"

#include "Command.h"
#include "batch/Crew.h"
#include "shell/Output.h"

#include <string>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

// More threads than any machine has a use for; each takes some memory.
constexpr std::int64_t c_iMaxJobs = 1024;

void checkJobs(std::int64_t jobs) {
    if (jobs < 1 || jobs > c_iMaxJobs) {
        throw UsageError(std::to_string(jobs) + " jobs are refused; it must be 1 to " + std::to_string(c_iMaxJobs));
    }
}

void checkFailures(const std::string& path) {
    if (path == c_szStandardOutput) {
        throw UsageError("--failures needs a file; './-' is one called '-'");
    }
}

}  // namespace

unsigned BatchOptions::threads() const {
    return jobs == 0 ? Crew::processors() : static_cast<unsigned>(jobs);
}

void addBatchOptions(po::options_description& description, BatchOptions& options) {
    description.add_options()  //
        ("jobs,j", po::value(&options.jobs)->value_name("N")->notifier(&checkJobs),
         "use so many threads (default: one for each processor); the output is the same")  //
        ("failures", po::value(&options.failures)->value_name("FILE")->notifier(&checkFailures),
         "write a line for each input that failed: its name, a tab and why; an empty file when none did")  //
        ("shard", po::value<std::string>()->value_name("I/N")->notifier([&options](const std::string& text) {
            options.shard = parseShard(text);
        }),
         "work on the I-th of N parts of the inputs only, by their positions; each input is in one part")  //
        ("resume", po::bool_switch(&options.resume),
         "take over what the output holds already of inputs that are older than it");
}

}  // namespace Zantrix::Cli
