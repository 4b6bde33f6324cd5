#include "batch/Crew.h"

#include "batch/Arenas.h"
#include "shell/Interrupt.h"

#include <algorithm>
#include <chrono>
#include <oneapi/tbb/info.h>
#include <utility>

namespace Zantrix::Cli {

namespace {

constexpr std::chrono::milliseconds c_watchInterval(100);

}  // namespace

Crew::Crew(unsigned size) : m_uiSize(std::max(size, 1U)), m_uiSpare(m_uiSize - 1) {}

Crew::~Crew() {
    std::unique_lock lock(m_mutex);
    m_bOver = true;
    m_changed.notify_all();
    m_ended.wait(lock, [this] { return m_uiThreads == 0; });
}

unsigned Crew::processors() {
    return static_cast<unsigned>(std::max(1, tbb::info::default_concurrency()));
}

void Crew::run(unsigned count, const std::function<void()>& work, const std::function<void()>& watch,
               const std::function<void()>& onThrow) {
    count = std::clamp(count, 1U, m_uiSize);
    m_uiSpare = m_uiSize - count;
    {
        const std::lock_guard lock(m_mutex);
        m_uiWorkers = count;
    }
    start(count, [&] { runWorker(work, onThrow); });
    watch();
    std::unique_lock lock(m_mutex);
    while (!m_ended.wait_for(lock, c_watchInterval, [this] { return m_uiWorkers == 0; })) {
        if (Interrupt::requested()) {
            std::for_each(m_workers.begin(), m_workers.end(), Interrupt::wake);
        }
        lock.unlock();
        watch();
        lock.lock();
    }
    if (m_pThrown) {
        std::rethrow_exception(m_pThrown);
    }
}

// One of `m_uiWorkers` threads.
void Crew::runWorker(const std::function<void()>& work, const std::function<void()>& onThrow) {
    {
        const std::lock_guard lock(m_mutex);
        m_workers.push_back(::pthread_self());
    }
    try {
        work();
    } catch (...) {
        {
            const std::lock_guard lock(m_mutex);
            if (!m_pThrown) {
                m_pThrown = std::current_exception();
            }
        }
        onThrow();
    }
    {
        const std::lock_guard lock(m_mutex);
        m_workers.erase(std::find(m_workers.begin(), m_workers.end(), ::pthread_self()));
        if (--m_uiWorkers == 0) {
            m_ended.notify_all();
            m_changed.notify_all();
        }
    }
    wait([this] { return m_uiWorkers == 0; });
}

void Crew::wait(const std::function<bool()>& isOver) {
    std::unique_lock lock(m_mutex);
    ++m_uiIdle;
    while (!isOver()) {
        if (m_offers.empty()) {
            m_changed.wait(lock);
            continue;
        }
        const std::shared_ptr<SharedWork> pWork = std::move(m_offers.front());
        m_offers.pop_front();
        --m_uiIdle;
        lock.unlock();
        pWork->doPart();
        lock.lock();
        ++m_uiIdle;
    }
    --m_uiIdle;
}

void Crew::wakeAll() {
    // Under the lock, lest a thread has just looked and goes to sleep.
    const std::lock_guard lock(m_mutex);
    m_changed.notify_all();
}

void Crew::offer(const std::shared_ptr<SharedWork>& pWork) {
    if (const unsigned spare = m_uiSpare.exchange(0); spare > 0) {
        start(spare, [this] { wait([this] { return m_bOver; }); });
    }
    {
        const std::lock_guard lock(m_mutex);
        if (m_offers.size() >= m_uiSize) {
            return;  // by threads that have found other work since
        }
        m_offers.push_back(pWork);
    }
    m_changed.notify_one();
}

void Crew::start(unsigned count, const std::function<void()>& work) {
    {
        const std::lock_guard lock(m_mutex);
        m_uiThreads += count;
        m_toStart.insert(m_toStart.end(), count, work);
        if (!m_pArenas) {
            m_pArenas = std::make_unique<Arenas>(m_uiSize);
        }
    }
    const Interrupt::Shield shield;
    m_pArenas->start(count, *this);
}

void Crew::runThread() {
    std::unique_lock lock(m_mutex);
    const std::function<void()> work = std::move(m_toStart.front());
    m_toStart.pop_front();
    lock.unlock();
    work();
    lock.lock();
    --m_uiThreads;
    m_ended.notify_all();
}

}  // namespace Zantrix::Cli
