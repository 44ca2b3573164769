#include "adware/nsdata_aes.h"

#include <algorithm>
#include <array>

#include "adware/na_cipher.h"

namespace sysmend {
namespace {

std::optional<Data> cryptWithStringKey(CCOperation op, const Data& data, std::string_view key) {
    // Mirrors a bounded C-string copy into 33 zero bytes of which the cipher takes 32: the key
    // ends at its first NUL, a longer key is cut, a shorter one is padded with zeros.
    std::array<std::uint8_t, kCCKeySizeAES256 + 1> keyBuffer{};
    const std::string_view cString = key.substr(0, std::min(key.find('\0'), kCCKeySizeAES256));
    std::copy(cString.begin(), cString.end(), keyBuffer.begin());

    Data out(data.size() + kCCBlockSizeAES128);
    std::size_t moved = 0;
    if (CCCrypt(op, kCCAlgorithmAES, kCCOptionPKCS7Padding, keyBuffer.data(), kCCKeySizeAES256,
                nullptr, data.data(), data.size(), out.data(), out.size(), &moved) != kCCSuccess) {
        return std::nullopt;
    }
    out.resize(moved);
    return out;
}

}  // namespace

std::optional<Data> decrypt_ar(const Data& self, const Data& key) {
    return decrypt_ar(self, key, nullptr, kCCOptionPKCS7Padding);
}

std::optional<Data> decrypt_ar(const Data& self, const Data& key, const Data* /*iv*/,
                               std::uint32_t op) {
    return nacipher(key, self, nullptr, kCCDecrypt, op);
}

std::optional<Data> stringToData(const Data& self, std::string_view key) {
    return cryptWithStringKey(kCCEncrypt, self, key);
}

std::optional<Data> decryptWithStringKey(const Data& encrypted, std::string_view key) {
    return cryptWithStringKey(kCCDecrypt, encrypted, key);
}

}  // namespace sysmend
