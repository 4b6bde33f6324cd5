#pragma once

#include "batch/Crew.h"
#include "batch/FailureList.h"
#include "batch/HeldBytes.h"
#include "batch/Turns.h"
#include "shell/Diagnostics.h"
#include "shell/InputNames.h"
#include "shell/Progress.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

/// Runs over many inputs: several at a time, with the same results, in the same order, as one after the other.
namespace Zantrix::Cli {

enum class Outcome { Done, InputFailed, OutputFailed };

/// What an input still has to do in its turn: write what it gave, above all. Runs once, on any thread.
class Delivery {
public:
    virtual ~Delivery() = default;
    virtual Outcome deliver() = 0;
};

/// An input's place in the order, for the thread that works on it.
class Turn {
public:
    Turn(Turns& turns, ByteStore& store, std::size_t input) : m_turns(turns), m_store(store), m_uiInput(input) {}

    /// Whether all inputs before this one are done, so that what it gives can go where it belongs.
    bool hasCome() const { return m_turns.hasCome(m_uiInput); }

    /// Waits for that; false when the run ends before, and nothing matters any more.
    bool await() { return m_turns.await(m_uiInput); }

    /// Where to keep what it gives until then. When there is no room left, only waiting helps.
    ByteStore& store() { return m_store; }

private:
    Turns& m_turns;
    ByteStore& m_store;
    std::size_t m_uiInput;
};

/// Works on inputs, one after the other. Each thread has one of its own; what they share is touched in turn only.
class BatchWorker {
public:
    virtual ~BatchWorker() = default;

    /// Does what can be done before the turn of the input has come, and all if it has. Messages go to the `Diagnostics`
    /// of the run. Should return soon once `Interrupt::requested()`; what it returns then is ignored.
    ///
    /// @return what remains for the turn; null for an input that failed and leaves nothing
    virtual std::unique_ptr<Delivery> process(const std::string& file, Turn& turn) = 0;
};

class BatchRun {
public:
    enum class Result { AllDone, SomeFailed, OutputFailed, Interrupted };

    BatchRun(const InputNames& inputs, Crew& crew, FailureList& failures, Diagnostics& diagnostics, Progress& progress);

    /// To be called in the turn of each input that failed, with its name; false tells that the output failed.
    std::function<bool(const std::string& name)> onFailed;

    /// Has all inputs done. With a crew of one, or one input, this thread does everything.
    ///
    /// @param makeWorker  called on each thread that works
    Result run(const std::function<std::unique_ptr<BatchWorker>()>& makeWorker);

private:
    void work(BatchWorker& worker);
    std::unique_ptr<Delivery> process(BatchWorker& worker, std::size_t input, Turn& turn);
    void finish(std::size_t input, Delivery* pDelivery);

    const InputNames& m_inputs;
    Crew& m_crew;
    unsigned m_uiThreads;
    FailureList& m_failures;  // in turn only
    Diagnostics& m_diagnostics;
    Progress& m_progress;
    ByteStore m_store;
    Turns m_turns;
    bool m_bAllDone = true;  // in turn only, like the next
    bool m_bOutputFailed = false;
};

}  // namespace Zantrix::Cli
