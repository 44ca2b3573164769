#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "adware/na_cipher.h"
#include "adware/nsdata_aes.h"
#include "platform/named_exception.h"
#include "tools/md5.h"

namespace sysmend {
namespace {

Data fromHex(std::string_view hex) {
    Data bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(
            static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}

Data bytesOf(std::string_view text) {
    return Data(text.begin(), text.end());
}

// NIST SP 800-38A, F.2.5 (CBC-AES256) and F.1.5 (ECB-AES256).
const Data kNistKey = fromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
const Data kNistIv = fromHex("000102030405060708090a0b0c0d0e0f");
const Data kNistPlain = fromHex(
    "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");
const Data kNistCbc = fromHex(
    "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
    "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b");
const Data kNistEcbFirstBlock = fromHex("f3eed1bdb5d2a03c064b5a7e3db181f8");

struct CryptResult {
    CCCryptorStatus status;
    Data out;
    std::size_t moved;
};

CryptResult crypt(CCOperation op, CCOptions options, const Data& key, const Data* iv,
                  const Data& in, std::size_t available) {
    CryptResult r{0, Data(available), 0};
    r.status = CCCrypt(op, kCCAlgorithmAES, options, key.data(), key.size(),
                       iv != nullptr ? iv->data() : nullptr, in.data(), in.size(), r.out.data(),
                       available, &r.moved);
    r.out.resize(std::min(r.moved, available));
    return r;
}

void expectThrowsNamed(const std::function<void()>& call, const std::string& name,
                       const std::string& reason) {
    try {
        call();
        ADD_FAILURE() << "expected " << name;
    } catch (const NamedException& e) {
        EXPECT_EQ(e.name(), name);
        EXPECT_EQ(e.reason(), reason);
        EXPECT_EQ(std::string(e.what()), name + ": " + reason);
    }
}

TEST(CipherKnownAnswerTest, MatchesPublishedVectors) {
    EXPECT_EQ(crypt(kCCEncrypt, 0, kNistKey, &kNistIv, kNistPlain, 64).out, kNistCbc);
    EXPECT_EQ(crypt(kCCDecrypt, 0, kNistKey, &kNistIv, kNistCbc, 64).out, kNistPlain);
    // ECB ignores the IV it is given.
    const Data ecb = crypt(kCCEncrypt, kCCOptionECBMode, kNistKey, &kNistIv, kNistPlain, 64).out;
    EXPECT_EQ(Data(ecb.begin(), ecb.begin() + 16), kNistEcbFirstBlock);

    EXPECT_EQ(sha1({}), fromHex("da39a3ee5e6b4b0d3255bfef95601890"));
    EXPECT_EQ(sha1(bytesOf("abc")), fromHex("a9993e364706816aba3e25717850c26c"));
    EXPECT_EQ(sha256({}),
              fromHex("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
    EXPECT_EQ(sha256(bytesOf("abc")),
              fromHex("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
    EXPECT_EQ(md5(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(md5("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(md5(std::string_view("abc\0def", 7)), md5("abc"));
}

TEST(CipherCCCryptTest, PaddingRoundTripAndNullIv) {
    const Data plain = bytesOf("twenty bytes of txt");
    const Data zeroIv(16, 0);
    const CryptResult enc = crypt(kCCEncrypt, kCCOptionPKCS7Padding, kNistKey, nullptr, plain, 64);
    ASSERT_EQ(enc.status, kCCSuccess);
    EXPECT_EQ(enc.moved, 32u);
    EXPECT_EQ(crypt(kCCEncrypt, kCCOptionPKCS7Padding, kNistKey, &zeroIv, plain, 64).out, enc.out);
    const CryptResult dec =
        crypt(kCCDecrypt, kCCOptionPKCS7Padding, kNistKey, nullptr, enc.out, 32);
    EXPECT_EQ(dec.status, kCCSuccess);
    EXPECT_EQ(dec.out, plain);
}

TEST(CipherCCCryptTest, ReportsFailuresWithTheirStatus) {
    const Data block(16, 0x41);
    const Data odd(17, 0x41);
    EXPECT_EQ(crypt(kCCEncrypt, 0, kNistKey, nullptr, odd, 64).status, kCCAlignmentError);
    EXPECT_EQ(crypt(kCCDecrypt, kCCOptionPKCS7Padding, kNistKey, nullptr, odd, 64).status,
              kCCAlignmentError);

    // A block whose plaintext ends in 0x00 can never carry valid PKCS#7 padding.
    const Data badPad = crypt(kCCEncrypt, 0, kNistKey, nullptr, Data(16, 0), 16).out;
    EXPECT_EQ(crypt(kCCDecrypt, kCCOptionPKCS7Padding, kNistKey, nullptr, badPad, 16).status,
              kCCDecodeError);
    EXPECT_EQ(crypt(kCCDecrypt, kCCOptionPKCS7Padding, kNistKey, nullptr, {}, 16).status,
              kCCDecodeError);

    const CryptResult small = crypt(kCCEncrypt, kCCOptionPKCS7Padding, kNistKey, nullptr, odd, 16);
    EXPECT_EQ(small.status, kCCBufferTooSmall);
    EXPECT_EQ(small.moved, 32u);
    EXPECT_EQ(crypt(kCCDecrypt, kCCOptionPKCS7Padding, kNistKey, nullptr, kNistCbc, 63).moved, 64u);

    EXPECT_EQ(crypt(kCCEncrypt, 0, Data(20, 1), nullptr, block, 16).status, kCCParamError);
    Data out(16);
    EXPECT_EQ(CCCrypt(kCCEncrypt, kCCAlgorithmDES, 0, kNistKey.data(), 8, nullptr, block.data(), 16,
                      out.data(), 16, nullptr),
              kCCUnimplemented);
}

TEST(CipherNacipherTest, DerivesKeyAndIvAsDocumented) {
    const Data plain = bytesOf("a message for nacipher");
    const Data shortKey = bytesOf("sixteen byte key");
    const Data viaNacipher = *nacipher(shortKey, plain, nullptr, kCCEncrypt, kCCOptionPKCS7Padding);
    EXPECT_EQ(viaNacipher,
              crypt(kCCEncrypt, kCCOptionPKCS7Padding, sha256(shortKey), nullptr, plain, 64).out);
    EXPECT_EQ(*nacipher(kNistKey, plain, nullptr, kCCEncrypt, kCCOptionPKCS7Padding),
              crypt(kCCEncrypt, kCCOptionPKCS7Padding, kNistKey, nullptr, plain, 64).out);

    const Data iv16 = kNistIv;
    EXPECT_EQ(*nacipher(kNistKey, plain, &iv16, kCCEncrypt, kCCOptionPKCS7Padding),
              *nacipher(kNistKey, plain, nullptr, kCCEncrypt, kCCOptionPKCS7Padding));
    const Data iv10 = bytesOf("ten bytes!");
    const Data hashedIv = sha1(iv10);
    EXPECT_EQ(*nacipher(kNistKey, plain, &iv10, kCCEncrypt, kCCOptionPKCS7Padding),
              crypt(kCCEncrypt, kCCOptionPKCS7Padding, kNistKey, &hashedIv, plain, 64).out);
}

TEST(CipherNacipherTest, SizesOutputToTheBytesWritten) {
    EXPECT_EQ(nacipher(kNistKey, {}, nullptr, kCCEncrypt, kCCOptionPKCS7Padding)->size(), 16u);
    const Data plain(32, 0x5a);
    const Data encrypted = *nacipher(kNistKey, plain, nullptr, kCCEncrypt, kCCOptionPKCS7Padding);
    EXPECT_EQ(encrypted.size(), 48u);

    Data shorter(3, 0xff);
    Data longer(100, 0xff);
    EXPECT_EQ(*nacipher(kNistKey, plain, nullptr, kCCEncrypt, kCCOptionPKCS7Padding, &shorter),
              encrypted);
    EXPECT_EQ(*nacipher(kNistKey, plain, nullptr, kCCEncrypt, kCCOptionPKCS7Padding, &longer),
              encrypted);
    EXPECT_EQ(shorter, encrypted);
    EXPECT_EQ(longer, encrypted);
}

TEST(CipherNacipherTest, ThrowsNamedExceptionsForFailingStatuses) {
    const Data key = bytesOf("key");
    expectThrowsNamed([&] { nacipher(key, Data(17, 1), nullptr, kCCDecrypt, 1); },
                      "InputAlignmentException", "Input size was not aligned properly. ");
    const Data badPad = *nacipher(key, Data(16, 0), nullptr, kCCEncrypt, 0);
    expectThrowsNamed([&] { nacipher(key, badPad, nullptr, kCCDecrypt, 1); },
                      "DecryptionException.", "Input data did not decode or decrypt properly.");
    expectThrowsNamed([&] { nacipher(key, badPad, nullptr, 9, 1); },
                      "IllegalParameterValueException", "Illegal parameter value.");
}

TEST(CipherDataAesTest, DecryptPairPassesOptionsAndIgnoresIv) {
    const Data key = bytesOf("any length key");
    const Data plain = bytesOf("payload");
    const Data encrypted = *nacipher(key, plain, nullptr, kCCEncrypt, kCCOptionPKCS7Padding);
    EXPECT_EQ(*decrypt_ar(encrypted, key), plain);
    const Data iv = bytesOf("an ignored iv");
    EXPECT_EQ(*decrypt_ar(encrypted, key, &iv, kCCOptionPKCS7Padding), plain);
    // Without the padding option the pad bytes stay in the result.
    const Data raw = *decrypt_ar(encrypted, key, nullptr, 0);
    ASSERT_EQ(raw.size(), 16u);
    EXPECT_EQ(raw.back(), 16 - plain.size());
}

TEST(CipherDataAesTest, StringKeyEncryptionRoundTrips) {
    const Data plain = bytesOf("signature database bytes");
    const std::string key = "net.qvarlo.signature_data";
    const Data encrypted = *stringToData(plain, key);

    Data paddedKey = bytesOf(key);
    paddedKey.resize(32, 0);
    EXPECT_EQ(encrypted,
              crypt(kCCEncrypt, kCCOptionPKCS7Padding, paddedKey, nullptr, plain, 64).out);
    EXPECT_EQ(*decryptWithStringKey(encrypted, key), plain);

    EXPECT_FALSE(decryptWithStringKey(Data(encrypted.begin(), encrypted.end() - 1), key));
    EXPECT_FALSE(decryptWithStringKey(encrypted, "another key"));

    // Only the first 32 characters of a longer key count.
    const std::string key32 = "0123456789abcdef0123456789abcdef";
    EXPECT_EQ(*stringToData(plain, key32 + "tail"), *stringToData(plain, key32));
    EXPECT_NE(*stringToData(plain, key32), *stringToData(plain, key32.substr(0, 31)));
}

}  // namespace
}  // namespace sysmend
