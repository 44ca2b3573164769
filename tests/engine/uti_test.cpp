#include "platform/uti.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "sample/fake_volume.h"

namespace sysmend::uti {
namespace {

TEST(UtiTest, ExtensionsMapToDeclaredTypesIgnoringCase) {
    EXPECT_EQ(preferredIdentifierForExtension("JPEG"), "public.jpeg");
    EXPECT_EQ(preferredIdentifierForExtension("App"), "com.apple.application-bundle");
    EXPECT_EQ(preferredIdentifierForExtension(""), "public.data");
    EXPECT_EQ(preferredIdentifierForExtension("pkg"), "com.apple.installer-package-archive");
    EXPECT_EQ(preferredIdentifierForExtension("pkg", kDirectory), "com.apple.installer-package");
}

TEST(UtiTest, UnknownExtensionsGetStableDistinctDynamicTypes) {
    const std::string foo = preferredIdentifierForExtension("foo");
    EXPECT_EQ(foo, "dyn.ah62d4r34ge80q55t");  // the tag "?0=7:1=foo" in base32
    EXPECT_NE(preferredIdentifierForExtension("fop"), foo);
    EXPECT_EQ(preferredIdentifierForExtension("app", kData).substr(0, 5), "dyn.a");

    EXPECT_TRUE(conformsTo(foo, kData));
    EXPECT_TRUE(conformsTo(foo, kItem));
    EXPECT_TRUE(conformsTo(foo, foo));
    EXPECT_FALSE(conformsTo(foo, kContent));
    EXPECT_TRUE(conformsTo("org.example.undeclared", "org.example.undeclared"));
    EXPECT_FALSE(conformsTo("org.example.undeclared", kItem));
}

TEST(UtiTest, ConformanceFollowsDeclaredParentsTransitively) {
    EXPECT_TRUE(conformsTo("public.png", kImage));
    EXPECT_TRUE(conformsTo("public.png", kItem));
    EXPECT_FALSE(conformsTo(kImage, "public.png"));

    EXPECT_TRUE(conformsTo(kApplicationBundle, kPackage));
    EXPECT_TRUE(conformsTo(kApplicationBundle, kApplication));
    EXPECT_FALSE(conformsTo(kApplicationBundle, kFolder));
    EXPECT_TRUE(conformsTo(kVolume, kFolder));
    EXPECT_TRUE(conformsTo("com.apple.framework", kBundle));
    EXPECT_FALSE(conformsTo("com.apple.framework", kPackage));

    EXPECT_TRUE(conformsTo("com.apple.m4a-audio", kAudio));
    EXPECT_TRUE(conformsTo("com.apple.m4a-audio", kMovie));
    EXPECT_TRUE(conformsTo("org.gnu.gnu-zip-tar-archive", kArchive));
    EXPECT_FALSE(conformsTo("com.apple.disk-image-udif", kArchive));
}

TEST(UtiTest, PackageExtensions) {
    for (const char* ext : {"app", "APP", "kext", "plugin", "pkg", "bundle", "xpc"}) {
        EXPECT_TRUE(isPackageExtension(ext)) << ext;
    }
    for (const char* ext : {"framework", "txt", "zip", "", "unknownext"}) {
        EXPECT_FALSE(isPackageExtension(ext)) << ext;
    }
}

class TypeOfFileTest : public ::testing::Test {
  protected:
    sample::FakeVolume fake_{"u"};
    ScopedVolume scope_{fake_.volume()};
};

TEST_F(TypeOfFileTest, FoldersAreTypedByTheirPackageExtension) {
    fake_.mkdir("/Applications/Foo.app/Contents");
    fake_.mkdir("/Library/Frameworks/Bar.framework");
    fake_.mkdir("/Users/u/Old.pkg");
    fake_.mkdir("/Users/u/notes.txt");

    EXPECT_EQ(typeOfFile("/"), "public.volume");
    EXPECT_EQ(typeOfFile("/Users/u"), "public.folder");
    EXPECT_EQ(typeOfFile("/Users/u/notes.txt"), "public.folder");
    EXPECT_EQ(typeOfFile("/Applications/Foo.app/"), "com.apple.application-bundle");
    EXPECT_EQ(typeOfFile("/Library/Frameworks/Bar.framework"), "com.apple.framework");
    EXPECT_EQ(typeOfFile("/Users/u/Old.pkg"), "com.apple.installer-package");
    EXPECT_EQ(typeOfFile("/Users/u/missing"), std::nullopt);
}

TEST_F(TypeOfFileTest, FilesAreTypedByExtensionOrExecuteBit) {
    fake_.write("/Users/u/New.pkg", "xar!");
    fake_.write("/Users/u/readme", "text");
    std::string tool = fake_.host(fake_.write("/Users/u/tool", "#!/bin/sh\n"));
    ASSERT_EQ(::chmod(tool.c_str(), 0755), 0);
    fake_.write("/Users/u/Fake.app", "not a bundle");

    EXPECT_EQ(typeOfFile("/Users/u/New.pkg"), "com.apple.installer-package-archive");
    EXPECT_EQ(typeOfFile("/Users/u/readme"), "public.data");
    EXPECT_EQ(typeOfFile("/Users/u/tool"), "public.unix-executable");
    EXPECT_EQ(typeOfFile("/Users/u/Fake.app")->substr(0, 5), "dyn.a");
}

TEST_F(TypeOfFileTest, LinksTakeTheirTargetsTypeWithinTheVolume) {
    fake_.mkdir("/Applications/Foo.app/Contents");
    // An absolute target is a volume path: it must not be looked up on the host.
    fake_.symlink("/Users/u/Foo", "/Applications/Foo.app");
    fake_.symlink("/Users/u/Relative", "../../Applications/Foo.app");
    fake_.symlink("/Users/u/chain", "Foo");
    fake_.symlink("/Users/u/dangling.png", "nowhere");

    EXPECT_EQ(typeOfFile("/Users/u/Foo"), "com.apple.application-bundle");
    EXPECT_EQ(typeOfFile("/Users/u/Relative"), "com.apple.application-bundle");
    EXPECT_EQ(typeOfFile("/Users/u/chain"), "com.apple.application-bundle");
    EXPECT_EQ(typeOfFile("/Users/u/dangling.png"), "public.png");
}

}  // namespace
}  // namespace sysmend::uti
