#include "batch/Turns.h"

#include <utility>

namespace Zantrix::Cli {

Turns::Turns(Crew& crew, std::size_t inputs, std::size_t ahead) : m_crew(crew), m_uiInputs(inputs), m_uiAhead(ahead) {}

std::optional<std::size_t> Turns::take() {
    std::optional<std::size_t> taken;
    const auto tryToTake = [&] {
        if (m_bStopped || m_uiNext == m_uiInputs) {
            return true;
        }
        if (m_uiNext - m_uiCurrent >= m_uiAhead) {
            return false;
        }
        taken = m_uiNext++;
        return true;
    };
    m_crew.wait(tryToTake);
    return taken;
}

bool Turns::await(std::size_t input) {
    m_crew.wait([&] { return m_bStopped || hasCome(input); });
    return !m_bStopped;
}

void Turns::pass(std::size_t input, std::function<void()> finish) {
    {
        const std::lock_guard lock(m_mutex);
        if (!hasCome(input)) {
            m_waiting[input] = std::move(finish);
            return;
        }
    }
    while (finish && !m_bStopped) {
        finish();
        finish = nullptr;
        const std::lock_guard lock(m_mutex);
        m_uiCurrent.fetch_add(1, std::memory_order_acq_rel);
        if (const auto found = m_waiting.find(m_uiCurrent); found != m_waiting.end()) {
            finish = std::move(found->second);
            m_waiting.erase(found);
        }
    }
    m_crew.wakeAll();
}

void Turns::stop() {
    m_bStopped = true;
    m_crew.wakeAll();
}

}  // namespace Zantrix::Cli
