#pragma once

#include <cstdio>
#include <functional>
#include <ios>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>

namespace zrctl {

/// Keeps what the library says by itself (its reports, and its lines on standard output and
/// error, C streams included) out of the tool's own output while an object of this class lives:
/// dropped, or, when asked for, written to standard error as lines that start with "library: ".
/// One object at a time.
class LibraryVoice {
  public:
    explicit LibraryVoice(bool audible);
    LibraryVoice(const LibraryVoice&) = delete;
    LibraryVoice& operator=(const LibraryVoice&) = delete;
    ~LibraryVoice();

  private:
    std::unique_ptr<std::streambuf> replacement_;
    std::streambuf* original_;
    std::FILE* originalOutput_;
    std::FILE* originalErrors_;
};

/// Hears what the library prints on std::cout while an object of this class lives, for a tool that
/// has to tell it. Later it goes where it would have gone.
class LibraryEar {
  public:
    LibraryEar();
    LibraryEar(const LibraryEar&) = delete;
    LibraryEar& operator=(const LibraryEar&) = delete;
    ~LibraryEar();

    /// What it heard on one line, without the last line's end.
    std::string text() const;

  private:
    std::stringbuf heard_;
    std::streambuf* original_;
};

/// Tells of each line that the library prints on std::cout while an object of this class lives, for
/// a tool that goes by them. They go on to where they would have gone. The library's threads must
/// have ended before the object does.
class LibraryListener {
  public:
    /// @param hear  is called by the thread that prints, with the line without its end
    explicit LibraryListener(std::function<void(const std::string&)> hear);
    LibraryListener(const LibraryListener&) = delete;
    LibraryListener& operator=(const LibraryListener&) = delete;
    ~LibraryListener();

  private:
    std::streambuf* original_;
    std::unique_ptr<std::streambuf> replacement_;
};

}  // namespace zrctl
