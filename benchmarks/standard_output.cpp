#include "benchmarks/standard_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>
#include <utility>

namespace ZR::benchmarks {

SilencedOutput::SilencedOutput() : output_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)) {
    std::cout.flush();
    const FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    (void)::dup2(nowhere.get(), STDOUT_FILENO);
}

SilencedOutput::~SilencedOutput() {
    std::cout.flush();
    (void)::dup2(output_.get(), STDOUT_FILENO);
}

Batch silenced(Batch batch) {
    return [batch = std::move(batch)](long operations) {
        const SilencedOutput silence;
        return batch(operations);
    };
}

}  // namespace ZR::benchmarks
