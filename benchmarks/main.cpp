#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

#include "benchmarks/board.h"
#include "benchmarks/can_pair.h"
#include "benchmarks/comparison.h"
#include "benchmarks/notification_line.h"
#include "benchmarks/operations.h"

namespace ZR::benchmarks {
namespace {

// What ctest takes for a skipped test.
constexpr int exitNothingToMeasureOn = 77;

/// Standard output belongs to Google Benchmark's report where that is for a program to read.
FILE* tableOutput(int count, char** arguments) {
    const bool forPrograms = std::any_of(arguments, arguments + count, [](std::string_view text) {
        return text == "--benchmark_format=json" || text == "--benchmark_format=csv";
    });
    return forPrograms ? stderr : stdout;
}

/// Opens the sockets that are measured on and adds to @p board what they are.
bool openLines(std::string& board) {
    try {
        board += "; CAN: " + canPair()->description();
        board += "; notifications: " + notificationLine()->description();
        return true;
    } catch (const std::system_error& error) {
        std::fprintf(stderr, "zrapi_benchmarks: %s\n", error.what());
        return false;
    }
}

void printCount(FILE* output, long count) {
    if (count < 0)
        std::fprintf(output, " %13s", "-");
    else
        std::fprintf(output, " %13ld", count);
}

void printRow(FILE* output, const Row& row) {
    std::fprintf(output, "%-30s", row.operation.c_str());
    if (!row.failure.empty()) {
        std::fprintf(output, " %s", row.failure.c_str());
    } else {
        std::fprintf(output, " %11.1f %11.1f %6.2f", row.floorNanoseconds, row.libraryNanoseconds,
                     row.ratio);
    }
    printCount(output, row.library.systemCalls);
    printCount(output, row.library.allocations);
    std::fputc('\n', output);
}

/// Prints the closing table; false when an operation failed or cost more calls than it may.
bool printTable(FILE* output) {
    std::fprintf(output, "%-30s %11s %11s %6s %13s %13s\n", "operation", "floor ns", "library ns",
                 "ratio", "system calls", "allocations");
    bool good = true;
    for (const Row& row : rows()) {
        if (row.operation.empty())  // filtered out
            continue;
        printRow(output, row);
        good = good && row.failure.empty();
    }
    return good;
}

/// Prints what the table has no columns for, where it is of interest.
void printDetails(FILE* output) {
    constexpr double nanoseconds = 1e9;
    for (const Row& row : rows()) {
        if (!row.failure.empty())
            continue;
        if (row.showsTail)
            std::fprintf(output, "%-30s %11.1f %11.1f   99th percentile\n", row.operation.c_str(),
                         row.floorTailNanoseconds, row.libraryTailNanoseconds);
        if (row.showsRate)
            std::fprintf(output, "%-30s %11.0f %11.0f   a second\n", row.operation.c_str(),
                         nanoseconds / row.floorNanoseconds, nanoseconds / row.libraryNanoseconds);
    }
}

}  // namespace
}  // namespace ZR::benchmarks

int main(int count, char** arguments) {
    using namespace ZR::benchmarks;
    FILE* const output = tableOutput(count, arguments);
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
        return EXIT_FAILURE;
    std::string board;
    if (!prepareBoard(arguments, board)) {
        std::fprintf(stderr, "zrapi_benchmarks: %s\n", board.c_str());
        return exitNothingToMeasureOn;
    }
    if (!openLines(board))
        return EXIT_FAILURE;
    compareInputsAndOutputs();
    compareDimmableDevices();
    compareFeatureDetection();
    compareLoading();
    compareCan();
    compareVideoInputs();
    if (!compareCameras())
        board += "; no cameras";
    benchmark::AddCustomContext("board", board);
    // Last, because they end with more threads than one.
    compareNotifications();
    compareEndPoints();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    // What the comparisons own ends before main does, their threads above all.
    benchmark::ClearRegisteredBenchmarks();
    std::fprintf(output, "\nMeasured on: %s\n", board.c_str());
    const bool good = printTable(output);
    printDetails(output);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
