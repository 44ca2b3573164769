#include "platform/syslog.h"

#include <unistd.h>

#include <mutex>

namespace sysmend {
namespace {

std::mutex& logMutex() {
    static std::mutex mutex;
    return mutex;
}

LogCapture*& activeCapture() {
    static LogCapture* capture = nullptr;
    return capture;
}

}  // namespace

void logLine(std::string_view text) {
    std::lock_guard lock(logMutex());
    if (LogCapture* capture = activeCapture()) {
        capture->lines_.emplace_back(text);
        return;
    }
    std::string line = "sysmend[" + std::to_string(::getpid()) + "]: ";
    line.append(text);
    line += '\n';
    // One write per line keeps lines from concurrent processes and threads whole.
    [[maybe_unused]] ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

LogCapture::LogCapture() {
    std::lock_guard lock(logMutex());
    previous_ = activeCapture();
    activeCapture() = this;
}

LogCapture::~LogCapture() {
    std::lock_guard lock(logMutex());
    activeCapture() = previous_;
}

std::vector<std::string> LogCapture::lines() const {
    std::lock_guard lock(logMutex());
    return lines_;
}

}  // namespace sysmend
