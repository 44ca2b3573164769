#include "appviewer/app_listing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <nlohmann/json.hpp>
#include <vector>

#include "platform/app_index.h"
#include "sample/fake_volume.h"
#include "sample/macho_builder.h"
#include "support/run_command.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

using Json = nlohmann::ordered_json;

class AppListingTest : public ::testing::Test {
  protected:
    std::string app(const std::string& name, const std::string& folder = "/Applications",
                    bool named = true) {
        sample::AppSpec layout;
        layout.folder = folder;
        layout.name = name;
        layout.omitBundleName = !named;
        return vol_.addApp(layout);
    }

    std::vector<std::string> list() {
        NAGroupObjArray apps;
        listing_.loadAllApps("/Applications", apps);
        std::vector<std::string> paths;
        for (const auto& group : apps) {
            EXPECT_EQ(group->attachImage(), ImageRef::fileIcon(appPathOfGroup(*group)));
            paths.push_back(appPathOfGroup(*group));
        }
        return paths;
    }

    sample::FakeVolume vol_;
    ScopedVolume scope_{vol_.volume()};
    std::atomic<bool> stop_{false};
    AppListing listing_{stop_};
};

TEST_F(AppListingTest, ListsBundlesInWalkOrderAndDropsWhatIsNoApplication) {
    app("Zed");
    app("Alpha");
    app("Nameless", "/Applications", false);
    vol_.mkdir("/Applications/Tools.app");  // named like one, but no Info.plist
    app("Suite Editor", "/Applications/Vendor Suite");
    app("Helper", "/Applications/Alpha.app/Contents/Applications");
    app("Hidden", "/Applications/.hidden");
    app("Sysmend");
    vol_.write("/Applications/readme.txt", "x");
    listing_.setOwnBundlePath("/Applications//Sysmend.app/");

    EXPECT_EQ(list(), (std::vector<std::string>{"/Applications/Alpha.app",
                                                "/Applications/Vendor Suite/Suite Editor.app",
                                                "/Applications/Zed.app"}));
}

// A link to a bundle is listed, and indexed, as the bundle it leads to; its target is
// resolved inside the volume, so an absolute target or a ".." past the top never reaches the
// host's own folders, and dangling or looping links are dropped.
TEST_F(AppListingTest, FollowsLinksToBundlesInsideTheVolumeOnly) {
    sample::AppSpec real;
    real.folder = "/Library/Real";
    real.name = "Real";
    real.bundleId = "com.example.real";
    vol_.addApp(real);
    struct Link {
        const char* name;
        std::string target;
        bool listed;
    };
    const std::string hostOnly = vol_.host("/Library/Real/Real.app");  // valid on the host only
    const std::vector<Link> links{
        {"Relative.app", "../Library/Real/Real.app", true},
        {"Absolute.app", "/Library/Real/Real.app", true},
        {"Chained.app", "Relative.app", true},
        {"Climbing.app", "../../../../Library/Real/Real.app", true},
        {"Dangling.app", "/Library/Real/Gone.app", false},
        {"Loop.app", "Loop.app", false},
        {"Host.app", hostOnly, false},
    };
    std::vector<std::string> expected;
    for (const Link& link : links) {
        vol_.symlink(std::string("/Applications/") + link.name, link.target);
        if (link.listed)
            expected.push_back(std::string("/Applications/") + link.name);
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(list(), expected);
    EXPECT_EQ(AppIndex::build().absolutePathForAppBundleWithIdentifier("com.example.real"),
              "/Library/Real/Real.app");
    vol_.symlink("/Applications/Other.app", "Dangling.app");
    EXPECT_EQ(Volume::current().resolvingLinks("/Applications/Other.app"), std::nullopt);
}

TEST_F(AppListingTest, EmptyOrMissingFolderListsNothing) {
    EXPECT_TRUE(list().empty());
    vol_.mkdir("/Applications");
    EXPECT_TRUE(list().empty());
}

TEST_F(AppListingTest, ProgressAfterEveryEntryAndStopKeepsTheAppsMetSoFar) {
    app("A");
    vol_.mkdir("/Applications/B Folder");
    app("C");
    app("D");
    std::vector<float> fractions;
    listing_.setProgressHook([&](float f) { fractions.push_back(f); });
    EXPECT_EQ(list().size(), 3u);
    EXPECT_EQ(fractions, (std::vector<float>{0.25f, 0.5f, 0.75f, 1.0f}));

    // The flag is read after each entry: the entry in hand is finished first.
    fractions.clear();
    listing_.setProgressHook([&](float f) {
        fractions.push_back(f);
        stop_ = true;
    });
    EXPECT_EQ(list(), (std::vector<std::string>{"/Applications/A.app"}));
    EXPECT_EQ(fractions, (std::vector<float>{0.25f}));

    EXPECT_EQ(list(), (std::vector<std::string>{"/Applications/A.app"}));  // stopped before
}

TEST_F(AppListingTest, AppFilesByExtensionAndAliases) {
    EXPECT_TRUE(AppListing::isAppFile("/Applications/Foo.app"));
    EXPECT_TRUE(AppListing::isAppFile("Foo.APP"));
    EXPECT_FALSE(AppListing::isAppFile("/Applications/Foo.appex"));
    EXPECT_FALSE(AppListing::isAppFile("/Applications/app"));

    vol_.write("/alias", std::string("book\0\0\0\0mark\0\0\0\0", 16) + "rest");
    vol_.write("/plain", "bookkeeping notes");
    vol_.symlink("/link", "/plain");
    EXPECT_TRUE(AppListing::isAlias("/alias"));
    EXPECT_TRUE(AppListing::isAlias("/link"));
    EXPECT_FALSE(AppListing::isAlias("/plain"));
    EXPECT_FALSE(AppListing::isAlias("/missing"));
    EXPECT_FALSE(AppListing::isAlias(""));
}

TEST_F(AppListingTest, CliPrintsTheKeptGroupsAsJson) {
    const std::string boxed = app("Boxed");
    plist::Dictionary entitlements;
    entitlements.set("com.apple.security.app-sandbox", true);
    sample::MachOSpec macho;
    macho.entitlements = entitlements;
    sample::writeBundleExecutable(vol_.host(boxed), "Boxed", sample::buildMachO(macho));
    app("Nameless", "/Applications", false);
    const std::int64_t size = sizeAtPath(boxed, 1);

    auto r = testing::runCommand({SYSMEND_CLI, "--root", vol_.root(), "apps", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    auto row = [](std::string key, std::string value, std::int64_t bytes) {
        return Json{{"key", key}, {"value", value}, {"size", bytes}};
    };
    const Json boxedGroup = {{"title", "Boxed"},
                             {"path", "/Applications/Boxed.app"},
                             {"checked", 0},
                             {"size", size},
                             {"items", Json::array({row("Boxed", "v1.0", 0),
                                                    row("Application Size", recal_size(size), size),
                                                    row("Requires Mac OS", "v10.8.0", 0),
                                                    row("Application Sandbox", "Enabled", 0)})}};
    const Json expected = {{"tool", "apps"}, {"groups", Json::array({boxedGroup})}};
    EXPECT_EQ(Json::parse(r.out), expected);

    r = testing::runCommand({SYSMEND_CLI, "--root", vol_.root(), "apps"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.substr(0, r.out.find('\n')),
              "Boxed  v1.0  " + recal_size(size) + "  /Applications/Boxed.app");
    EXPECT_NE(r.out.find("    Application Sandbox  Enabled\n"), std::string::npos);

    EXPECT_EQ(testing::runCommand({SYSMEND_CLI, "--root", vol_.root(), "apps", "x"}).status, 2);
}

}  // namespace
}  // namespace sysmend
