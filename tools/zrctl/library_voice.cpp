#include "tools/zrctl/library_voice.h"

#include <algorithm>
#include <iostream>
#include <mutex>
#include <string>
#include <utility>

#include "common/zrapi_common/zr_debug.h"
#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

void showReport(int, const char* section, const char* message) {
    printError(std::string("library: ") + section + ": " + message);
}

void dropReport(int, const char*, const char*) {}

/// Collects what it is given and hands on whole lines. The library prints from several threads.
class LineBuffer : public std::streambuf {
  public:
    explicit LineBuffer(std::function<void(const std::string&)> take) : take_(std::move(take)) {}
    LineBuffer(const LineBuffer&) = delete;
    LineBuffer& operator=(const LineBuffer&) = delete;
    ~LineBuffer() override {
        // The library has a text without a line end.
        if (!line_.empty())
            endLine();
    }

  protected:
    int_type overflow(int_type character) override {
        if (traits_type::eq_int_type(character, traits_type::eof()))
            return traits_type::not_eof(character);
        const std::lock_guard<std::mutex> lock(mutex_);
        add(traits_type::to_char_type(character));
        return character;
    }

    std::streamsize xsputn(const char* text, std::streamsize size) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::for_each(text, text + size, [this](char character) { add(character); });
        return size;
    }

  private:
    void add(char character) {
        if (character == '\n')
            endLine();
        else
            line_ += character;
    }

    void endLine() { take_(std::exchange(line_, {})); }

    std::function<void(const std::string&)> take_;
    std::mutex mutex_;
    std::string line_;
};

void showLine(const std::string& line) {
    printError("library: " + line);
}

void dropLine(const std::string&) {}

ssize_t writeToBuffer(void* buffer, const char* text, std::size_t size) {
    return static_cast<std::streambuf*>(buffer)->sputn(text, static_cast<std::streamsize>(size));
}

/// A C stream that ends in @p buffer; null when there is no memory for one.
std::FILE* openStream(std::streambuf* buffer) {
    cookie_io_functions_t functions{};
    functions.write = writeToBuffer;
    std::FILE* const stream = ::fopencookie(buffer, "w", functions);
    if (stream != nullptr)
        (void)std::setvbuf(stream, nullptr, _IONBF, 0);
    return stream;
}

/// Puts @p replacement in the place of a standard stream. @return what was there
std::FILE* replaceStream(std::FILE*& stream, std::FILE* replacement) {
    return replacement == nullptr ? nullptr : std::exchange(stream, replacement);
}

void restoreStream(std::FILE*& stream, std::FILE* original) {
    if (original != nullptr)
        (void)std::fclose(std::exchange(stream, original));
}

}  // namespace

// libsocketcan and printf know nothing of std::cout. The C library lets a program exchange its
// standard streams; the tool itself writes to the descriptors and does not notice.
LibraryVoice::LibraryVoice(bool audible)
    : replacement_(std::make_unique<LineBuffer>(audible ? showLine : dropLine)),
      original_(std::cout.rdbuf(replacement_.get())),
      originalOutput_(replaceStream(stdout, openStream(replacement_.get()))),
      originalErrors_(replaceStream(stderr, openStream(replacement_.get()))) {
    ZR::ZRDebug::setSink(audible ? showReport : dropReport);
}

LibraryVoice::~LibraryVoice() {
    ZR::ZRDebug::setSink(nullptr);
    restoreStream(stderr, originalErrors_);
    restoreStream(stdout, originalOutput_);
    std::cout.rdbuf(original_);
}

LibraryEar::LibraryEar() : original_(std::cout.rdbuf(&heard_)) {}

LibraryEar::~LibraryEar() {
    std::cout.rdbuf(original_);
    const std::string text = heard_.str();
    std::cout << text;
    if (!text.empty() && text.back() != '\n')
        std::cout << '\n';
}

std::string LibraryEar::text() const {
    std::string text = heard_.str();
    text.erase(text.find_last_not_of('\n') + 1);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

LibraryListener::LibraryListener(std::function<void(const std::string&)> hear)
    : original_(std::cout.rdbuf()),
      replacement_(std::make_unique<LineBuffer>(
          [hear = std::move(hear), original = original_](const std::string& line) {
              hear(line);
              const std::string whole = line + '\n';
              (void)original->sputn(whole.data(), static_cast<std::streamsize>(whole.size()));
          })) {
    (void)std::cout.rdbuf(replacement_.get());
}

LibraryListener::~LibraryListener() {
    (void)std::cout.rdbuf(original_);
}

}  // namespace zrctl
