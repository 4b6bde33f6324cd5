#include "features/RowPrinter.h"

#include "shell/ShortestDouble.h"

#include <algorithm>
#include <csignal>
#include <cstring>

namespace Zantrix::Cli {

namespace {

// Large enough that handing a block over costs nothing beside printing it, small enough for the cache.
constexpr std::size_t c_uiBlockNumbers = 8192;

constexpr unsigned c_uiMaxThreads = 7;  // beside the owner's; more would wait for the computation

unsigned helpers() {
    return std::min(std::max(std::thread::hardware_concurrency(), 1U) - 1, c_uiMaxThreads);
}

}  // namespace

RowPrinter::RowPrinter(Output& output) : m_output(output), m_blocks(2 * std::size_t(helpers()) + 2) {}

RowPrinter::~RowPrinter() {
    {
        const std::lock_guard lock(m_mutex);
        m_bStop = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
}

bool RowPrinter::setRowStart(const std::string& text) {
    const bool drained = drain();
    m_strRowStart = text;
    return drained;
}

bool RowPrinter::add(double time, const Math::DoubleVector& values) {
    Block& current = block(m_uiSubmitted);  // only this thread changes that number
    current.numbers.push_back(time);
    current.numbers.append(values);
    current.counts.push_back(values.size() + 1);
    return current.numbers.size() < c_uiBlockNumbers || submit();
}

bool RowPrinter::drain() {
    bool isWritten = block(m_uiSubmitted).counts.empty() || submit();
    while (m_uiWritten < m_uiSubmitted) {
        isWritten = writeOldest() && isWritten;
    }
    return isWritten;
}

void RowPrinter::forget() {
    while (m_uiWritten < m_uiSubmitted) {
        printOldest();  // some thread may be at it
        releaseOldest();
    }
    block(m_uiSubmitted).numbers.clear();
    block(m_uiSubmitted).counts.clear();
}

void RowPrinter::print(Block& block) const {
    char* out = block.text.data();
    auto number = block.numbers.begin();
    for (const std::size_t count : block.counts) {
        std::memcpy(out, m_strRowStart.data(), m_strRowStart.size());
        out += m_strRowStart.size();
        for (const auto end = number + static_cast<std::ptrdiff_t>(count); number != end; ++number) {
            out = writeShortest(out, *number);
            *out++ = ',';
        }
        out[-1] = '\n';
    }
    block.textSize = static_cast<std::size_t>(out - block.text.data());
}

// Hands over the block that is full, and makes sure that there is another one to fill.
bool RowPrinter::submit() {
    Block& full = block(m_uiSubmitted);
    const std::size_t room = full.counts.size() * m_strRowStart.size() + full.numbers.size() * (c_iMaxNumberLength + 1);
    if (full.text.size() < room) {
        full.text.resize(room);
    }
    if (m_uiSubmitted == 1) {  // the first block may be the only one
        startThreads();
    }
    {
        const std::lock_guard lock(m_mutex);
        ++m_uiSubmitted;
    }
    m_changed.notify_all();
    return m_uiSubmitted - m_uiWritten < m_blocks.size() || writeOldest();
}

// Waits until the oldest block is text, and helps meanwhile.
RowPrinter::Block& RowPrinter::printOldest() {
    Block& oldest = block(m_uiWritten);
    std::unique_lock lock(m_mutex);
    while (!oldest.isPrinted) {
        if (m_uiTaken == m_uiSubmitted) {
            m_changed.wait(lock);
            continue;
        }
        Block& next = block(m_uiTaken++);
        lock.unlock();
        print(next);
        lock.lock();
        next.isPrinted = true;
    }
    oldest.isPrinted = false;
    return oldest;
}

bool RowPrinter::writeOldest() {
    const Block& oldest = printOldest();
    const bool isWritten = m_output.write(oldest.text.data(), oldest.textSize);
    releaseOldest();
    return isWritten;
}

void RowPrinter::releaseOldest() {
    Block& oldest = block(m_uiWritten++);
    oldest.numbers.clear();
    oldest.counts.clear();
}

void RowPrinter::startThreads() {
    // Signals are for the thread that does the work.
    sigset_t all;
    sigset_t previous;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &previous);
    for (unsigned i = 0; i < helpers(); ++i) {
        m_threads.emplace_back([this] { work(); });
    }
    ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}

void RowPrinter::work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_bStop || m_uiTaken < m_uiSubmitted; });
        if (m_bStop) {
            return;
        }
        Block& next = block(m_uiTaken++);
        lock.unlock();
        print(next);
        lock.lock();
        next.isPrinted = true;
        m_changed.notify_all();
    }
}

}  // namespace Zantrix::Cli
