#include "benchmarks/cost_count.h"

#include "tests/support/allocation_counter.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::benchmarks {
namespace {

// The word that a traced child says when its operation succeeded.
constexpr char succeeded[] = "succeeded";

bool countSystemCalls(const CountedRun& run, long& count) {
    if (!test::whyNotTraceable().empty())
        return true;
    if (!run.before())
        return false;
    const test::Trace trace = test::traceSystemCalls([&run](test::TracedRun& traced) {
        traced.begin();
        const bool done = run.operation();
        traced.end();
        if (done)
            traced.say(succeeded);
    });
    count = static_cast<long>(trace.calls.size());
    return run.after() && !trace.died && trace.text == succeeded;
}

bool countAllocations(const CountedRun& run, long& count) {
    if (!test::canCountAllocations())
        return true;
    if (!run.before())
        return false;
    const test::AllocationCounter allocations;
    const bool done = run.operation();
    count = static_cast<long>(allocations.count());
    return run.after() && done;
}

}  // namespace

bool countCost(const CountedRun& run, Cost& cost) {
    return countSystemCalls(run, cost.systemCalls) && countAllocations(run, cost.allocations);
}

}  // namespace ZR::benchmarks
