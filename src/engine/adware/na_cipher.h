// AES and digest helpers of the adware subsystem: a one-shot AES call with the status codes and
// option bits of the platform's crypto library, two digests and the general cipher nacipher.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/values.h"

namespace sysmend {

using CCCryptorStatus = std::int32_t;
inline constexpr CCCryptorStatus kCCSuccess = 0;
inline constexpr CCCryptorStatus kCCParamError = -4300;
inline constexpr CCCryptorStatus kCCBufferTooSmall = -4301;
inline constexpr CCCryptorStatus kCCMemoryFailure = -4302;
inline constexpr CCCryptorStatus kCCAlignmentError = -4303;
inline constexpr CCCryptorStatus kCCDecodeError = -4304;
inline constexpr CCCryptorStatus kCCUnimplemented = -4305;

using CCOperation = std::uint32_t;
inline constexpr CCOperation kCCEncrypt = 0;
inline constexpr CCOperation kCCDecrypt = 1;

using CCAlgorithm = std::uint32_t;
inline constexpr CCAlgorithm kCCAlgorithmAES = 0;
inline constexpr CCAlgorithm kCCAlgorithmAES128 = 0;
inline constexpr CCAlgorithm kCCAlgorithmDES = 1;
inline constexpr CCAlgorithm kCCAlgorithm3DES = 2;
inline constexpr CCAlgorithm kCCAlgorithmCAST = 3;
inline constexpr CCAlgorithm kCCAlgorithmRC4 = 4;
inline constexpr CCAlgorithm kCCAlgorithmRC2 = 5;
inline constexpr CCAlgorithm kCCAlgorithmBlowfish = 6;

using CCOptions = std::uint32_t;
inline constexpr CCOptions kCCOptionPKCS7Padding = 1;
inline constexpr CCOptions kCCOptionECBMode = 2;

inline constexpr std::size_t kCCKeySizeAES128 = 16;
inline constexpr std::size_t kCCKeySizeAES192 = 24;
inline constexpr std::size_t kCCKeySizeAES256 = 32;
inline constexpr std::size_t kCCBlockSizeAES128 = 16;

// One-shot AES: CBC, or ECB with kCCOptionECBMode (then iv is ignored); a null iv is 16 zero
// bytes. Option bits other than the two above are ignored. The statuses, in the order checked:
//   kCCParamError      op is neither kCCEncrypt nor kCCDecrypt, or an algorithm value above 6;
//   kCCUnimplemented   the algorithms other than AES (DES .. Blowfish);
//   kCCParamError      a null key or a key length other than 16, 24 or 32;
//   kCCBufferTooSmall  dataOutAvailable is below the size needed (with padding: the input
//                      rounded up to the next block strictly above it when encrypting, the
//                      input length when decrypting; without: the input rounded down to a block);
//                      *dataOutMoved then holds that needed size;
//   kCCMemoryFailure   the cipher context could not be set up;
//   kCCAlignmentError  an input that is not a multiple of 16 when decrypting or without padding;
//   kCCDecodeError     bad PKCS#7 padding on decryption (an empty input included).
// After the last two, *dataOutMoved counts the bytes written before the failure.
// dataOutMoved may be null. dataOut must not overlap dataIn other than exactly.
CCCryptorStatus CCCrypt(CCOperation op, CCAlgorithm alg, CCOptions options, const void* key,
                        std::size_t keyLength, const void* iv, const void* dataIn,
                        std::size_t dataInLength, void* dataOut, std::size_t dataOutAvailable,
                        std::size_t* dataOutMoved);

// The first 16 bytes of the SHA-1 digest (one AES block, never the full 20).
// Throws NamedException "SHA1Exception" / "Unknown" if the digest cannot be computed.
Data sha1(const Data& data);

// The 32-byte SHA-256 digest. Throws NamedException "SHA256Exception" / "Unknown" on failure.
Data sha256(const Data& data);

// AES with a key forced to 32 bytes (any other length is replaced by sha256(key)).
// iv: only an IV whose length is not 16 takes part, through sha1(iv); null and 16-byte IVs both
// mean 16 zero bytes, on purpose. operation and options are passed to CCCrypt as they are.
// output: when given, it is the result object: grown (zero-filled) to the capacity
// (data length / 16 + 1) * 16 if shorter, then cut to the bytes written; the same bytes are
// returned. It is changed in place even when the call then throws.
// Throws NamedException for kCCUnimplemented, kCCDecodeError, kCCAlignmentError,
// kCCMemoryFailure, kCCBufferTooSmall and kCCParamError (names and reasons in the .cpp, e.g.
// "InputAlignmentException"); another failing status yields nullopt.
std::optional<Data> nacipher(const Data& key, const Data& data, const Data* iv,
                             std::uint32_t operation, std::uint32_t options,
                             Data* output = nullptr);

}  // namespace sysmend
