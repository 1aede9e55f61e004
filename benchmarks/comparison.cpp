#include "benchmarks/comparison.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "benchmarks/cost_count.h"
#include "benchmarks/standard_output.h"

namespace ZR::benchmarks {
namespace {

// Long enough that reading the clock disappears in it, short enough that a busy neighbour hits few.
constexpr double batchSeconds = 50e-6;

std::vector<Row> table;

constexpr double middle = 0.5;
constexpr double tail = 0.99;

double quantile(std::vector<double>& values, double part) {
    const auto index = static_cast<std::ptrdiff_t>(static_cast<double>(values.size()) * part);
    const auto position = values.begin() + index;
    std::nth_element(values.begin(), position, values.end());
    return *position;
}

/// Runs one batch between what comes before and after it; negative when any of them failed.
double runBatch(const Comparison& comparison, const Batch& batch, long operations) {
    if (comparison.before && !comparison.before(operations))
        return -1;
    const double seconds = batch(operations);
    return comparison.after && !comparison.after(operations) ? -1 : seconds;
}

long batchSize(const Comparison& comparison) {
    long operations = comparison.shortestBatch;
    double seconds = runBatch(comparison, comparison.floor, operations);
    while (operations < comparison.longestBatch && seconds >= 0 && seconds < batchSeconds) {
        operations *= 2;
        seconds = runBatch(comparison, comparison.floor, operations);
    }
    return operations;
}

/// Times of both sides, an entry a pair of batches.
struct Samples {
    std::vector<double> floor;
    std::vector<double> library;
    std::vector<double> ratio;
};

/// Runs one batch of each side, the floor first in every second pair; false when one failed.
bool addPair(const Comparison& comparison, long operations, Samples& samples) {
    const bool floorFirst = samples.ratio.size() % 2 == 0;
    const Batch& firstBatch = floorFirst ? comparison.floor : comparison.library;
    const Batch& secondBatch = floorFirst ? comparison.library : comparison.floor;
    const double first = runBatch(comparison, firstBatch, operations);
    const double second = runBatch(comparison, secondBatch, operations);
    const double floor = floorFirst ? first : second;
    const double library = floorFirst ? second : first;
    samples.floor.push_back(floor * 1e9 / static_cast<double>(operations));
    samples.library.push_back(library * 1e9 / static_cast<double>(operations));
    samples.ratio.push_back(library / floor);
    return floor >= 0 && library >= 0;
}

/// Says what is wrong with the costs, or nothing. What cannot be counted here is not judged.
std::string judgeCosts(const Row& row, long allowedAllocations) {
    if (row.library.systemCalls != row.floor.systemCalls)
        return "more or fewer system calls than the floor";
    if (row.library.allocations >= 0 && row.library.allocations != allowedAllocations)
        return "more or fewer allocations than allowed";
    return {};
}

/// Counts one side's costs; false when it failed.
bool countSide(const Comparison& comparison, const std::function<bool()>& once, Cost& cost) {
    const auto before = [&comparison] { return !comparison.before || comparison.before(1); };
    const auto after = [&comparison] { return !comparison.after || comparison.after(1); };
    // What is made once (first look-ups, standard output's buffer) is no part of an operation.
    return before() && once() && after() && countCost({before, once, after}, cost);
}

void countCosts(const Comparison& comparison, Row& row) {
    if (!comparison.libraryOnce)
        return;
    const SilencedOutput silence;
    const bool counted = countSide(comparison, comparison.floorOnce, row.floor) &&
                         countSide(comparison, comparison.libraryOnce, row.library);
    row.failure = counted ? judgeCosts(row, comparison.allowedAllocations) : "failed";
}

void report(benchmark::State& state, const Row& row) {
    state.counters["floor_ns"] = row.floorNanoseconds;
    state.counters["library_ns"] = row.libraryNanoseconds;
    state.counters["ratio"] = row.ratio;
    state.counters["floor_p99_ns"] = row.floorTailNanoseconds;
    state.counters["library_p99_ns"] = row.libraryTailNanoseconds;
    state.counters["system_calls"] = static_cast<double>(row.library.systemCalls);
    state.counters["floor_system_calls"] = static_cast<double>(row.floor.systemCalls);
    state.counters["allocations"] = static_cast<double>(row.library.allocations);
}

void run(benchmark::State& state, const Comparison& comparison, Row& row) {
    if (row.operation.empty()) {
        row.operation = comparison.operation;
        row.showsTail = comparison.showsTail;
        row.showsRate = comparison.showsRate;
        countCosts(comparison, row);
    }
    if (!row.failure.empty()) {
        state.SkipWithError(row.failure.c_str());
        return;
    }
    const long operations = batchSize(comparison);
    // A number of samples is one of pairs, however many operations they take.
    const long iterations = comparison.samples > 0 ? 1 : operations;
    Samples samples;
    while (state.KeepRunningBatch(iterations)) {
        if (!addPair(comparison, operations, samples)) {
            row.failure = "failed";
            state.SkipWithError("failed");
            return;
        }
        state.SetIterationTime(samples.library.back() * 1e-9 * static_cast<double>(iterations));
    }
    row.floorNanoseconds = quantile(samples.floor, middle);
    row.libraryNanoseconds = quantile(samples.library, middle);
    row.ratio = quantile(samples.ratio, middle);
    row.floorTailNanoseconds = quantile(samples.floor, tail);
    row.libraryTailNanoseconds = quantile(samples.library, tail);
    report(state, row);
}

class ComparisonBenchmark : public benchmark::Fixture {
  public:
    ComparisonBenchmark(Comparison comparison, std::size_t row)
        : comparison_(std::move(comparison)), row_(row) {
        SetName(comparison_.operation.c_str());
    }

  protected:
    void BenchmarkCase(benchmark::State& state) override { run(state, comparison_, table[row_]); }

  private:
    Comparison comparison_;
    std::size_t row_;
};

}  // namespace

void registerComparison(Comparison comparison) {
    table.emplace_back();
    const long samples = comparison.samples;
    auto benchmark = std::make_unique<ComparisonBenchmark>(std::move(comparison), table.size() - 1);
    benchmark->UseManualTime();
    if (samples > 0)
        benchmark->Iterations(samples);
    benchmark::internal::RegisterBenchmarkInternal(benchmark.release());  // who owns it from now on
}

const std::vector<Row>& rows() {
    return table;
}

}  // namespace ZR::benchmarks
