#include "tools/zrctl/library_voice.h"

#include <iostream>
#include <string>

#include "common/zrapi_common/zr_debug.h"
#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

void showReport(int, const char* section, const char* message) {
    printError(std::string("library: ") + section + ": " + message);
}

void dropReport(int, const char*, const char*) {}

/// Collects what std::cout is given and passes on whole lines.
class LineBuffer : public std::streambuf {
  public:
    explicit LineBuffer(bool audible) : audible_(audible) {}

  protected:
    int_type overflow(int_type character) override {
        if (traits_type::eq_int_type(character, traits_type::eof()))
            return traits_type::not_eof(character);
        if (character != '\n') {
            line_ += traits_type::to_char_type(character);
            return character;
        }
        if (audible_)
            printError("library: " + line_);
        line_.clear();
        return character;
    }

  private:
    bool audible_;
    std::string line_;
};

}  // namespace

LibraryVoice::LibraryVoice(bool audible)
    : replacement_(std::make_unique<LineBuffer>(audible)),
      original_(std::cout.rdbuf(replacement_.get())) {
    ZR::ZRDebug::setSink(audible ? showReport : dropReport);
}

LibraryVoice::~LibraryVoice() {
    ZR::ZRDebug::setSink(nullptr);
    std::cout.rdbuf(original_);
}

}  // namespace zrctl
