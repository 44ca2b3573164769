#include "tools/md5.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <stdexcept>

namespace sysmend {

std::string md5(std::string_view text) {
    // The text is read as a C string: whatever follows an embedded NUL is not hashed.
    const std::string_view bytes = text.substr(0, text.find('\0'));
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_md5(), nullptr) != 1) {
        ERR_clear_error();
        throw std::runtime_error("MD5 digest unavailable");
    }
    static constexpr char kHex[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(2 * length);
    for (unsigned int i = 0; i < length; ++i) {
        hex += kHex[digest[i] >> 4];
        hex += kHex[digest[i] & 0x0f];
    }
    return hex;
}

}  // namespace sysmend
