#include "features/InputRows.h"

#include <utility>

namespace Zantrix::Cli {

namespace {

// How much waits where nothing can be withdrawn: not more than what a reader of a live stream would wait for.
constexpr std::size_t c_uiMaxWithheld = std::size_t(256) * 1024;

}  // namespace

InputRows::InputRows(Turn& turn, FeatureTable& table, Diagnostics& diagnostics, TableInput input)
    : m_turn(turn), m_table(table), m_diagnostics(diagnostics), m_input(std::move(input)), m_held(turn.store()) {}

bool InputRows::start(double firstTime) {
    m_input.firstTime = firstTime;
    m_bHasRows = true;
    m_beforeRows = m_diagnostics.input();
    return !m_turn.hasCome() || settle();
}

bool InputRows::take(std::string_view bytes, std::size_t rows) {
    if (m_table.wantsDigests()) {
        m_digest.add(bytes);  // here and not in turn: threads do it at the same time
    }
    if (m_eState == State::Holding) {
        if (!m_turn.hasCome()) {
            if (m_held.append(bytes)) {
                m_uiHeldRows += rows;
                return true;
            }
            if (!m_turn.await()) {
                return false;
            }
        }
        if (!settle()) {
            return false;
        }
        if (!m_table.canDrop() && m_held.size() + bytes.size() <= c_uiMaxWithheld) {
            m_uiHeldRows += rows;
            return m_held.append(bytes, true);
        }
        pass();
    }
    if (m_eState == State::Passing && !m_table.addRows(m_input, bytes, rows)) {
        m_eState = State::OutputFailed;
    }
    return m_eState == State::Passing;
}

bool InputRows::settle() {
    if (m_bHasRows && !m_bSettled) {
        if (const auto misfit = m_table.misfit(m_input)) {
            m_eState = State::Misfit;
            m_diagnostics.rewind(m_beforeRows);
            m_diagnostics.error(*misfit);
            return false;
        }
    }
    m_bSettled = true;
    m_diagnostics.release();
    return true;
}

// In turn: from now on rows go on to the table.
void InputRows::pass() {
    const auto write = [this](std::string_view bytes) {
        return m_table.addRows(m_input, bytes, std::exchange(m_uiHeldRows, 0));
    };
    m_eState = m_table.beginInput(m_input) && m_held.writeTo(write) ? State::Passing : State::OutputFailed;
    m_held.clear();
}

Outcome InputRows::deliver() {
    if (m_eState == State::Holding && !settle()) {
        return Outcome::InputFailed;
    }
    if (m_eState == State::Holding && (m_bDone || (!m_table.canDrop() && m_held.size() > c_uiMaxWithheld))) {
        pass();
    }
    if (m_eState == State::OutputFailed) {
        return Outcome::OutputFailed;
    }
    if (m_bDone && m_eState == State::Passing) {
        m_input.digest = m_digest.value();
        return m_table.endInput(m_input) ? Outcome::Done : Outcome::OutputFailed;
    }
    if (m_eState == State::Passing && !(m_table.canDrop() && m_table.dropInput())) {
        m_diagnostics.error("rows that it gave before stand in the output");
    }
    return Outcome::InputFailed;
}

}  // namespace Zantrix::Cli
