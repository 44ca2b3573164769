// AES conveniences on raw bytes: a decrypt pair over nacipher and a string-keyed AES-256
// encryption whose output the signature database loader decrypts.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/values.h"

namespace sysmend {

// decrypt_ar(self, key, nullptr, kCCOptionPKCS7Padding).
std::optional<Data> decrypt_ar(const Data& self, const Data& key);

// Always decrypts: nacipher(key, self, no IV, kCCDecrypt, op). `op` is passed on as the
// options and `iv` is accepted but never used, so the IV is always zero. Throws what nacipher
// throws (NamedException).
std::optional<Data> decrypt_ar(const Data& self, const Data& key, const Data* iv, std::uint32_t op);

// Despite its name, encrypts self: AES-256-CBC, PKCS#7, zero IV, with the key string turned
// into 32 key bytes the way a C-string copy into a 33-byte zeroed buffer does it (cut at the
// first NUL and after 32 bytes, zero-padded). nullopt on failure; never throws.
std::optional<Data> stringToData(const Data& self, std::string_view key);

// The inverse of stringToData with the same key derivation: nullopt when the data does not
// decrypt (wrong key, corrupt or truncated input); never throws.
std::optional<Data> decryptWithStringKey(const Data& encrypted, std::string_view key);

}  // namespace sysmend
