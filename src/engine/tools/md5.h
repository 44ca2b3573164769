// Hexadecimal MD5 of a string, as used for short identifiers (not for security).
#pragma once

#include <string>
#include <string_view>

namespace sysmend {

// 32 lower-case hex digits of the MD5 of the bytes before the first NUL (all of them if none).
// Throws std::runtime_error only if the crypto library refuses MD5 (a FIPS-only setup).
std::string md5(std::string_view text);

}  // namespace sysmend
