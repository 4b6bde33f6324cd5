#include "Command.h"
#include "batch/BatchRun.h"
#include "evaluate/FileEvaluation.h"
#include "shell/Interrupt.h"

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

int run(const EvaluateOptions& options, const InputNames& inputs, Diagnostics& diagnostics, FailureList& failures) {
    using Result = BatchRun::Result;
    Progress progress(diagnostics, inputs, false);
    Crew crew(options.batch.threads());
    BatchRun batch(inputs, crew, failures, diagnostics, progress);
    const Result result = batch.run([&]() -> std::unique_ptr<BatchWorker> {
        return std::make_unique<EvaluationWorker>(options, diagnostics, progress);
    });
    if (result == Result::Interrupted) {
        diagnostics.error("interrupted");
        return Interrupted;
    }
    return inputs.unreadable().empty() && result == Result::AllDone ? AllDone : SomeFailed;
}

// Does the part of the inputs that is asked for.
int process(const EvaluateOptions& options, InputNames& inputs, Diagnostics& diagnostics, FailureList& failures) {
    for (const std::string& list : inputs.unreadable()) {
        failures.add(list, "cannot be read");
    }
    if (inputs.isEmpty()) {
        diagnostics.error(Interrupt::requested() ? "interrupted" : "no file to process");
        return Interrupt::requested() ? Interrupted : SomeFailed;
    }
    if (const auto& shard = options.batch.shard) {
        inputs.keep(shard->first(inputs.size()), shard->end(inputs.size()));
    }
    return run(options, inputs, diagnostics, failures);
}

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
    FailureList failures;
    if (!failures.open(options->batch.failures)) {
        diagnostics.error(failures.describeError());
        return SomeFailed;
    }
    const int exitCode = process(*options, inputs, diagnostics, failures);
    if (!failures.finish()) {
        diagnostics.error(failures.describeError());
        return exitCode == AllDone ? SomeFailed : exitCode;
    }
    return exitCode;
}

}  // namespace Zantrix::Cli
