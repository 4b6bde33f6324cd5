#include "features/RowPrinter.h"

#include "shell/ShortestDouble.h"
#include "shell/Text.h"

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <vector>

namespace Zantrix::Cli {

namespace {

// Large enough that handing a block over costs nothing beside printing it, small enough for the cache.
constexpr std::size_t c_uiBlockNumbers = 8192;

constexpr std::size_t c_uiMaxHelpers = 7;  // more would wait for the computation

}  // namespace

struct RowPrinter::Block {
    Math::DoubleVector numbers;       // of all rows, one after the other
    std::vector<std::size_t> counts;  // numbers of each row
    std::vector<char> text;
    std::size_t textSize = 0;
    bool isPrinted = false;
};

// A ring of blocks, counted from the start. It outlives the printer while a thread still has it among its offers.
class RowPrinter::Blocks : public SharedWork {
public:
    Blocks() : m_ring(2 * c_uiMaxHelpers + 2) {}

    std::string rowStart;  // of every row; set while there are none

    Block& filling() { return at(m_uiSubmitted); }
    std::uint64_t pending() const { return m_uiSubmitted - m_uiSent; }

    void submit() {
        Block& full = filling();
        const std::size_t room = full.counts.size() * rowStart.size() + full.numbers.size() * (c_iMaxNumberLength + 1);
        if (full.text.size() < room) {
            full.text.resize(room);
        }
        {
            const std::lock_guard lock(m_mutex);
            ++m_uiSubmitted;
        }
        m_uiMostPending = std::max(m_uiMostPending, pending());
    }

    // Waits until the oldest block is text, and helps meanwhile.
    const Block& oldest() {
        Block& oldest = at(m_uiSent);
        std::unique_lock lock(m_mutex);
        while (!oldest.isPrinted) {
            if (!printNext(lock)) {
                m_printed.wait(lock);
            }
        }
        oldest.isPrinted = false;
        return oldest;
    }

    void release() {
        Block& sent = at(m_uiSent++);
        sent.numbers.clear();
        sent.counts.clear();
    }

    void clear() {
        for (; pending() > 0; release()) {
            oldest();  // some thread may be at it
        }
        filling().numbers.clear();
        filling().counts.clear();
    }

    // Once all is sent: gives back the room that only helpers had a use for.
    void shrink() {
        if (m_uiMostPending > 1) {
            std::fill(m_ring.begin(), m_ring.end(), Block());
        }
        m_uiMostPending = 0;
    }

    void doPart() override {
        std::unique_lock lock(m_mutex);
        printNext(lock);
    }

private:
    Block& at(std::uint64_t index) { return m_ring[static_cast<std::size_t>(index % m_ring.size())]; }

    bool printNext(std::unique_lock<std::mutex>& lock) {
        if (m_uiTaken == m_uiSubmitted) {
            return false;
        }
        Block& next = at(m_uiTaken++);
        lock.unlock();
        print(next);
        lock.lock();
        next.isPrinted = true;
        m_printed.notify_all();
        return true;
    }

    void print(Block& block) const {
        char* out = block.text.data();
        auto number = block.numbers.begin();
        for (const std::size_t count : block.counts) {
            std::memcpy(out, rowStart.data(), rowStart.size());
            out += rowStart.size();
            for (const auto end = number + static_cast<std::ptrdiff_t>(count); number != end; ++number) {
                out = writeShortest(out, *number);
                *out++ = ',';
            }
            out[-1] = '\n';
        }
        block.textSize = static_cast<std::size_t>(out - block.text.data());
    }

    std::deque<Block> m_ring;
    std::uint64_t m_uiSent = 0;  // this one is the oldest
    std::uint64_t m_uiMostPending = 0;
    std::mutex m_mutex;  // guards what follows, and isPrinted
    std::condition_variable m_printed;
    std::uint64_t m_uiTaken = 0;      // this one is the next to be printed
    std::uint64_t m_uiSubmitted = 0;  // this one is being filled; changed by the owner's thread only
};

RowPrinter::RowPrinter(Crew& crew) : m_crew(crew), m_pBlocks(std::make_shared<Blocks>()) {}

RowPrinter::~RowPrinter() {
    m_pBlocks->clear();
}

void RowPrinter::begin(const std::string& name, RowSink& sink) {
    m_pBlocks->clear();
    m_pBlocks->shrink();
    m_pBlocks->rowStart = csvField(name) + ',';
    m_pSink = &sink;
}

bool RowPrinter::add(double time, const Math::DoubleVector& values) {
    Block& block = m_pBlocks->filling();
    block.numbers.push_back(time);
    block.numbers.append(values);
    block.counts.push_back(values.size() + 1);
    return block.numbers.size() < c_uiBlockNumbers || submit();
}

bool RowPrinter::drain() {
    bool isSent = m_pBlocks->filling().counts.empty() || submit();
    while (isSent && m_pBlocks->pending() > 0) {
        isSent = sendOldest();
    }
    return isSent;
}

void RowPrinter::forget() {
    m_pBlocks->clear();
}

// Hands over the block that is full, and makes sure that there is another one to fill.
bool RowPrinter::submit() {
    m_pBlocks->submit();
    const std::size_t helpers = m_pSink->isUrgent() ? std::min<std::size_t>(m_crew.helpers(), c_uiMaxHelpers) : 0;
    if (helpers > 0) {
        m_crew.offer(m_pBlocks);
    }
    const std::size_t mayWait = helpers == 0 ? 0 : 2 * helpers + 1;
    while (m_pBlocks->pending() > mayWait) {
        if (!sendOldest()) {
            return false;
        }
    }
    return true;
}

bool RowPrinter::sendOldest() {
    const Block& oldest = m_pBlocks->oldest();
    const bool isTaken = m_pSink->take({oldest.text.data(), oldest.textSize}, oldest.counts.size());
    m_pBlocks->release();
    return isTaken;
}

std::unique_ptr<RowEncoder> makeCsvEncoder(Crew& crew) {
    return std::make_unique<RowPrinter>(crew);
}

}  // namespace Zantrix::Cli
