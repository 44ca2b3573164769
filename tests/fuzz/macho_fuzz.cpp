// The code-signature reader under arbitrary bytes, read both as a whole executable and as a
// bare DER entitlements blob: no read outside the input, and any answer is a dictionary.
#include <cstdint>
#include <cstdlib>
#include <span>

#include "appviewer/code_signature.h"
#include "appviewer/der_entitlements.h"

namespace {

void checkDictionary(const std::optional<sysmend::plist::Value>& value) {
    if (value && !value->asDictionary())
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    checkDictionary(sysmend::entitlementsFromMachO(bytes));
    checkDictionary(sysmend::decodeDerEntitlements(bytes));
    return 0;
}
