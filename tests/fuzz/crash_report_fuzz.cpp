// The identifier-line rule of crash reports under arbitrary bytes: whatever it answers is one
// trimmed piece of one line, and reading the same bytes as the start of a longer file never
// loses an answer.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "crashes/crash_scan.h"

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto whole = sysmend::crashReportIdentifier(bytes);
    const auto prefix = sysmend::crashReportIdentifier(bytes, true);
    if (whole)
        check(prefix == whole);
    if (!prefix)
        return 0;
    const std::string& id = *prefix;
    check(id.size() <= size);
    check(id.find_first_of(":\n\r\v\f") == std::string::npos);
    check(id.find("\xE2\x80\xA8") == std::string::npos && id.find("\xC2\x85") == std::string::npos);
    if (!id.empty()) {
        check(id.front() != ' ' && id.front() != '\t');
        check(id.back() != ' ' && id.back() != '\t');
    }
    return 0;
}
