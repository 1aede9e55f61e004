#include "tests/support/output_capture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <iostream>
#include <stdexcept>

namespace ZR::test {
namespace {

void flushAll() {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
}

/// A file in memory takes any amount without a reader.
int makeMemoryFile() {
    const int file = ::memfd_create("captured output", MFD_CLOEXEC);
    if (file < 0)
        throw std::runtime_error("memfd_create");
    return file;
}

std::string contentOf(int file) {
    std::string content;
    std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t length =
            ::pread(file, buffer.data(), buffer.size(), static_cast<off_t>(content.size()));
        if (length <= 0)
            return content;
        content.append(buffer.data(), static_cast<std::size_t>(length));
    }
}

int replace(int descriptor, int file) {
    const int saved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    if (saved < 0 || ::dup2(file, descriptor) < 0)
        throw std::runtime_error("dup");
    return saved;
}

}  // namespace

OutputCapture::OutputCapture()
    : outputFile_(makeMemoryFile()),
      errorFile_(makeMemoryFile()),
      savedOutput_(-1),
      savedErrors_(-1) {
    flushAll();
    savedOutput_ = replace(STDOUT_FILENO, outputFile_);
    savedErrors_ = replace(STDERR_FILENO, errorFile_);
}

OutputCapture::~OutputCapture() {
    release();
    ::close(outputFile_);
    ::close(errorFile_);
}

std::string OutputCapture::output() const {
    return contentOf(outputFile_);
}

std::string OutputCapture::errors() const {
    return contentOf(errorFile_);
}

void OutputCapture::release() {
    if (savedOutput_ < 0)
        return;
    (void)::dup2(savedOutput_, STDOUT_FILENO);
    (void)::dup2(savedErrors_, STDERR_FILENO);
    ::close(savedOutput_);
    ::close(savedErrors_);
    savedOutput_ = savedErrors_ = -1;
    // What was not flushed goes where it would have gone too late.
    flushAll();
}

}  // namespace ZR::test
