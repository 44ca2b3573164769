#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "appviewer/code_signature.h"
#include "appviewer/der_entitlements.h"
#include "sample/fake_volume.h"
#include "sample/macho_builder.h"

namespace sysmend {
namespace {

using sample::Arch;
using sample::buildMachO;
using sample::EntitlementsBlobs;

const std::string kLuLuHelper = SYSMEND_TEST_DATA "/macho/LuLu Helper";

plist::Value sampleEntitlements() {
    plist::Dictionary nested;
    nested.set("com.example.depth", 2);
    plist::Dictionary d;
    d.set("com.apple.security.app-sandbox", true);
    d.set("com.apple.security.device.camera", false);
    d.set("com.apple.security.application-groups", plist::Array{"group.com.example.café", "x"});
    d.set("com.example.negative", -300);
    d.set("com.example.large", std::int64_t{1} << 40);
    d.set("com.example.nested", nested);
    d.set(std::string(200, 'k'), "a key long enough for multi-byte DER lengths");
    return d;
}

// A stub carrying the sample entitlements.
Data stub(std::vector<Arch> architectures = {Arch::X86_64},
          EntitlementsBlobs blobs = EntitlementsBlobs::Xml, bool codeSignature = true) {
    return buildMachO({std::move(architectures), codeSignature, blobs, sampleEntitlements()});
}

Data unsignedStub() {
    return stub({Arch::X86_64}, EntitlementsBlobs::None, false);
}

std::size_t find(const Data& bytes, const Data& needle) {
    return static_cast<std::size_t>(
        std::search(bytes.begin(), bytes.end(), needle.begin(), needle.end()) - bytes.begin());
}

void put32(Data& bytes, std::size_t offset, std::uint32_t value, bool bigEndian) {
    for (int i = 0; i < 4; ++i) {
        bytes.at(offset + i) = static_cast<std::uint8_t>(value >> (bigEndian ? 24 - 8 * i : 8 * i));
    }
}

TEST(CodeSignatureTest, ReadsRealDeveloperIdExecutable) {
    std::ifstream in(kLuLuHelper, std::ios::binary);
    const Data bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    plist::Dictionary expected;
    expected.set("com.apple.security.application-groups",
                 plist::Array{"group.com.objective-see.lulu"});
    EXPECT_EQ(entitlementsFromMachO(bytes), plist::Value(expected));
    EXPECT_EQ(entitlementsFromFile(kLuLuHelper), plist::Value(expected));
}

TEST(CodeSignatureTest, ReadsEveryLayoutAndEncoding) {
    const std::vector<std::vector<Arch>> layouts = {{Arch::X86_64},
                                                    {Arch::I386},
                                                    {Arch::Arm64},
                                                    {Arch::PowerPC},
                                                    {Arch::X86_64, Arch::Arm64},
                                                    {Arch::I386, Arch::PowerPC, Arch::Arm64}};
    for (std::size_t i = 0; i < layouts.size(); ++i) {
        for (auto blobs :
             {EntitlementsBlobs::Xml, EntitlementsBlobs::Der, EntitlementsBlobs::Both}) {
            SCOPED_TRACE("layout " + std::to_string(i) + ", blobs " +
                         std::to_string(static_cast<int>(blobs)));
            const Data bytes = stub(layouts[i], blobs);
            EXPECT_EQ(entitlementsFromMachO(bytes), sampleEntitlements());
        }
    }
}

TEST(CodeSignatureTest, PrefersXmlAndFallsBackToDer) {
    plist::Dictionary xml;
    xml.set("source", "xml");
    plist::Dictionary der;
    der.set("source", "dml");
    Data bytes = buildMachO({{Arch::X86_64}, true, EntitlementsBlobs::Both, xml});
    // Make the DER blob say something else, then hide the XML blob from the reader.
    bytes[find(bytes, {0x0c, 0x03, 'x', 'm', 'l'}) + 2] = 'd';
    EXPECT_EQ(entitlementsFromMachO(bytes), plist::Value(xml));
    put32(bytes, find(bytes, {0xfa, 0xde, 0x71, 0x71}), 0xfade0000, true);
    EXPECT_EQ(entitlementsFromMachO(bytes), plist::Value(der));
}

TEST(CodeSignatureTest, FatFileAnswersWithFirstGoodSlice) {
    Data unsignedFirst = stub({Arch::X86_64, Arch::Arm64});
    // Turn the first slice's LC_CODE_SIGNATURE into another command.
    unsignedFirst[find(unsignedFirst, {0x1d, 0, 0, 0, 0x10, 0, 0, 0})] = 0x1e;
    EXPECT_EQ(entitlementsFromMachO(unsignedFirst), sampleEntitlements());

    Data outsideFirst = stub({Arch::X86_64, Arch::Arm64});
    put32(outsideFirst, 16, 0x7fffffff, true);  // the first slice's offset
    EXPECT_EQ(entitlementsFromMachO(outsideFirst), sampleEntitlements());
}

TEST(CodeSignatureTest, NothingWithoutEntitlements) {
    EXPECT_EQ(entitlementsFromMachO(unsignedStub()), std::nullopt);
    EXPECT_EQ(entitlementsFromMachO(stub({Arch::X86_64}, EntitlementsBlobs::None)), std::nullopt);
    const std::string text = "#!/bin/sh\necho not a Mach-O file\n";
    EXPECT_EQ(entitlementsFromMachO(Data(text.begin(), text.end())), std::nullopt);
    EXPECT_EQ(entitlementsFromMachO({}), std::nullopt);
}

TEST(CodeSignatureTest, HostileBytesGiveNothingAndNeverReadOutside) {
    const Data good = stub();
    const std::size_t super = find(good, {0xfa, 0xde, 0x0c, 0xc0});
    const std::size_t blob = find(good, {0xfa, 0xde, 0x71, 0x71});
    struct Damage {
        std::size_t offset;
        std::uint32_t value;
        bool bigEndian;
    };
    for (const Damage& d : std::vector<Damage>{
             {16, 0xffffffff, false},                     // load command count
             {20, 0xfffffff0, false},                     // load command bytes
             {36, 0, false},                              // a load command of size 0
             {64, 0x7ffffff0, false},                     // signature offset
             {68, 0xffffffff, false},                     // signature size
             {super + 4, 0xffffffff, true},               // SuperBlob length
             {super + 8, 0x10000000, true},               // blob count
             {super + 12 + 2 * 8 + 4, 0xfffffff8, true},  // entitlements blob offset
             {blob + 4, 0xffffff00, true},                // entitlements blob length
         }) {
        Data bytes = good;
        put32(bytes, d.offset, d.value, d.bigEndian);
        EXPECT_EQ(entitlementsFromMachO(bytes), std::nullopt) << "damage at " << d.offset;
    }

    Data fat = stub({Arch::X86_64, Arch::Arm64});
    put32(fat, 16, 0x7fffffff, true);  // both slice offsets past the end
    put32(fat, 36, 0x7fffffff, true);
    EXPECT_EQ(entitlementsFromMachO(fat), std::nullopt);

    // The signature ends the file, so every shorter prefix has lost it.
    for (std::size_t size = 0; size < good.size(); ++size) {
        ASSERT_EQ(entitlementsFromMachO(std::span(good).first(size)), std::nullopt) << size;
    }
    const Data both = stub({Arch::X86_64, Arch::PowerPC}, EntitlementsBlobs::Both);
    for (std::size_t i = 0; i < both.size(); ++i) {
        Data flipped = both;
        flipped[i] ^= 0xa5;
        entitlementsFromMachO(flipped);  // any answer but a crash or an out-of-bounds read
    }
}

TEST(DerEntitlementsTest, DecodesWhatSigningToolsWriteAndRejectsTheRest) {
    // The DER blob of an empty dictionary, as in a real Xcode-signed binary.
    EXPECT_EQ(decodeDerEntitlements(Data{0x70, 0x05, 0x02, 0x01, 0x01, 0xb0, 0x00}),
              plist::Value(plist::Dictionary{}));
    // A universal SET as the dictionary, as some third-party signers write it.
    plist::Dictionary one;
    one.set("a", true);
    EXPECT_EQ(decodeDerEntitlements(Data{0x70, 0x0d, 0x02, 0x01, 0x01, 0x31, 0x08, 0x30, 0x06, 0x0c,
                                         0x01, 'a', 0x01, 0x01, 0xff}),
              plist::Value(one));

    auto nested = [](int depth) {
        plist::Value v = plist::Array{};
        for (int i = 0; i < depth; ++i)
            v = plist::Array{v};
        plist::Dictionary d;
        d.set("deep", v);
        return sample::encodeDerEntitlements(d);
    };
    EXPECT_TRUE(decodeDerEntitlements(nested(60)));
    EXPECT_EQ(decodeDerEntitlements(nested(70)), std::nullopt);

    for (const Data& bad : std::vector<Data>{
             // indefinite length
             {0x70, 0x05, 0x02, 0x01, 0x01, 0xb0, 0x80},
             // content past the end
             {0x70, 0x05, 0x02, 0x01, 0x01, 0xb0, 0x05},
             // an integer as the key
             {0x70, 0x0a, 0x02, 0x01, 0x01, 0xb0, 0x05, 0x30, 0x03, 0x02, 0x01, 0x01},
             // an OCTET STRING value
             {0x70, 0x0d, 0x02, 0x01, 0x01, 0xb0, 0x08, 0x30, 0x06, 0x0c, 0x01, 'a', 0x04, 0x01,
              0x00},
             // not the entitlements element
             {0x30, 0x00},
         }) {
        EXPECT_EQ(decodeDerEntitlements(bad), std::nullopt);
    }
}

class SandboxDicTest : public ::testing::Test {
  protected:
    sample::FakeVolume volume;
    ScopedVolume scoped{volume.volume()};

    std::string addApp(const std::string& name) {
        sample::AppSpec app;
        app.name = name;
        return volume.addApp(app);
    }
    void writeExecutable(const std::string& bundle, const std::string& name, const Data& bytes) {
        sample::writeBundleExecutable(volume.host(bundle), name, bytes);
    }
};

TEST_F(SandboxDicTest, WrapsTheMainExecutablesEntitlements) {
    const std::string bundle = addApp("Signed");
    writeExecutable(bundle, "Signed", stub({Arch::X86_64, Arch::Arm64}, EntitlementsBlobs::Both));
    writeExecutable(bundle, "Other", unsignedStub());
    const auto info = getSandboxDic(bundle);
    ASSERT_TRUE(info);
    ASSERT_EQ(info->asDictionary()->size(), 1u);
    EXPECT_EQ(*info->find("entitlements-dict"), sampleEntitlements());

    // Without CFBundleExecutable the executable bears the bundle's name.
    const std::string noKey = "/Applications/NoKey.app";
    volume.writePlist(noKey + "/Contents/Info.plist", plist::Dictionary{});
    writeExecutable(noKey, "NoKey", stub());
    EXPECT_NE(getSandboxDic(noKey), std::nullopt);
}

TEST_F(SandboxDicTest, NothingForBrokenBundles) {
    const Data signedStub = stub();
    // A key that names nothing usable is not replaced by the bundle's name.
    const std::string badKey = "/Applications/BadKey.app";
    plist::Dictionary numeric;
    numeric.set("CFBundleExecutable", 42);
    volume.writePlist(badKey + "/Contents/Info.plist", numeric);
    writeExecutable(badKey, "BadKey", signedStub);
    EXPECT_EQ(getSandboxDic(badKey), std::nullopt);

    // The executable must be in the bundle's own Contents/MacOS.
    const std::string escaping = "/Applications/Escaping.app";
    plist::Dictionary info;
    info.set("CFBundleExecutable", "../../../BadKey.app/Contents/MacOS/BadKey");
    volume.writePlist(escaping + "/Contents/Info.plist", info);
    volume.mkdir(escaping + "/Contents/MacOS");
    EXPECT_EQ(getSandboxDic(escaping), std::nullopt);

    EXPECT_EQ(getSandboxDic(addApp("Missing")), std::nullopt);
    EXPECT_EQ(getSandboxDic("/Applications/Nowhere.app"), std::nullopt);

    const std::string unsignedApp = addApp("Unsigned");
    writeExecutable(unsignedApp, "Unsigned", unsignedStub());
    EXPECT_EQ(getSandboxDic(unsignedApp), std::nullopt);

    // A link could point anywhere on the host; a FIFO would block a reader that opened it.
    const std::string linked = addApp("Linked");
    writeExecutable(linked, "Real", signedStub);
    volume.symlink(linked + "/Contents/MacOS/Linked", "Real");
    EXPECT_EQ(getSandboxDic(linked), std::nullopt);
    const std::string fifo = addApp("Fifo");
    volume.mkdir(fifo + "/Contents/MacOS");
    ASSERT_EQ(::mkfifo(volume.host(fifo + "/Contents/MacOS/Fifo").c_str(), 0600), 0);
    EXPECT_EQ(getSandboxDic(fifo), std::nullopt);
}

}  // namespace
}  // namespace sysmend
