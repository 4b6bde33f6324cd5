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

    void clear() {
        numbers.clear();
        counts.clear();
        isPrinted = false;
    }
};

// Blocks in the order of their rows. They outlive the printer while a thread still has them among its offers.
class RowPrinter::Blocks : public SharedWork {
public:
    std::string rowStart;  // of every row; set while there are none

    Block& filling() { return *m_pFilling; }
    std::size_t pending() const { return m_pending.size(); }

    void submit() {
        const std::size_t room =
            m_pFilling->counts.size() * rowStart.size() + m_pFilling->numbers.size() * (c_iMaxNumberLength + 1);
        if (m_pFilling->text.size() < room) {
            m_pFilling->text.resize(room);
        }
        const std::lock_guard lock(m_mutex);
        m_pending.push_back(std::move(m_pFilling));
        if (m_free.empty()) {
            m_pFilling = std::make_unique<Block>();
        } else {
            m_pFilling = std::move(m_free.back());  // the one used last, which is still in the cache
            m_free.pop_back();
        }
    }

    // Waits until the oldest block is text, and helps meanwhile.
    const Block& oldest() {
        std::unique_lock lock(m_mutex);
        const Block& oldest = *m_pending.front();
        while (!oldest.isPrinted) {
            if (!printNext(lock)) {
                m_printed.wait(lock);
            }
        }
        return oldest;
    }

    // Has the oldest block, which is text, be used again.
    void release() {
        const std::lock_guard lock(m_mutex);
        m_pending.front()->clear();
        m_free.push_back(std::move(m_pending.front()));
        m_pending.pop_front();
        --m_uiTaken;
    }

    // Forgets all rows, and room that only helpers had a use for.
    void clear() {
        for (; pending() > 0; release()) {
            oldest();  // some thread may be at it
        }
        m_pFilling->clear();
        m_free.resize(std::min<std::size_t>(m_free.size(), 1));
    }

    void doPart() override {
        std::unique_lock lock(m_mutex);
        printNext(lock);
    }

private:
    bool printNext(std::unique_lock<std::mutex>& lock) {
        if (m_uiTaken == m_pending.size()) {
            return false;
        }
        Block& next = *m_pending[m_uiTaken++];
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

    std::unique_ptr<Block> m_pFilling = std::make_unique<Block>();
    std::vector<std::unique_ptr<Block>> m_free;
    std::mutex m_mutex;  // guards what follows, which only the owner's thread adds to and takes from; and isPrinted
    std::condition_variable m_printed;
    std::deque<std::unique_ptr<Block>> m_pending;
    std::size_t m_uiTaken = 0;  // so many of them are printed, or being printed
};

RowPrinter::RowPrinter(Crew& crew) : m_crew(crew), m_pBlocks(std::make_shared<Blocks>()) {}

RowPrinter::~RowPrinter() {
    m_pBlocks->clear();
}

void RowPrinter::begin(const std::string& name, RowSink& sink) {
    m_pBlocks->clear();
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
