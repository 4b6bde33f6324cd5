#pragma once

#include "batch/Shard.h"

#include <boost/program_options/options_description.hpp>

#include <cstdint>
#include <optional>
#include <string>

/// What all subcommands that run over many inputs can be told.
namespace Zantrix::Cli {

struct BatchOptions {
    std::int64_t jobs = 0;  ///< how many threads work; 0: as many as there are processors

    std::string failures;        ///< a file to write; "" for none
    std::optional<Shard> shard;  ///< the part of the inputs to work on; all without
    bool resume = false;         ///< what is there already is taken over

    /// The number of threads.
    unsigned threads() const;
};

/// Adds --jobs, --failures, --shard and --resume. Wrong values throw `UsageError` when they are parsed.
void addBatchOptions(boost::program_options::options_description& description, BatchOptions& options);

}  // namespace Zantrix::Cli
