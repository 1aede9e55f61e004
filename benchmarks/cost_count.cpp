#include "benchmarks/cost_count.h"

#include "tests/support/allocation_counter.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::benchmarks {
namespace {

long countSystemCalls(const std::function<bool()>& operation) {
    if (!test::whyNotTraceable().empty())
        return -1;
    const test::Trace trace = test::traceSystemCalls([&operation](test::TracedRun& run) {
        run.begin();
        (void)operation();
        run.end();
    });
    return trace.died ? -1 : static_cast<long>(trace.calls.size());
}

long countAllocations(const std::function<bool()>& operation) {
    if (!test::canCountAllocations())
        return -1;
    const test::AllocationCounter allocations;
    (void)operation();
    return static_cast<long>(allocations.count());
}

}  // namespace

Cost countCost(const std::function<bool()>& operation) {
    return {countSystemCalls(operation), countAllocations(operation)};
}

}  // namespace ZR::benchmarks
