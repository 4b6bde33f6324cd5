#pragma once

#include "features/RowEncoder.h"

#include <cstdint>
#include <string>

namespace Zantrix::Cli {

/// Prints rows as lines of CSV: the input's name, the time and the values. Printing takes several times as long as
/// computing does, so threads without work of their own help with it.
///
/// Rows are collected in blocks. Whichever thread is free turns a block into text, which depends on nothing but the
/// block; the owner's thread sends the texts on in the order of the blocks. The output is thus the same whatever the
/// threads do. The number of blocks is limited: whoever adds rows faster than they are printed prints, too.
class RowPrinter : public RowEncoder {
public:
    explicit RowPrinter(Crew& crew);
    ~RowPrinter() override;

    void begin(const std::string& name, RowSink& sink) override;
    bool add(double time, const Math::DoubleVector& values) override;
    bool drain() override;
    void forget() override;

private:
    struct Block;
    class Blocks;

    bool submit();
    bool sendOldest();

    Crew& m_crew;
    RowSink* m_pSink = nullptr;
    std::shared_ptr<Blocks> m_pBlocks;
};

}  // namespace Zantrix::Cli
