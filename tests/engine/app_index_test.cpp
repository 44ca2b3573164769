#include "platform/app_index.h"

#include <gtest/gtest.h>

#include "sample/fake_volume.h"

namespace sysmend {
namespace {

using sample::FakeVolume;

plist::Value infoWithIdentifier(plist::Value id) {
    plist::Dictionary info;
    info.set("CFBundleIdentifier", std::move(id));
    return info;
}

class AppIndexTest : public ::testing::Test {
  protected:
    std::optional<std::string> find(std::string_view id) {
        ScopedVolume scope(vol_.volume());
        return AppIndex::build().absolutePathForAppBundleWithIdentifier(id);
    }

    FakeVolume vol_;
};

TEST_F(AppIndexTest, FindsBundlesInEveryApplicationFolderButNotInsideBundles) {
    vol_.addAppBundle("/Applications", "Top", "com.example.top");
    vol_.addAppBundle("/Applications/Utilities", "Util", "com.example.util");
    vol_.addAppBundle("/Applications/Games/Old", "Deep", "com.example.deep");
    vol_.addAppBundle("/System/Applications/Utilities", "Sys", "com.example.sys");
    vol_.addAppBundle("/Users/alice/Applications", "Mine", "com.example.mine");
    vol_.addAppBundle("/Applications/Top.app/Contents/Library/LoginItems", "Helper",
                      "com.example.helper");
    vol_.addAppBundle("/Library/Elsewhere", "Stray", "com.example.stray");

    EXPECT_EQ(find("com.example.top"), "/Applications/Top.app");
    EXPECT_EQ(find("com.example.util"), "/Applications/Utilities/Util.app");
    EXPECT_EQ(find("com.example.deep"), "/Applications/Games/Old/Deep.app");
    EXPECT_EQ(find("com.example.sys"), "/System/Applications/Utilities/Sys.app");
    EXPECT_EQ(find("com.example.mine"), "/Users/alice/Applications/Mine.app");
    EXPECT_EQ(find("com.example.helper"), std::nullopt);
    EXPECT_EQ(find("com.example.stray"), std::nullopt);
    // As LaunchServices does, case is ignored; blanks are not.
    EXPECT_EQ(find("COM.Example.Top"), "/Applications/Top.app");
    EXPECT_EQ(find(" com.example.top"), std::nullopt);
}

TEST_F(AppIndexTest, FirstBundleWinsInFolderOrderThenWalkOrder) {
    vol_.addAppBundle("/Users/alice/Applications", "Home", "com.example.a");
    vol_.addAppBundle("/System/Applications", "System", "com.example.a");
    vol_.addAppBundle("/Applications/Z", "Late", "com.example.a");
    vol_.addAppBundle("/Applications/A", "Early", "com.example.a");
    vol_.addAppBundle("/System/Applications", "Sys", "com.example.b");
    vol_.addAppBundle("/Users/alice/Applications", "Home", "com.example.b");

    EXPECT_EQ(find("com.example.a"), "/Applications/A/Early.app");
    EXPECT_EQ(find("com.example.b"), "/System/Applications/Sys.app");
}

TEST_F(AppIndexTest, BundlesWithoutAReadableIdentifierAreLeftOut) {
    vol_.addAppBundle("/Applications", "NoId", "");
    vol_.write("/Applications/Broken.app/Contents/Info.plist", "<plist><dict><key>");
    vol_.writePlist("/Applications/Numeric.app/Contents/Info.plist", infoWithIdentifier(42));
    vol_.writePlist("/Applications/Shallow.app/Info.plist",
                    infoWithIdentifier("com.example.shallow"));

    ScopedVolume scope(vol_.volume());
    AppIndex apps = AppIndex::build();
    EXPECT_EQ(apps.size(), 1u);
    EXPECT_EQ(apps.absolutePathForAppBundleWithIdentifier("com.example.shallow"),
              "/Applications/Shallow.app");
}

}  // namespace
}  // namespace sysmend
