#pragma once

#include "shell/Output.h"

#include <murvane/math/DoubleVector.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Zantrix::Cli {

/// Prints rows of numbers on all processors: printing takes several times as long as computing does.
///
/// Rows are collected in blocks. Whichever thread is free turns a block into text, which depends on nothing but the
/// block; the owner's thread writes the texts in the order of the blocks. The output is thus the same whatever the
/// threads do. The number of blocks is fixed: whoever adds rows faster than they are printed prints, too.
class RowPrinter {
public:
    explicit RowPrinter(Output& output);
    ~RowPrinter();
    RowPrinter(const RowPrinter&) = delete;
    RowPrinter& operator=(const RowPrinter&) = delete;

    /// Drains, and sets what each further row begins with.
    bool setRowStart(const std::string& text);

    /// Adds a row: its start, the time and the values, with commas between them.
    ///
    /// @return false when the output fails
    bool add(double time, const Math::DoubleVector& values);

    /// Sends all rows to the output.
    bool drain();

    /// Forgets all rows that have not been sent yet.
    void forget();

private:
    struct Block {
        Math::DoubleVector numbers;       // of all rows, one after the other
        std::vector<std::size_t> counts;  // numbers of each row
        std::vector<char> text;
        std::size_t textSize = 0;
        bool isPrinted = false;
    };

    Block& block(std::uint64_t index) { return m_blocks[static_cast<std::size_t>(index % m_blocks.size())]; }
    void print(Block& block) const;
    bool submit();
    Block& printOldest();
    bool writeOldest();
    void releaseOldest();
    void startThreads();
    void work();

    Output& m_output;
    std::string m_strRowStart;
    std::deque<Block> m_blocks;     // a ring; numbers below count blocks from the start
    std::uint64_t m_uiWritten = 0;  // this one is the oldest
    std::mutex m_mutex;             // guards what follows, and isPrinted
    std::condition_variable m_changed;
    std::uint64_t m_uiTaken = 0;      // this one is the next to be printed
    std::uint64_t m_uiSubmitted = 0;  // this one is being filled
    bool m_bStop = false;
    std::vector<std::thread> m_threads;
};

}  // namespace Zantrix::Cli
