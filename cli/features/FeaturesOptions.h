#pragma once

#include "batch/BatchOptions.h"
#include "features/Column.h"
#include "shell/Diagnostics.h"
#include "shell/InputNames.h"
#include "shell/Options.h"

#include <murvane/audio/input/AudioLinearWindower.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// What a run of 'murvane-audio features' is to do.
struct FeaturesOptions {
    InputArguments inputs;
    std::vector<Column> columns;
    std::int64_t windowMs = 32;
    std::int64_t overlapMs = 16;
    bool suppressDc = false;
    std::string format = "csv";
    std::string path;
    std::vector<std::string> computers;  ///< archives that features were taken from
    std::string config;                  ///< a file that gave what arguments did not; "" for none
    std::string saveConfig;              ///< a file to write; "" for none
    std::string saveComputer;            ///< the same
    BatchOptions batch;
    LogOptions log;
};

/// The options as arguments; what they hold goes to `options`, all but operands and columns.
boost::program_options::options_description describeOptions(FeaturesOptions& options);

/// The columns that arguments ask for, in their order; those of archived computers where these stand.
///
/// @throw UsageError  naming an archive that cannot be loaded, or has a feature that is not known
std::vector<Column> collectColumns(const std::vector<GivenOption>& given, const FeatureNames& featureNames);

/// Makes sure that tables can be written in a format.
///
/// @throw UsageError
void checkFormat(const std::string& format);

/// Makes sure that a run can be what the options say.
///
/// @throw UsageError for the first thing that is wrong
void checkOptions(const FeaturesOptions& options, const FeatureNames& featureNames);

/// Makes sure that no output replaces an input, of whatever kind, another output, or, where a manifest is to go, a file
/// that is none; after the audio set was read.
///
/// @throw UsageError  naming the file
void protectInputs(const FeaturesOptions& options, const InputNames& inputs);

/// Whether a manifest is written beside the output.
bool hasManifest(const FeaturesOptions& options);

/// How to cut windows; the sampling rate is that of each input.
Audio::LinearAudioWindower::Config windowConfig(const FeaturesOptions& options);

}  // namespace Zantrix::Cli
