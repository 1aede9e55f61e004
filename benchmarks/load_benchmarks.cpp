#include <dlfcn.h>

#include <filesystem>
#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/fresh_process.h"
#include "benchmarks/operations.h"
#include "hardware/feature_detection/zr_feature_detection.h"

namespace ZR::benchmarks {
namespace {

/// Where the library lies that this program is linked with.
std::string libraryPath() {
    Dl_info info{};
    (void)::dladdr(reinterpret_cast<const void*>(&ZRFeatureDetection::hasEncoder), &info);
    return std::filesystem::canonical(info.dli_fname);
}

Batch loadBatch(const std::string& probe, const std::string& library) {
    return [probe, library](long /*operations*/) { return secondsPrintedBy(probe, library); };
}

void compareLoad(const std::string& name, const std::string& probe) {
    const std::filesystem::path programs =
        std::filesystem::read_symlink("/proc/self/exe").parent_path();
    Comparison load;
    load.operation = name;
    load.longestBatch = 1;
    load.floor = loadBatch(programs / probe, programs / "libzrapi_benchmark_empty.so");
    load.library = loadBatch(programs / probe, libraryPath());
    registerComparison(std::move(load));
}

}  // namespace

void compareLoading() {
    // A C++ application brings most of what the library needs along; a C program nothing.
    compareLoad("load/C++ program", "zrapi_load_probe_cxx");
    compareLoad("load/C program", "zrapi_load_probe_c");
}

}  // namespace ZR::benchmarks
