#include "adware/na_cipher.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <algorithm>
#include <memory>

#include "platform/named_exception.h"

namespace sysmend {
namespace {

// EVP takes int lengths; whole-block chunks keep the cipher state continuous across calls.
constexpr std::size_t kMaxChunk = std::size_t{1} << 30;

constexpr unsigned char kZeroIv[kCCBlockSizeAES128] = {};

const EVP_CIPHER* aesCipher(std::size_t keyLength, bool ecb) {
    switch (keyLength) {
        case kCCKeySizeAES128:
            return ecb ? EVP_aes_128_ecb() : EVP_aes_128_cbc();
        case kCCKeySizeAES192:
            return ecb ? EVP_aes_192_ecb() : EVP_aes_192_cbc();
        case kCCKeySizeAES256:
            return ecb ? EVP_aes_256_ecb() : EVP_aes_256_cbc();
        default:
            return nullptr;
    }
}

std::size_t neededOutput(CCOperation op, bool padding, std::size_t length) {
    const std::size_t blocks = length / kCCBlockSizeAES128;
    if (!padding) {
        return blocks * kCCBlockSizeAES128;
    }
    return op == kCCEncrypt ? (blocks + 1) * kCCBlockSizeAES128 : length;
}

Data digest(const EVP_MD* md, const Data& data, std::size_t keep, const char* exceptionName) {
    unsigned char scratch[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(data.data(), data.size(), scratch, &length, md, nullptr) != 1) {
        ERR_clear_error();
        throw NamedException(exceptionName, "Unknown");
    }
    return Data(scratch, scratch + std::min<std::size_t>(keep, length));
}

struct StatusException {
    CCCryptorStatus status;
    const char* name;
    const char* reason;
};

// The names and reasons are part of the interface, odd spellings and blanks included.
constexpr StatusException kStatusExceptions[] = {
    {kCCUnimplemented, "FunctionNotImplementedException",
     "Function not implemented for the current algorithm."},
    {kCCDecodeError, "DecryptionException.", "Input data did not decode or decrypt properly."},
    {kCCAlignmentError, "InputAlignmentException", "Input size was not aligned properly. "},
    {kCCMemoryFailure, "MemoryAllocationFailure.", "Memory allocation failure."},
    {kCCBufferTooSmall, "InsufficentBufferException",
     "Insufficent buffer provided for specified operation."},
    {kCCParamError, "IllegalParameterValueException", "Illegal parameter value."},
};

}  // namespace

CCCryptorStatus CCCrypt(CCOperation op, CCAlgorithm alg, CCOptions options, const void* key,
                        std::size_t keyLength, const void* iv, const void* dataIn,
                        std::size_t dataInLength, void* dataOut, std::size_t dataOutAvailable,
                        std::size_t* dataOutMoved) {
    if (op != kCCEncrypt && op != kCCDecrypt) {
        return kCCParamError;
    }
    if (alg != kCCAlgorithmAES) {
        return alg <= kCCAlgorithmBlowfish ? kCCUnimplemented : kCCParamError;
    }
    const bool padding = (options & kCCOptionPKCS7Padding) != 0;
    const EVP_CIPHER* cipher =
        key != nullptr ? aesCipher(keyLength, (options & kCCOptionECBMode) != 0) : nullptr;
    if (cipher == nullptr) {
        return kCCParamError;
    }

    const std::size_t needed = neededOutput(op, padding, dataInLength);
    if (dataOutMoved != nullptr) {
        *dataOutMoved = needed;
    }
    if (needed > dataOutAvailable) {
        return kCCBufferTooSmall;
    }

    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> ctx(EVP_CIPHER_CTX_new(),
                                                                              EVP_CIPHER_CTX_free);
    const auto* ivBytes = static_cast<const unsigned char*>(iv != nullptr ? iv : kZeroIv);
    if (!ctx ||
        EVP_CipherInit_ex(ctx.get(), cipher, nullptr, static_cast<const unsigned char*>(key),
                          ivBytes, op == kCCEncrypt ? 1 : 0) != 1 ||
        EVP_CIPHER_CTX_set_padding(ctx.get(), padding ? 1 : 0) != 1) {
        ERR_clear_error();
        return kCCMemoryFailure;
    }

    // Never more than `needed` bytes are written: EVP holds back the last block when it
    // decrypts with padding, and emits the padding block only at the end when it encrypts.
    const auto* in = static_cast<const unsigned char*>(dataIn);
    auto* out = static_cast<unsigned char*>(dataOut);
    std::size_t moved = 0;
    bool ok = true;
    for (std::size_t done = 0; ok && done < dataInLength;) {
        const std::size_t chunk = std::min(dataInLength - done, kMaxChunk);
        int written = 0;
        ok = EVP_CipherUpdate(ctx.get(), out + moved, &written, in + done,
                              static_cast<int>(chunk)) == 1;
        moved += static_cast<std::size_t>(written);
        done += chunk;
    }
    int finalWritten = 0;
    ok = ok && EVP_CipherFinal_ex(ctx.get(), out + moved, &finalWritten) == 1;
    moved += static_cast<std::size_t>(finalWritten);
    if (dataOutMoved != nullptr) {
        *dataOutMoved = moved;
    }
    if (!ok) {
        ERR_clear_error();
        // The final block is all that can fail: either it is short or its padding is wrong.
        return dataInLength % kCCBlockSizeAES128 != 0 ? kCCAlignmentError : kCCDecodeError;
    }
    return kCCSuccess;
}

Data sha1(const Data& data) {
    return digest(EVP_sha1(), data, kCCBlockSizeAES128, "SHA1Exception");
}

Data sha256(const Data& data) {
    return digest(EVP_sha256(), data, kCCKeySizeAES256, "SHA256Exception");
}

std::optional<Data> nacipher(const Data& key, const Data& data, const Data* iv,
                             std::uint32_t operation, std::uint32_t options, Data* output) {
    const Data cipherKey = key.size() == kCCKeySizeAES256 ? key : sha256(key);
    const std::size_t capacity = (data.size() / kCCBlockSizeAES128 + 1) * kCCBlockSizeAES128;

    Data created;
    Data& out = output != nullptr ? *output : created;
    if (out.size() < capacity) {
        out.resize(capacity);
    }
    // A 16-byte IV is dropped on purpose: only IVs of another length take part, via SHA-1.
    const Data ivBytes =
        iv != nullptr && iv->size() != kCCBlockSizeAES128 ? sha1(*iv) : Data(kCCBlockSizeAES128, 0);

    std::size_t moved = 0;
    const CCCryptorStatus status =
        CCCrypt(operation, kCCAlgorithmAES, options, cipherKey.data(), cipherKey.size(),
                ivBytes.data(), data.data(), data.size(), out.data(), capacity, &moved);
    if (moved < out.size()) {
        out.resize(moved);
    }
    for (const StatusException& entry : kStatusExceptions) {
        if (status == entry.status) {
            throw NamedException(entry.name, entry.reason);
        }
    }
    if (status != kCCSuccess) {
        return std::nullopt;
    }
    return out;
}

}  // namespace sysmend
