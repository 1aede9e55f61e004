// Loaded before media-ctl (LD_PRELOAD): gives it the simulated graph of this test's media kernel and
// writes what it asked of it. The environment says which graph, what fails, and where to write.

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/platform/media_controller/media_kernel_substitute.h"

namespace {

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

struct Recording {
    Recording() {
        using ZR::test::mediaKernel;
        const std::string graph = environment("ZR_GRAPH");
        mediaKernel() =
            graph == "odd" ? ZR::test::oddGraph() : ZR::test::cameraGraph(graph == "quad");
        std::istringstream faults(environment("ZR_FAULTS"));
        std::string call;
        int error = 0;
        unsigned int occurrence = 0;
        while (faults >> error >> occurrence && std::getline(faults >> std::ws, call))
            mediaKernel().fail(call, error, occurrence);
    }
    ~Recording() {
        std::ofstream log(environment("ZR_LOG"));
        for (const std::string& line : ZR::test::mediaKernel().calls)
            log << line << '\n';
        log << "graph\n";
        for (const std::string& line : describe(ZR::test::mediaKernel()))
            log << line << '\n';
    }
} const recording;

}  // namespace

extern "C" {

int access(const char* path, int mode) noexcept {
    return ZR::test::MediaKernel::owns(path) ? 0 : ::faccessat(-100, path, mode, 0);
}

// As on a system without udev.
void* udev_new();
void* udev_new() {
    return nullptr;
}

}  // extern "C"
