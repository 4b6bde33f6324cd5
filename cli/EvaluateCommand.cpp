#include "Command.h"
#include "batch/BatchCommand.h"
#include "evaluate/FileEvaluation.h"

#include <memory>
#include <optional>

namespace Zantrix::Cli {

namespace {

// Every input has outputs of its own, so that nothing is left to do in turn.
class NothingLeft : public Delivery {
public:
    Outcome deliver() override { return Outcome::Done; }
};

class EvaluationWorker : public BatchWorker {
public:
    EvaluationWorker(const EvaluateOptions& options, Diagnostics& diagnostics, Progress& progress)
        : m_evaluation(options, diagnostics, progress) {}

    std::unique_ptr<Delivery> process(const std::string& file, Turn&) override {
        return m_evaluation.process(file) ? std::make_unique<NothingLeft>() : nullptr;
    }

private:
    FileEvaluation m_evaluation;
};

}  // namespace

int runEvaluate(const std::vector<std::string>& arguments) {
    const std::optional<EvaluateOptions> options = parseEvaluateOptions(arguments);
    if (!options) {
        return AllDone;
    }
    Diagnostics diagnostics(options->log);
    InputNames inputs;
    inputs.gather(options->inputs, diagnostics);
    protectFiles(*options, inputs);
    return runBatch(options->batch, inputs, diagnostics, false, [&](BatchRun& run, Crew&, Progress& progress) {
        return run.run([&] { return std::make_unique<EvaluationWorker>(*options, diagnostics, progress); });
    });
}

}  // namespace Zantrix::Cli
