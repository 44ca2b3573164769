// Property-list reader and writers under arbitrary bytes: whatever parses must serialise in
// both formats and read back as the same value.
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "platform/plist.h"
#include "same_value.h"

namespace {

using namespace sysmend;
using namespace sysmend::plist;

// Counts the nodes of a value as a tree, stopping at budget: a shared-object bomb is small as
// read but would take the XML writer (and any comparison) through 2^n nodes.
std::size_t treeSize(const Value& value, std::size_t budget) {
    std::size_t size = 1;
    if (const Array* elements = value.asArray()) {
        for (const Value& element : *elements) {
            if (size > budget)
                break;
            size += treeSize(element, budget - size);
        }
    } else if (const Dictionary* entries = value.asDictionary()) {
        for (const auto& entry : *entries) {
            if (size > budget)
                break;
            size += treeSize(entry.second, budget - size);
        }
    }
    return size;
}

void check(bool condition) {
    if (!condition)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto value = parse({data, size});
    if (!value || treeSize(*value, 100000) > 100000)
        return 0;

    // Written values may be larger or nest one level deeper (a UID becomes a dictionary in
    // XML) than the input allowed.
    ReadLimits relaxed;
    relaxed.maxBytes = std::size_t{1} << 30;
    relaxed.maxDepth += 1;
    relaxed.maxObjects *= 4;
    relaxed.maxDecodedBytes = std::size_t{1} << 30;

    std::string error;
    const auto binary = parse(serialize(*value, Format::Binary), relaxed, &error);
    check(binary.has_value());
    check(same(*value, *binary, std::chrono::microseconds(1)));

    const auto xml = parse(serialize(*value, Format::Xml), relaxed, &error);
    check(xml.has_value());
    check(same(*value, *xml, std::chrono::seconds(1)));
    describe(*value);
    return 0;
}
