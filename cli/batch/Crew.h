#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <vector>

namespace Zantrix::Cli {

class Arenas;

/// Work that falls into parts, any of which a thread without other work can do.
class SharedWork {
public:
    virtual ~SharedWork() = default;

    /// Does one part; nothing when none is left. Must not throw: the thread has other work of its own.
    virtual void doPart() = 0;
};

/// The threads of a run. No more than their number work at any time, whatever at: those that wait for something, or
/// have nothing to do any more, help the others.
///
/// The thread that makes the object is one of them unless it is in `run`. Threads start only when there is work.
class Crew {
public:
    explicit Crew(unsigned size);

    /// Waits for all threads to end.
    ~Crew();

    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    unsigned size() const { return m_uiSize; }

    /// Works once. Has `count` threads do `work`, each all of it, and meanwhile calls `watch` on this thread, at once
    /// and ten times a second. What `work` throws first is thrown here; `onThrow` is called at once, so that the others
    /// end, too.
    void run(unsigned count, const std::function<void()>& work, const std::function<void()>& watch,
             const std::function<void()>& onThrow);

    /// Waits, and helps meanwhile.
    ///
    /// @param isOver  called under a lock of the crew's, so that no two of them run at a time, and again after each
    ///                `wakeAll`
    void wait(const std::function<bool()>& isOver);

    /// To be called when what others wait for may have come.
    void wakeAll();

    /// How many threads would help at this moment.
    unsigned helpers() const { return m_uiSpare + m_uiIdle; }

    /// Lets a thread that has nothing to do, if any, do a part of this work.
    void offer(const std::shared_ptr<SharedWork>& pWork);

    /// As many threads as this process may use at once.
    static unsigned processors();

    /// For a thread that was started: does what it was started for.
    void runThread();

private:
    void start(unsigned count, const std::function<void()>& work);
    void runWorker(const std::function<void()>& work, const std::function<void()>& onThrow);

    const unsigned m_uiSize;
    std::unique_ptr<Arenas> m_pArenas;
    std::atomic<unsigned> m_uiSpare;     // threads that have not been started
    std::atomic<unsigned> m_uiIdle = 0;  // threads that wait

    std::mutex m_mutex;                 // guards what follows
    std::condition_variable m_changed;  // for threads that wait
    std::condition_variable m_ended;    // for the one that leads
    std::deque<std::function<void()>> m_toStart;
    std::deque<std::shared_ptr<SharedWork>> m_offers;
    std::vector<pthread_t> m_workers;  // in `runWorker`
    unsigned m_uiWorkers = 0;          // their number, counting those that are still to start
    unsigned m_uiThreads = 0;          // all that were started and have not ended
    bool m_bOver = false;
    std::exception_ptr m_pThrown;
};

}  // namespace Zantrix::Cli
