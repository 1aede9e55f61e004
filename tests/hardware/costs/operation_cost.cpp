#include "tests/hardware/costs/operation_cost.h"

#include <utility>

#include "tests/support/allocation_counter.h"

namespace ZR::test {
namespace {

void runTraced(const Operation& operation, TracedRun& run) {
    run.begin();
    const unsigned int result = operation();
    run.end();
    run.say(std::to_string(result));
}

OperationCost costFrom(Trace trace) {
    OperationCost cost;
    cost.result = trace.died ? "died" : trace.text;
    cost.trace = std::move(trace);
    return cost;
}

}  // namespace

OperationCost costOf(const Operation& operation) {
    OperationCost cost = costFrom(traceSystemCalls([&operation](TracedRun& run) {
        (void)operation();
        runTraced(operation, run);
    }));
    (void)operation();
    const AllocationCounter allocations;
    (void)operation();
    cost.allocations = allocations.count();
    return cost;
}

OperationCost costOfFirst(const Operation& operation) {
    return costFrom(traceSystemCalls([&operation](TracedRun& run) { runTraced(operation, run); }));
}

void CostTest::SetUp() {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << "[  SKIPPED ] " << reason;
    if (!canCountAllocations())
        GTEST_SKIP() << "[  SKIPPED ] a sanitizer owns the heap";
}

}  // namespace ZR::test
