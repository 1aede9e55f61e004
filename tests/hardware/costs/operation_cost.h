#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>

#include "tests/support/system_call_tracer.h"

namespace ZR::test {

/// An operation with the result code that it gave.
using Operation = std::function<unsigned int()>;

/// What one run of an operation cost and gave.
struct OperationCost {
    Trace trace;
    std::size_t allocations = 0;
    std::string result;  ///< the result code, or "died"

    std::string calls() const { return trace.names(); }
};

/// The cost of a run that is not the first of the process: look-ups that are made once are no part
/// of it.
OperationCost costOf(const Operation& operation);

/// The cost of the first run; its allocations are not counted.
OperationCost costOfFirst(const Operation& operation);

/// Costs are exact, so they are judged only where nothing but the library makes them.
class CostTest : public testing::Test {
  protected:
    void SetUp() override;
};

}  // namespace ZR::test
