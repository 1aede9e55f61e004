#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace ZR::benchmarks {

/// What an operation and its floor cost apart from time; negative where it is not counted.
struct Cost {
    long systemCalls = -1;
    long allocations = -1;
};

/// One row of the closing table.
struct Row {
    std::string operation;
    double floorNanoseconds = 0;
    double libraryNanoseconds = 0;
    double ratio = 0;
    double floorTailNanoseconds = 0;    ///< 99th percentile of the batches
    double libraryTailNanoseconds = 0;  ///< the same
    Cost floor;
    Cost library;
    bool showsTail = false;
    bool showsRate = false;
    std::string failure;  ///< empty when the operation did what it must, at its exact cost
};

/// Runs an operation the given number of times and returns the seconds taken; negative on failure.
using Batch = std::function<double(long operations)>;

/// Does for the given number of operations what belongs to the job but not to the operation, for
/// instance sends what is to be received. Neither timed nor counted; false on failure.
using Preparation = std::function<bool(long operations)>;

/// Both sides of a comparison. The batches take turns, so that whatever else happens on the machine
/// hits both alike.
struct Comparison {
    std::string operation;
    Batch floor;
    Batch library;
    std::function<bool()> floorOnce;
    std::function<bool()> libraryOnce;
    Preparation before{};  ///< where set, comes before each batch and each single run of both sides
    Preparation after{};   ///< where set, comes after them
    long allowedAllocations = 0;
    long shortestBatch = 1;
    long longestBatch = 4096;
    long samples = 0;        ///< pairs of batches; 0: as many as the time allows
    bool showsTail = false;  ///< the 99th percentile is of interest, not the median alone
    bool showsRate = false;  ///< operations a second are of interest
};

/// Registers a comparison with Google Benchmark.
void registerComparison(Comparison comparison);

/// The rows of all comparisons that ran, in the order of their registration.
const std::vector<Row>& rows();

/// Times an operation as a loop of its own, so that the compiler sees through both sides alike.
template <typename Operation>
Batch batchOf(Operation operation) {
    return [operation](long operations) {
        bool succeeded = true;
        const auto start = std::chrono::steady_clock::now();
        for (long done = 0; done < operations; ++done)
            succeeded = operation() && succeeded;
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        return succeeded ? taken.count() : -1.0;
    };
}

/// Compares two operations that answer whether they succeeded.
/// @param comparison  all but the two sides
template <typename Floor, typename Library>
void compare(Comparison comparison, Floor floor, Library library) {
    comparison.floor = batchOf(floor);
    comparison.library = batchOf(library);
    comparison.floorOnce = floor;
    comparison.libraryOnce = library;
    registerComparison(std::move(comparison));
}

template <typename Floor, typename Library>
void compare(std::string operation, Floor floor, Library library, long allowedAllocations = 0) {
    Comparison comparison;
    comparison.operation = std::move(operation);
    comparison.allowedAllocations = allowedAllocations;
    compare(std::move(comparison), floor, library);
}

}  // namespace ZR::benchmarks
