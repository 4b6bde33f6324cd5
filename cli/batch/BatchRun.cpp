#include "batch/BatchRun.h"

#include "shell/Interrupt.h"

#include <algorithm>
#include <utility>

namespace Zantrix::Cli {

namespace {

// What may wait for its turn, for each thread. Enough that threads seldom wait for each other; little enough that
// memory does not depend on how long one of many inputs is.
constexpr std::size_t c_uiInputsAhead = 16;
constexpr std::size_t c_uiBytesAhead = std::size_t(8) << 20;

}  // namespace

BatchRun::BatchRun(const InputNames& inputs, Crew& crew, FailureList& failures, Diagnostics& diagnostics,
                   Progress& progress)
    : m_inputs(inputs),
      m_crew(crew),
      m_uiThreads(static_cast<unsigned>(std::clamp<std::size_t>(inputs.size(), 1, crew.size()))),
      m_failures(failures),
      m_diagnostics(diagnostics),
      m_progress(progress),
      m_store(c_uiBytesAhead * m_uiThreads),
      m_turns(crew, inputs.size(), c_uiInputsAhead * m_uiThreads) {}

BatchRun::Result BatchRun::run(const std::function<std::unique_ptr<BatchWorker>()>& makeWorker) {
    const auto workAll = [&] {
        const std::unique_ptr<BatchWorker> pWorker = makeWorker();
        work(*pWorker);
    };
    const auto watch = [&] {
        m_progress.draw();
        if (Interrupt::requested()) {
            m_turns.stop();
        }
    };
    if (m_uiThreads == 1) {
        workAll();
    } else {
        m_crew.run(m_uiThreads, workAll, watch, [&] { m_turns.stop(); });
    }
    if (Interrupt::requested() && (m_bOutputFailed || m_turns.done() < m_inputs.size())) {
        return Result::Interrupted;
    }
    return m_bOutputFailed ? Result::OutputFailed : m_bAllDone ? Result::AllDone : Result::SomeFailed;
}

void BatchRun::work(BatchWorker& worker) {
    while (const auto input = m_turns.take()) {
        if (Interrupt::requested()) {
            m_turns.stop();
            return;
        }
        Turn turn(m_turns, m_store, *input);
        std::shared_ptr<Delivery> pDelivery = process(worker, *input, turn);
        // Before it is passed on: this thread may then finish other inputs, whose messages take the place of these.
        const auto pMessages = std::make_shared<InputMessages>(m_diagnostics.handOver());
        if (Interrupt::requested()) {
            m_turns.stop();
            return;
        }
        m_turns.pass(*input, [this, input = *input, pMessages, pDelivery = std::move(pDelivery)] {
            m_diagnostics.takeOver(std::move(*pMessages));
            finish(input, pDelivery.get());
        });
    }
}

std::unique_ptr<Delivery> BatchRun::process(BatchWorker& worker, std::size_t input, Turn& turn) {
    m_diagnostics.beginInput(m_inputs.teller(input));
    if (!turn.hasCome()) {
        m_diagnostics.hold();
    }
    const Progress::Input counted(m_progress);
    const std::optional<std::string> file = m_inputs.find(input, m_diagnostics);
    if (!file) {
        return nullptr;
    }
    m_diagnostics.renameInput(*file);
    m_progress.beginInput(*file, 0.0);
    if (const std::string* pWhy = m_inputs.refusal(input)) {
        m_diagnostics.error(*pWhy);
        return nullptr;
    }
    return worker.process(*file, turn);
}

void BatchRun::finish(std::size_t input, Delivery* pDelivery) {
    Outcome outcome = pDelivery == nullptr ? Outcome::InputFailed : pDelivery->deliver();
    m_bAllDone = m_bAllDone && outcome == Outcome::Done;
    if (outcome == Outcome::InputFailed) {
        const std::string& why = m_diagnostics.input().why;
        const std::string name = m_inputs.name(input);
        m_failures.add(name, why.empty() ? "not told at this log level" : why);
        outcome = onFailed && !onFailed(name) ? Outcome::OutputFailed : outcome;
    }
    if (outcome == Outcome::OutputFailed) {
        m_bOutputFailed = true;
        m_turns.stop();
    }
    m_diagnostics.endInput();
}

}  // namespace Zantrix::Cli
