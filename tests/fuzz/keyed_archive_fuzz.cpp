// Keyed-archive decoder under arbitrary bytes: whatever decodes must encode, and the encoding
// must decode to the same value.
#include <chrono>
#include <cstdint>
#include <cstdlib>

#include "platform/keyed_archive.h"

namespace {

using namespace sysmend;
using namespace sysmend::plist;

// Equality up to the nanoseconds a date may gain or lose as seconds in a double.
bool same(const Value& a, const Value& b) {
    if (a.type() != b.type())
        return false;
    if (const Array* x = a.asArray()) {
        const Array& y = *b.asArray();
        if (x->size() != y.size())
            return false;
        for (std::size_t i = 0; i < x->size(); ++i) {
            if (!same((*x)[i], y[i]))
                return false;
        }
        return true;
    }
    if (const Dictionary* x = a.asDictionary()) {
        const Dictionary& y = *b.asDictionary();
        if (x->size() != y.size())
            return false;
        for (const auto& [key, value] : *x) {
            const Value* other = y.find(key);
            if (!other || !same(value, *other))
                return false;
        }
        return true;
    }
    if (a.asDate()) {
        const auto difference = *a.asDate() - *b.asDate();
        return difference <= std::chrono::microseconds(1) &&
               -difference <= std::chrono::microseconds(1);
    }
    return a == b;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A small expansion cap keeps the comparisons below (which walk the value as a tree) fast.
    keyed_archive::DecodeLimits limits;
    limits.maxExpandedSize = 100000;
    const auto value = keyed_archive::decode({data, size}, limits);
    if (!value)
        return 0;
    const auto again = keyed_archive::decode(keyed_archive::encode(*value), limits);
    if (!again || !same(*value, *again))
        std::abort();
    return 0;
}
