// Decoder for the DER form of a code signature's entitlements (the blob that newer signing
// tools write beside the XML property list).
//
// Layout: an [APPLICATION 16] constructed element holding an INTEGER version and a
// [CONTEXT 16] dictionary. A dictionary is a series of SEQUENCEs of a UTF8String key and a
// value; a value is a BOOLEAN, an INTEGER (up to 64 bits), a UTF8String, a SEQUENCE (array) or
// a nested dictionary. A universal SET is accepted as a dictionary too, since some third-party
// signers write one.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/plist.h"

namespace sysmend {

// The entitlements dictionary, or nullopt when the bytes are not in this layout or use a
// type outside it. Nesting deeper than 64 containers is rejected. Trailing bytes after the
// outer element are ignored; a repeated key keeps its last value.
std::optional<plist::Value> decodeDerEntitlements(std::span<const std::uint8_t> der);

}  // namespace sysmend
