#pragma once

#include <chrono>
#include <mutex>
#include <streambuf>
#include <string>
#include <vector>

namespace ZR::test {

using Clock = std::chrono::steady_clock;

/// A line that was printed, and when its end was.
struct TimedLine {
    std::string text;
    Clock::time_point when;
};

/// Takes the time of every line that goes to std::cout, on the thread that prints it, and hands it on
/// to where it would have gone. To be made before the threads that print, and to outlive them.
class TimedOutput : private std::streambuf {
  public:
    TimedOutput();
    TimedOutput(const TimedOutput&) = delete;
    TimedOutput& operator=(const TimedOutput&) = delete;
    ~TimedOutput() override;

    /// What was printed up to now, the lines without their ends.
    std::vector<TimedLine> lines() const;
    /// The lines with exactly this text.
    std::vector<TimedLine> linesOf(const std::string& text) const;
    int count(const std::string& text) const { return static_cast<int>(linesOf(text).size()); }

  protected:
    std::streamsize xsputn(const char* text, std::streamsize length) override;
    int overflow(int character) override;
    int sync() override;

  private:
    std::streambuf* const original_;
    mutable std::mutex mutex_;
    std::string unended_;
    std::vector<TimedLine> lines_;
};

}  // namespace ZR::test
