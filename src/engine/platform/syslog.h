// The product's few diagnostic lines ("adware==3", "fire fox", ...). They go to the system
// log, never to a file: on Linux that is standard error, one line per call in the form
// "sysmend[<pid>]: <text>".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sysmend {

// Writes one line. Safe from any thread; lines from different threads never interleave.
void logLine(std::string_view text);

// While an object of this class lives, logLine appends its text here instead of writing it,
// so that tests can check the lines. Captures nest: the newest one receives the lines, and
// the one before it takes over again when it goes.
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The lines captured so far, in the order they were logged.
    std::vector<std::string> lines() const;

  private:
    friend void logLine(std::string_view text);

    LogCapture* previous_;
    std::vector<std::string> lines_;  // guarded by the log's mutex
};

}  // namespace sysmend
