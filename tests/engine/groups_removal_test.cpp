#include "adware/groups_removal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "app/check_summary.h"
#include "model/tool_records.h"
#include "platform/syslog.h"
#include "sample/fake_volume.h"
#include "tools/file_manager.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSafariType = "com.apple.safari.extension";
const std::string kProfile = "/Users/alice/Library/Application Support/Firefox/Profiles/p.default";

class GroupsRemovalTest : public ::testing::Test {
  protected:
    void TearDown() override { setRemovalHook(nullptr); }

    // An item named `name` for the file at `path`, written there unless `onDisk` is false.
    template <typename Item = NATreatObj>
    std::shared_ptr<Item> item(const std::string& name, const std::string& path,
                               bool onDisk = true) {
        if (onDisk)
            vol_.write(path, "payload");
        auto file = std::make_shared<Item>();
        file->setFileName(name);
        file->setFilePath(path);
        file->setFileSize(1000);
        return file;
    }

    // A group of the items, appended to the category and marked `checked` (which the items
    // follow); individual items can be changed afterwards.
    template <typename Group = NAGroupObj>
    std::shared_ptr<Group> group(const std::string& title,
                                 std::initializer_list<std::shared_ptr<NAFileobj>> items,
                                 std::int64_t checked = 1) {
        auto g = std::make_shared<Group>(title, ImageRef());
        for (const auto& file : items)
            g->addFileObj(file);
        g->setIsChecked(checked);
        category_.groups().push_back(g);
        return g;
    }

    std::vector<std::string> groups() const {
        std::vector<std::string> out;
        for (const auto& g : category_.groups())
            out.push_back(toString(*g));
        return out;
    }

    bool exists(const std::string& volumePath) const {
        struct stat st {};
        return ::lstat(vol_.host(volumePath).c_str(), &st) == 0;
    }

    sample::FakeVolume vol_;
    ScopedVolume scoped_{vol_.volume()};
    NACategoryObj category_;
    NAFileobjArray removeFaildFiles_;
};

TEST_F(GroupsRemovalTest, NothingCheckedTouchesNothing) {
    auto a = item("a", "/Users/alice/a");
    auto web = item("w", "/Users/alice/w");
    group("A", {a}, 0);
    group<NAWebGroup>("W", {web}, 0)->setBrowserType(1);
    // An item checked inside an unchecked group does not open the gate: only group marks do.
    a->setIsNeedChangeGroupOrSuperState(false);
    a->setIsChecked(1);
    const auto before = groups();

    const GroupsRemoval adware = remove_adware_action(category_, removeFaildFiles_);
    const GroupsRemoval normal = remove_normal_objects_action(category_);

    EXPECT_FALSE(adware.anyChecked);
    EXPECT_FALSE(normal.anyChecked);
    EXPECT_FALSE(removeAction(category_));
    EXPECT_THAT(normal.removed, IsEmpty());
    EXPECT_EQ(groups(), before);
    EXPECT_THAT(removeFaildFiles_, IsEmpty());
    EXPECT_TRUE(exists("/Users/alice/a"));
    EXPECT_TRUE(exists("/Users/alice/w"));
}

TEST_F(GroupsRemovalTest, AdwareWalkDropsFullGroupsAndThinsMixedOnes) {
    auto a1 = item("a1", "/Users/alice/A/a1");
    auto a2 = item("a2", "/Users/alice/A/a2", false);  // vanished since the scan
    auto a3 = item("a3", "/Users/alice/A/a3");
    auto b1 = item("b1", "/Users/alice/B/b1");
    auto m1 = item("m1", "/Users/alice/M/m1");
    auto m2 = item("m2", "/Users/alice/M/m2");
    auto m3 = item("m3", "/Users/alice/M/m3");
    auto u1 = item("u1", "/Users/alice/U/u1");
    // Two full groups in a row: the walk must not step past the second when the first goes.
    group("A", {a1, a2, a3});
    group("B", {b1});
    auto mixed = group("M", {m1, m2, m3});
    m2->setIsChecked(0);
    group("U", {u1}, 0);
    setRemovalHook([](RemovalStep, const std::string& path) {
        return path == "/Users/alice/A/a3" ? EACCES : 0;
    });

    const GroupsRemoval result = remove_adware_action(category_, removeFaildFiles_);

    EXPECT_THAT(groups(), ElementsAre("M[0]{m2[0]}", "U[0]{u1[0]}"));
    EXPECT_EQ(mixed->size(), 1000);
    EXPECT_THAT(removeFaildFiles_, ElementsAre(a2, a3));
    // The sheet lists what could not be deleted; the result only what is still there.
    EXPECT_THAT(result.failed, ElementsAre("/Users/alice/A/a3"));
    EXPECT_THAT(result.removed,
                ElementsAre("/Users/alice/A/a1", "/Users/alice/A/a2", "/Users/alice/B/b1",
                            "/Users/alice/M/m1", "/Users/alice/M/m3"));
    EXPECT_TRUE(exists("/Users/alice/A/a3"));
    EXPECT_TRUE(exists("/Users/alice/M/m2"));
    EXPECT_TRUE(exists("/Users/alice/U/u1"));
    EXPECT_FALSE(exists("/Users/alice/M/m1"));
}

TEST_F(GroupsRemovalTest, SafariExtensionTakesExtensionsPlistEvenWhenItStays) {
    const std::string folder = "/Users/alice/Library/Safari/Extensions";
    auto stuck = item("stuck", folder + "/Stuck.safariextz");
    stuck->setFileType(kSafariType);
    vol_.write(folder + "/Extensions.plist", "<plist/>");
    vol_.write(folder + "/Other.safariextz", "kept");
    // Typed with other capitals, and its folder holds no Extensions.plist at all.
    auto elsewhere = item("elsewhere", "/Users/alice/Downloads/Evil.safariextz");
    elsewhere->setFileType("com.apple.Safari.Extension");
    group("Evil", {stuck, elsewhere});
    setRemovalHook([&](RemovalStep, const std::string& path) {
        return path == stuck->filePath() ? EBUSY : 0;
    });

    const GroupsRemoval result = remove_adware_action(category_, removeFaildFiles_);

    EXPECT_FALSE(exists(folder + "/Extensions.plist"));
    EXPECT_TRUE(exists(stuck->filePath()));
    EXPECT_TRUE(exists(folder + "/Other.safariextz"));
    EXPECT_FALSE(exists(elsewhere->filePath()));
    EXPECT_THAT(removeFaildFiles_, ElementsAre(stuck));
    EXPECT_THAT(result.removed, ElementsAre(elsewhere->filePath()));
    EXPECT_THAT(groups(), IsEmpty());
}

TEST_F(GroupsRemovalTest, FirefoxAddOnsTakeTheProfileRegistryAndLogOncePerAddOn) {
    vol_.write(kProfile + "/extensions.json", "{}");
    vol_.write(kProfile + "/prefs.js", "kept");
    auto first = item("first", kProfile + "/extensions/first@x.xpi");
    first->setFileType("xpi");
    // Its registry is already gone when its turn comes: passed over quietly.
    auto second = item("second", kProfile + "/extensions/second@x.xpi");
    second->setFileType("XPI");
    auto plain = item("plain", "/Users/alice/Library/LaunchAgents/com.evil.plist");
    group("Evil", {first, second, plain});

    LogCapture log;
    const GroupsRemoval result = remove_adware_action(category_, removeFaildFiles_);

    EXPECT_THAT(log.lines(), ElementsAre("fire fox", "fire fox"));
    EXPECT_FALSE(exists(kProfile + "/extensions.json"));
    EXPECT_TRUE(exists(kProfile + "/prefs.js"));
    EXPECT_TRUE(exists(kProfile + "/extensions"));
    EXPECT_THAT(result.removed,
                ElementsAre(first->filePath(), second->filePath(), plain->filePath()));
    EXPECT_THAT(removeFaildFiles_, IsEmpty());
}

TEST_F(GroupsRemovalTest, NormalRemovalDeletesOnlyCheckedFilesAndKeepsRemainingMarks) {
    vol_.write(kProfile + "/extensions.json", "{}");
    auto f1 = item("f1", kProfile + "/extensions/f1.xpi");
    f1->setFileType("xpi");
    auto f2 = item("f2", "/Users/alice/F/f2", false);
    auto g1 = item("g1", "/Users/alice/G/g1");
    auto g2 = item("g2", "/Users/alice/G/g2");
    auto h1 = item("h1", "/Users/alice/H/h1");
    group("F", {f1, f2});
    group("G", {g1, g2});
    g2->setIsChecked(0);
    group("H", {h1}, 0);

    LogCapture log;
    const GroupsRemoval result = remove_normal_objects_action(category_);

    EXPECT_TRUE(result.anyChecked);
    // G stays mixed: its mark is set again without being pushed down onto g2.
    EXPECT_THAT(groups(), ElementsAre("G[-1]{g2[0]}", "H[0]{h1[0]}"));
    EXPECT_THAT(result.removed,
                ElementsAre(f1->filePath(), "/Users/alice/F/f2", "/Users/alice/G/g1"));
    EXPECT_THAT(result.failed, IsEmpty());
    EXPECT_TRUE(exists("/Users/alice/G/g2"));
    EXPECT_TRUE(exists("/Users/alice/H/h1"));
    // No browser registry work outside the adware removal.
    EXPECT_TRUE(exists(kProfile + "/extensions.json"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(GroupsRemovalTest, ListOnlyRemovalTakesFullyCheckedItemsOutOfWebGroupsOnly) {
    auto s1 = item<NAStartupItemObj>("s1", "/Library/LaunchAgents/s1.plist");
    group("Startup", {s1});
    auto c1 = item("c1", "/Users/alice/c1");
    auto c2 = item("c2", "/Users/alice/c2");
    auto c3 = item("c3", "/Users/alice/c3");
    auto c4 = item("c4", "/Users/alice/c4");
    auto web = group<NAWebGroup>("Web", {c1, c2});
    web->setBrowserType(2);
    c2->setIsChecked(0);
    web->cache_contents() = {c3, c4};
    c3->setIsChecked(1);
    // A partly checked item is not taken, and the group's own mark does not reach it.
    c4->setIsChecked(-1);

    EXPECT_TRUE(removeAction(category_));

    EXPECT_THAT(groups(), ElementsAre("Startup[1]{s1[1]}", "Web[0]{c2[0] cache{c4[-1]}}"));
    for (const char* path :
         {"/Library/LaunchAgents/s1.plist", "/Users/alice/c1", "/Users/alice/c3"}) {
        EXPECT_TRUE(exists(path)) << path;
    }
}

TEST_F(GroupsRemovalTest, DisplayFilterParksOrdinaryItemsAndRestoresThemAfterTheOthers) {
    auto plain = item<NAFileobj>("plain", "/p", false);
    auto cookie1 = item<NABrowserObj>("", "/m1", false);
    cookie1->setDomain("bad1");
    cookie1->setIsMaliciousCookie(true);
    auto site = item<NABrowserObj>("", "/s", false);
    site->setDomain("site");
    auto cookie2 = item<NABrowserObj>("", "/m2", false);
    cookie2->setDomain("bad2");
    cookie2->setIsMaliciousCookie(true);
    auto parked = item("parked", "/c", false);
    auto g = group("G", {plain, cookie1, site, cookie2});
    g->cache_contents().push_back(parked);

    setDisplayIndex(category_.groups(), 1);
    EXPECT_THAT(groups(), ElementsAre("G[1]{bad1[1] bad2[1] cache{parked[0] plain[1] site[1]}}"));

    setDisplayIndex(category_.groups(), 0);
    EXPECT_THAT(groups(), ElementsAre("G[1]{bad1[1] bad2[1] parked[0] plain[1] site[1]}"));
}

TEST_F(GroupsRemovalTest, SummaryCountsCheckedItemsOfContentsAndCacheWhateverTheGroupMark) {
    updateCheckState(category_);
    EXPECT_EQ(category_.infromation(), "");

    auto one = item("one", "/1", false);
    auto off = item("off", "/off", false);
    auto two = item("two", "/2", false);
    auto three = item("three", "/3", false);
    two->setFileSize(2000);
    three->setFileSize(3000);
    off->setFileSize(5000);
    group("A", {one, off});
    off->setIsChecked(0);
    auto b = group("B", {two}, 0);
    b->cache_contents().push_back(three);
    // Checked under a group marked 0: items count, group marks do not.
    two->setIsNeedChangeGroupOrSuperState(false);
    two->setIsChecked(1);
    three->setIsChecked(-1);

    const CheckSummary summary = updateCheckState(category_);

    EXPECT_EQ(summary.count, 3);
    EXPECT_EQ(summary.willCleanSize, 6000u);
    EXPECT_EQ(summary.infromation, "3 files | " + recal_size(6000));
    EXPECT_EQ(category_.infromation(), summary.infromation);
}

}  // namespace
}  // namespace sysmend
