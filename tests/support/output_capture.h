#pragma once

#include <string>

namespace ZR::test {

/// Takes what the process writes to standard output and standard error, by whatever way it does,
/// from construction to release() or the end of its life. Nothing is flushed here: what stays in a
/// buffer was not written.
class OutputCapture {
  public:
    OutputCapture();
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;
    ~OutputCapture();

    /// The bytes that went to standard output up to now.
    std::string output() const;

    /// The bytes that went to standard error up to now.
    std::string errors() const;

    /// Gives both back to whom they belong; what was captured stays readable.
    void release();

  private:
    int outputFile_;
    int errorFile_;
    int savedOutput_;
    int savedErrors_;
};

}  // namespace ZR::test
