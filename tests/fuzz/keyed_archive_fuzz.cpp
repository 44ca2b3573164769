// Keyed-archive decoder under arbitrary bytes: whatever decodes must encode, and the encoding
// must decode to the same value.
#include <chrono>
#include <cstdint>
#include <cstdlib>

#include "platform/keyed_archive.h"
#include "same_value.h"

using namespace sysmend;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A small expansion cap keeps the comparisons below (which walk the value as a tree) fast.
    keyed_archive::DecodeLimits limits;
    limits.maxExpandedSize = 100000;
    const auto value = keyed_archive::decode({data, size}, limits);
    if (!value)
        return 0;
    const auto again = keyed_archive::decode(keyed_archive::encode(*value), limits);
    if (!again || !plist::same(*value, *again, std::chrono::microseconds(1)))
        std::abort();
    return 0;
}
