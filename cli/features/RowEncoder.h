#pragma once

#include "batch/Crew.h"

#include <murvane/math/DoubleVector.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Zantrix::Cli {

/// Takes the rows of an input as the bytes that stand in a table.
class RowSink {
public:
    virtual ~RowSink() = default;

    /// @return false when no more are wanted
    virtual bool take(std::string_view bytes, std::size_t rows) = 0;

    /// Whether rows are waited for, so that other threads should help with them.
    virtual bool isUrgent() const = 0;
};

/// Turns rows of numbers into bytes. The pieces in which a sink gets them depend on nothing but the rows.
class RowEncoder {
public:
    virtual ~RowEncoder() = default;

    /// Begins an input. What was left of the one before is forgotten.
    virtual void begin(const std::string& name, RowSink& sink) = 0;

    /// Adds a row.
    ///
    /// @param time  the audio time of the row in seconds
    /// @return false when the sink refuses
    virtual bool add(double time, const Math::DoubleVector& values) = 0;

    /// Sends all rows to the sink.
    virtual bool drain() = 0;

    /// Forgets all rows that have not been sent yet.
    virtual void forget() = 0;
};

/// Lines of CSV.
std::unique_ptr<RowEncoder> makeCsvEncoder(Crew& crew);

/// Numbers as they stand in memory.
std::unique_ptr<RowEncoder> makeNpyEncoder();

}  // namespace Zantrix::Cli
