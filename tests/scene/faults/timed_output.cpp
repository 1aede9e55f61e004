#include "tests/scene/faults/timed_output.h"

#include <iostream>

namespace ZR::test {

TimedOutput::TimedOutput() : original_(std::cout.rdbuf(this)) {}

TimedOutput::~TimedOutput() {
    std::cout.rdbuf(original_);
}

std::vector<TimedLine> TimedOutput::lines() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
}

std::vector<TimedLine> TimedOutput::linesOf(const std::string& text) const {
    std::vector<TimedLine> found;
    for (TimedLine& line : lines())
        if (line.text == text)
            found.push_back(std::move(line));
    return found;
}

std::streamsize TimedOutput::xsputn(const char* text, std::streamsize length) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (std::streamsize i = 0; i < length; ++i) {
        if (text[i] != '\n') {
            unended_ += text[i];
            continue;
        }
        lines_.push_back({unended_, Clock::now()});
        unended_.clear();
    }
    return original_->sputn(text, length);
}

int TimedOutput::overflow(int character) {
    const char text = traits_type::to_char_type(character);
    return xsputn(&text, 1) == 1 ? character : traits_type::eof();
}

int TimedOutput::sync() {
    return original_->pubsync();
}

}  // namespace ZR::test
