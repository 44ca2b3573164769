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
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(
            static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
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
constexpr CCOptions kPad = kCCOptionPKCS7Padding;

struct CryptResult {
    CCCryptorStatus status;
    Data out;
    std::size_t moved;
};

CryptResult crypt(CCOperation op, CCOptions options, const Data& key, const Data* iv,
                  const Data& in, std::size_t available = 64) {
    CryptResult r{0, Data(available), 0};
    r.status = CCCrypt(op, kCCAlgorithmAES, options, key.data(), key.size(),
                       iv != nullptr ? iv->data() : nullptr, in.data(), in.size(), r.out.data(),
                       available, &r.moved);
    r.out.resize(std::min(r.moved, available));
    return r;
}

// What CCCrypt gives for a padded encryption: the reference for the wrappers below.
Data encrypted(const Data& key, const Data& plain, const Data* iv = nullptr) {
    return crypt(kCCEncrypt, kPad, key, iv, plain).out;
}

TEST(CipherKnownAnswerTest, MatchesPublishedVectors) {
    EXPECT_EQ(crypt(kCCEncrypt, 0, kNistKey, &kNistIv, kNistPlain).out, kNistCbc);
    EXPECT_EQ(crypt(kCCDecrypt, 0, kNistKey, &kNistIv, kNistCbc).out, kNistPlain);
    // ECB ignores the IV it is given.
    const Data ecb = crypt(kCCEncrypt, kCCOptionECBMode, kNistKey, &kNistIv, kNistPlain).out;
    EXPECT_EQ(Data(ecb.begin(), ecb.begin() + 16), fromHex("f3eed1bdb5d2a03c064b5a7e3db181f8"));

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

TEST(CipherCCCryptTest, PadsWithANullIvAndReportsFailuresWithTheirStatus) {
    const Data plain = bytesOf("twenty bytes of txt"), zeroIv(16, 0), odd(17, 0x41);
    const CryptResult enc = crypt(kCCEncrypt, kPad, kNistKey, nullptr, plain);
    ASSERT_EQ(enc.status, kCCSuccess);
    EXPECT_EQ(enc.moved, 32u);
    EXPECT_EQ(encrypted(kNistKey, plain, &zeroIv), enc.out);
    const CryptResult dec = crypt(kCCDecrypt, kPad, kNistKey, nullptr, enc.out, 32);
    EXPECT_EQ(dec.status, kCCSuccess);
    EXPECT_EQ(dec.out, plain);

    EXPECT_EQ(crypt(kCCEncrypt, 0, kNistKey, nullptr, odd).status, kCCAlignmentError);
    EXPECT_EQ(crypt(kCCDecrypt, kPad, kNistKey, nullptr, odd).status, kCCAlignmentError);
    // A block whose plaintext ends in 0x00 can never carry valid PKCS#7 padding.
    const Data badPad = crypt(kCCEncrypt, 0, kNistKey, nullptr, Data(16, 0), 16).out;
    EXPECT_EQ(crypt(kCCDecrypt, kPad, kNistKey, nullptr, badPad, 16).status, kCCDecodeError);
    EXPECT_EQ(crypt(kCCDecrypt, kPad, kNistKey, nullptr, {}, 16).status, kCCDecodeError);

    const CryptResult small = crypt(kCCEncrypt, kPad, kNistKey, nullptr, odd, 16);
    EXPECT_EQ(small.status, kCCBufferTooSmall);
    EXPECT_EQ(small.moved, 32u);
    EXPECT_EQ(crypt(kCCDecrypt, kPad, kNistKey, nullptr, kNistCbc, 63).moved, 64u);

    EXPECT_EQ(crypt(kCCEncrypt, 0, Data(20, 1), nullptr, zeroIv, 16).status, kCCParamError);
    Data out(16);
    EXPECT_EQ(CCCrypt(kCCEncrypt, kCCAlgorithmDES, 0, kNistKey.data(), 8, nullptr, zeroIv.data(),
                      16, out.data(), 16, nullptr),
              kCCUnimplemented);
}

TEST(CipherNacipherTest, DerivesKeyAndIvAndSizesOutputToTheBytesWritten) {
    const Data plain = bytesOf("a message for nacipher"), shortKey = bytesOf("sixteen byte key");
    auto nac = [&](const Data& key, const Data* iv = nullptr, Data* output = nullptr) {
        return *nacipher(key, plain, iv, kCCEncrypt, kPad, output);
    };
    EXPECT_EQ(nac(shortKey), encrypted(sha256(shortKey), plain));
    EXPECT_EQ(nac(kNistKey), encrypted(kNistKey, plain));
    EXPECT_EQ(nac(kNistKey, &kNistIv), nac(kNistKey));  // a 16-byte IV is dropped
    const Data iv10 = bytesOf("ten bytes!"), hashedIv = sha1(iv10);
    EXPECT_EQ(nac(kNistKey, &iv10), encrypted(kNistKey, plain, &hashedIv));

    EXPECT_EQ(nacipher(kNistKey, {}, nullptr, kCCEncrypt, kPad)->size(), 16u);
    const Data expected = nac(kNistKey);
    ASSERT_EQ(expected.size(), 32u);
    for (const std::size_t size : {3, 100}) {
        Data output(size, 0xff);
        EXPECT_EQ(nac(kNistKey, nullptr, &output), expected);
        EXPECT_EQ(output, expected);
    }
}

TEST(CipherNacipherTest, ThrowsNamedExceptionsForFailingStatuses) {
    const Data key = bytesOf("key");
    const Data badPad = *nacipher(key, Data(16, 0), nullptr, kCCEncrypt, 0);
    const struct {
        std::function<void()> call;
        std::string name, reason;
    } cases[] = {
        {[&] { nacipher(key, Data(17, 1), nullptr, kCCDecrypt, 1); }, "InputAlignmentException",
         "Input size was not aligned properly. "},
        {[&] { nacipher(key, badPad, nullptr, kCCDecrypt, 1); }, "DecryptionException.",
         "Input data did not decode or decrypt properly."},
        {[&] { nacipher(key, badPad, nullptr, 9, 1); }, "IllegalParameterValueException",
         "Illegal parameter value."},
    };
    for (const auto& c : cases) {
        try {
            c.call();
            ADD_FAILURE() << "expected " << c.name;
        } catch (const NamedException& e) {
            EXPECT_EQ(e.name(), c.name);
            EXPECT_EQ(e.reason(), c.reason);
            EXPECT_EQ(std::string(e.what()), c.name + ": " + c.reason);
        }
    }
}

TEST(CipherDataAesTest, DecryptsAndEncryptsWithDataAndStringKeys) {
    const Data key = bytesOf("any length key"), plain = bytesOf("payload"), iv = bytesOf("an iv");
    const Data sealed = *nacipher(key, plain, nullptr, kCCEncrypt, kPad);
    EXPECT_EQ(*decrypt_ar(sealed, key), plain);
    EXPECT_EQ(*decrypt_ar(sealed, key, &iv, kPad), plain);  // the IV is ignored
    // Without the padding option the pad bytes stay in the result.
    const Data raw = *decrypt_ar(sealed, key, nullptr, 0);
    ASSERT_EQ(raw.size(), 16u);
    EXPECT_EQ(raw.back(), 16 - plain.size());

    const std::string stringKey = "net.qvarlo.signature_data";
    const Data withString = *stringToData(plain, stringKey);
    Data paddedKey = bytesOf(stringKey);
    paddedKey.resize(32, 0);
    EXPECT_EQ(withString, encrypted(paddedKey, plain));
    EXPECT_EQ(*decryptWithStringKey(withString, stringKey), plain);
    EXPECT_FALSE(decryptWithStringKey(Data(withString.begin(), withString.end() - 1), stringKey));
    EXPECT_FALSE(decryptWithStringKey(withString, "another key"));
    // Only the first 32 characters of a longer key count.
    const std::string key32 = "0123456789abcdef0123456789abcdef";
    EXPECT_EQ(*stringToData(plain, key32 + "tail"), *stringToData(plain, key32));
    EXPECT_NE(*stringToData(plain, key32), *stringToData(plain, key32.substr(0, 31)));
}

}  // namespace
}  // namespace sysmend
