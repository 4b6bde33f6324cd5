#include "features/RowEncoder.h"

namespace Zantrix::Cli {

namespace {

// Rows leave in pieces of about this size: large beside the cost of handing one over, small for the cache.
constexpr std::size_t c_uiPieceNumbers = 8192;

class NpyEncoder : public RowEncoder {
public:
    void begin(const std::string&, RowSink& sink) override {
        m_pSink = &sink;
        forget();
    }

    bool add(double, const Math::DoubleVector& values) override {
        m_numbers.append(values);
        ++m_uiRows;
        return m_numbers.size() < c_uiPieceNumbers || drain();
    }

    bool drain() override {
        const auto* const bytes = reinterpret_cast<const char*>(m_numbers.data());
        const bool isTaken = m_uiRows == 0 || m_pSink->take({bytes, m_numbers.size() * sizeof(double)}, m_uiRows);
        forget();
        return isTaken;
    }

    void forget() override {
        m_numbers.clear();
        m_uiRows = 0;
    }

private:
    RowSink* m_pSink = nullptr;
    Math::DoubleVector m_numbers;
    std::size_t m_uiRows = 0;
};

}  // namespace

std::unique_ptr<RowEncoder> makeNpyEncoder() {
    return std::make_unique<NpyEncoder>();
}

}  // namespace Zantrix::Cli
