#include "adware/adware_scan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model/na_group_obj.h"
#include "platform/syslog.h"
#include "sample/fake_volume.h"

namespace sysmend {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lists = std::vector<std::pair<std::string, std::vector<std::string>>>;

plist::Value threat(std::string name, const Lists& lists) {
    plist::Dictionary entry;
    entry.set("name", std::move(name));
    for (const auto& [key, strings] : lists) {
        plist::Array array;
        for (const std::string& s : strings)
            array.emplace_back(s);
        entry.set(key, std::move(array));
    }
    return entry;
}

class AdwareScanTest : public ::testing::Test {
  protected:
    struct Visit {
        std::string path;
        bool found;
    };

    AdwareScan& run(const plist::Array& threats) {
        scan_ = std::make_unique<AdwareScan>(plist::Value(threats), category_);
        if (outsideStop_)
            scan_->useStopFlag(*outsideStop_);
        scan_->setProgress([this](const std::string& path, std::int64_t, std::int64_t found) {
            visits_.push_back({path, found > lastThreats_});
            lastThreats_ = found;
            if (onVisit_)
                onVisit_(path);
        });
        scan_->initargs();
        scan_->analysisAdware();
        return *scan_;
    }

    std::string addApp(std::string folder, std::string name) {
        sample::AppSpec app;
        app.folder = std::move(folder);
        app.name = std::move(name);
        return fake_.addApp(app);
    }

    std::vector<bool> visitsOf(const std::string& path) const {
        std::vector<bool> flags;
        for (const Visit& visit : visits_) {
            if (visit.path == path)
                flags.push_back(visit.found);
        }
        return flags;
    }

    // "title: filePath" of each finding, in order of discovery.
    std::vector<std::string> findings() const {
        std::vector<std::string> out;
        for (const auto& treat : scan_->treats())
            out.push_back(treat->title() + ": " + treat->filePath());
        return out;
    }

    std::vector<std::string> groups() const {
        std::vector<std::string> out;
        for (const auto& group : category_->groups())
            out.push_back(toString(*group));
        return out;
    }

    sample::FakeVolume fake_;
    ScopedVolume scope_{fake_.volume()};
    const std::string home_ = fake_.home();
    const std::string support_ = home_ + "/Library/Application Support";
    std::shared_ptr<NACategoryObj> category_ = std::make_shared<NACategoryObj>();
    std::unique_ptr<AdwareScan> scan_;
    std::vector<Visit> visits_;
    std::int64_t lastThreats_ = 0;
    std::function<void(const std::string&)> onVisit_;
    std::atomic<bool>* outsideStop_ = nullptr;
    LogCapture log_;
};

TEST_F(AdwareScanTest, EmptyDatabaseStillVisitsEveryCandidate) {
    fake_.addLaunchJob("/Library/LaunchAgents", "com.a.plist", "com.a");
    fake_.addLaunchJob(home_ + "/Library/LaunchAgents", "com.b.plist", "com.b");
    addApp("/Applications", "Foo");
    fake_.write(home_ + "/Documents/notes.txt", "");
    fake_.addBrowserExtension(fake_.chromeExtensionsFolder(), "id", "1.0",
                              R"({"name": "E", "icons": {"16": "i.png"}})");
    category_->groups().push_back(std::make_shared<NAGroupObj>("old", ImageRef::none()));

    AdwareScan& scan = run({});

    // Missing folders given to a walk are visited themselves.
    const int browserProfiles = 4 + 3;   // Default/{Extensions, id, 1.0, manifest.json}; 3 missing
    const int launchItems = 2 + 2;       // the two jobs; the two daemon folders are missing
    const int applications = 1 + 1 + 9;  // Foo.app; Documents; Library and the 8 folders below
    const int chromeWalk = 5;            // Default, Extensions, id, 1.0, manifest.json
    const int browserFolders = 5 + 3;    // the same five in Chrome/; 3 missing
    EXPECT_EQ(scan.scanedFiles(),
              browserProfiles + 2 * launchItems + applications + chromeWalk + browserFolders);
    EXPECT_EQ(static_cast<std::size_t>(scan.scanedFiles()), visits_.size());
    EXPECT_EQ(scan.threadFiles(), 0);
    EXPECT_THAT(scan.treats(), IsEmpty());
    EXPECT_THAT(category_->groups(), IsEmpty());
    EXPECT_THAT(log_.lines(), ElementsAre("adware==0"));
}

TEST_F(AdwareScanTest, FindingsAreListedOncePerPathAndGroupedByThreat) {
    const std::string agent =
        fake_.addLaunchJob(home_ + "/Library/LaunchAgents", "com.evil.agent.plist", "com.evil");
    const std::string daemon =
        fake_.addLaunchJob("/Library/LaunchDaemons", "com.other.plist", "com.evil.daemon");
    fake_.write("/Library/LaunchDaemons/com.evil.daemon", "not a property list");
    const std::string app = addApp("/Applications", "EvilApp");

    AdwareScan& scan = run({
        threat("Evil", {{"launch", {"com.evil.agent.plist"}}, {"launchContent", {"com.evil"}}}),
        threat("Other", {{"launchContent", {"com.evil.daemon"}}}),
        threat("Evil", {{"app", {"EvilApp"}}}),
    });

    EXPECT_THAT(findings(), ElementsAre("Evil: " + agent, "Other: " + daemon, "Evil: " + app));
    // Found by name in one pass, passed over as listed in the next; both visits count.
    EXPECT_THAT(visitsOf(agent), ElementsAre(true, false));
    // Only a property list is asked for its label.
    EXPECT_THAT(visitsOf("/Library/LaunchDaemons/com.evil.daemon"), ElementsAre(false, false));
    EXPECT_EQ(scan.threadFiles(), 3);
    EXPECT_THAT(groups(),
                ElementsAre("Evil[1]{com.evil.agent[1] EvilApp[1]}", "Other[1]{com.other[1]}"));
    const auto& evil = *category_->groups().front();
    EXPECT_EQ(evil.attachImage(), ImageRef::named("malware_icon"));
    EXPECT_EQ(evil.categoryObj(), category_);
    EXPECT_EQ(evil.size(), scan.treats()[0]->fileSize() + scan.treats()[2]->fileSize());
    EXPECT_GT(scan.treats()[2]->fileSize(), 0);
    EXPECT_THAT(log_.lines(), ElementsAre("adware==3"));
}

TEST_F(AdwareScanTest, AppStringsMatchBundlePathsAnywhereInApplicationsAndHome) {
    const std::string plain = addApp("/Applications", "FastSearch");
    const std::string nested = addApp("/Applications/Tools", "Helper");
    const std::string inHome = addApp(home_ + "/Downloads/MacBooster Kit", "Installer");
    addApp(plain + "/Contents/Helpers", "FastSearch Agent");
    fake_.write(home_ + "/Documents/FastSearch.txt", "");
    fake_.write("/Applications/FastSearch.app.zip", "");
    // A link back up the tree must not send the walk round in circles.
    fake_.symlink(home_ + "/Downloads/loop", "..");

    // An empty string matches nothing.
    run({threat("Empty", {{"app", {""}}}), threat("Search", {{"app", {"FastSearch"}}}),
         threat("Booster", {{"app", {"Booster"}}}), threat("Tools", {{"app", {"Tools/Helper"}}})});

    EXPECT_THAT(findings(),
                ElementsAre("Search: " + plain, "Tools: " + nested, "Booster: " + inHome));
    // Bundles are candidates and never entered; folders are only counted; other files are
    // not visited.
    EXPECT_THAT(visitsOf(plain + "/Contents/Helpers/FastSearch Agent.app"), IsEmpty());
    EXPECT_THAT(visitsOf(home_ + "/Downloads/MacBooster Kit"), ElementsAre(false));
    EXPECT_THAT(visitsOf(home_ + "/Documents/FastSearch.txt"), IsEmpty());
}

TEST_F(AdwareScanTest, PathStringsAreReportedByTheThreatsName) {
    const std::string present = fake_.write("/Library/Application Support/Evil/evil.dylib", "x");

    AdwareScan& scan = run({threat("Evil", {{"path", {"/missing/one", present, present}}}),
                            threat("", {{"path", {"", "~/Library"}}})});

    EXPECT_THAT(findings(), ElementsAre("Evil: " + present));
    // One visit per string, found or not, and a path already listed is passed over.
    EXPECT_THAT(visitsOf("Evil"), ElementsAre(false, true, false));
    EXPECT_THAT(visitsOf(""), ElementsAre(false, false));
    EXPECT_EQ(scan.threadFiles(), 1);
}

TEST_F(AdwareScanTest, BrowserExtensionsBecomeFindings) {
    const std::string safari = home_ + "/Library/Safari/Extensions";
    fake_.write(safari + "/CouponLink.safariextz", "x");
    fake_.write(safari + "/Extensions.plist", "x");
    const std::string chrome = fake_.chromeExtensionsFolder();
    fake_.addBrowserExtension(chrome, "aaaa", "1.0", R"({"name": "Shop Helper", "icons": {}})");
    fake_.addBrowserExtension(chrome, "aaaa", "1.1", R"({"name": "Shop Helper", "icons": {}})");
    fake_.addBrowserExtension(chrome, "bbbb", "1.0", R"({"name": "Good", "icons": {}})");
    const std::string opera = fake_.operaExtensionsFolder();
    fake_.addBrowserExtension(opera, "cccc", "1.0", R"({"name": "Shop Helper", "icons": {}})");
    const std::string xpi = fake_.write(support_ + "/Firefox/Profiles/p/extensions/s@x.xpi", "x");
    fake_.addFirefoxRegistry("p", R"({"addons": [{"descriptor": ")" + xpi +
                                      R"(", "defaultLocale": {"name": "Shop Helper"}}]})");
    const std::string packaged = fake_.write(support_ + "/Google/Chrome/evil.crx", "x");

    run({threat("Shopper", {{"extensions", {"CouponLink", "Shop Help", "evil.crx", "Good.x"}}})});

    EXPECT_THAT(
        findings(),
        ElementsAre("Shopper: " + safari + "/CouponLink.safariextz", "Shopper: " + chrome + "/aaaa",
                    "Shopper: " + opera + "/cccc", "Shopper: " + xpi, "Shopper: " + packaged));
    const auto& treats = scan_->treats();
    EXPECT_EQ(treats[0]->fileType(), "com.apple.safari.extension");
    EXPECT_EQ(treats[1]->fileName(), "Shop Helper");
    EXPECT_EQ(treats[3]->fileType(), "xpi");
    // The Extensions folder is visited by passes 1, 5, 7 and 10, and counts as one finding in
    // pass 7 for its two records of one extension.
    EXPECT_THAT(visitsOf(chrome), ElementsAre(false, false, true, false));
    EXPECT_THAT(visitsOf(safari + "/Extensions.plist"), ElementsAre(false, false, false));
    EXPECT_THAT(visitsOf(chrome + "/aaaa/1.0/manifest.json"), ElementsAre(false, false, false));
    EXPECT_THAT(groups(), ElementsAre("Shopper[1]{CouponLink[1] Shop Helper[1] Shop Helper[1] "
                                      "Shop Helper[1] evil[1]}"));
}

TEST_F(AdwareScanTest, StopEndsTheScanButKeepsTheFindingsSoFar) {
    const std::string first = addApp("/Applications", "A");
    addApp("/Applications", "B");
    fake_.mkdir(home_ + "/Documents");
    fake_.write(home_ + "/Library/Safari/Extensions/A.safariextz", "x");
    fake_.addBrowserExtension(fake_.chromeExtensionsFolder(), "id", "1.0",
                              R"({"name": "A", "icons": {}})");
    fake_.addFirefoxRegistry("p", R"({"addons": [{"descriptor": "/x.xpi",
                                                  "defaultLocale": {"name": "A"}}]})");
    onVisit_ = [this, &first](const std::string& path) {
        if (path == first)
            scan_->setStop(true);
    };

    run({threat("A", {{"app", {"A.app", "B.app"}}, {"extensions", {"A"}}})});

    EXPECT_THAT(findings(), ElementsAre("A: " + first));
    EXPECT_THAT(groups(), ElementsAre("A[1]{A[1]}"));
    // Pass 5 ends at once. Passes 6 to 9 end before their first item; pass 10 hands over
    // the first branch of its first folder, testing the stop after the deepest entry, and
    // ends.
    auto stopped = std::find_if(visits_.begin(), visits_.end(),
                                [&](const Visit& visit) { return visit.path == first; });
    ASSERT_NE(stopped, visits_.end());
    std::vector<std::string> after;
    for (auto it = stopped + 1; it != visits_.end(); ++it)
        after.push_back(it->path);
    const std::string chrome = support_ + "/Google/Chrome";
    EXPECT_THAT(
        after, ElementsAre(chrome + "/Default/Extensions/id/1.0/manifest.json",
                           chrome + "/Default/Extensions/id/1.0", chrome + "/Default/Extensions/id",
                           chrome + "/Default/Extensions", chrome + "/Default"));
    EXPECT_THAT(log_.lines(), ElementsAre("adware==1"));

    // The next scan starts afresh.
    onVisit_ = nullptr;
    visits_.clear();
    lastThreats_ = 0;
    scan_->initargs();
    EXPECT_EQ(scan_->scanedFiles(), 0);
    EXPECT_EQ(scan_->timeelapsed(), "00:10:00");
    EXPECT_EQ(scan_->scanningFile(), home_);
    EXPECT_THAT(scan_->treats(), IsEmpty());
    EXPECT_THAT(category_->groups(), IsEmpty());
    scan_->analysisAdware();
    EXPECT_EQ(scan_->treats().size(), 5u);  // both apps, Safari, Chrome, Firefox
}

TEST_F(AdwareScanTest, AStopFlagGivenFromOutsideStopsTheScanWithoutTheScanObject) {
    const std::string first = addApp("/Applications", "A");
    addApp("/Applications", "B");
    std::atomic<bool> pageStop{true};  // left raised by an earlier run: initargs clears it
    outsideStop_ = &pageStop;
    onVisit_ = [&](const std::string& path) {
        if (path == first)
            pageStop = true;
    };

    run({threat("A", {{"app", {"A.app", "B.app"}}})});

    EXPECT_THAT(findings(), ElementsAre("A: " + first));
    EXPECT_TRUE(scan_->stop());
    scan_->initargs();
    EXPECT_FALSE(pageStop);
    scan_->setStop(true);
    EXPECT_TRUE(pageStop);
}

TEST_F(AdwareScanTest, WalkHandsFoldersAfterTheirContents) {
    fake_.write("/top/b/inner.txt", "");
    fake_.write("/top/.hidden", "");
    fake_.write("/top/a.txt", "");
    fake_.write("/top/Pack.app/Contents/Info.plist", "");
    fake_.write("/file.txt", "");
    AdwareScan scan(plist::Array{}, {});
    std::vector<std::string> handed;
    scan.method_0({"/top", "/file.txt", "/missing"},
                  [&](const std::string& path) { handed.push_back(path); });
    EXPECT_THAT(handed, ElementsAre("/top/.hidden", "/top/Pack.app", "/top/a.txt",
                                    "/top/b/inner.txt", "/top/b", "/file.txt", "/missing"));
}

TEST(AdwareScanStatic, TimeFromIntervalCutsEachPart) {
    EXPECT_EQ(AdwareScan::timeFromInterval(3725.9), "Time Elapsed: 01:02:05");
    EXPECT_EQ(AdwareScan::timeFromInterval(59.9), "Time Elapsed: 00:00:59");
    EXPECT_EQ(AdwareScan::timeFromInterval(3600), "Time Elapsed: 01:00:00");
    EXPECT_EQ(AdwareScan::timeFromInterval(360000), "Time Elapsed: 100:00:00");
}

TEST(AdwareScanStatic, AliasesAndFoldersAsTheWalksSeeThem) {
    sample::FakeVolume fake;
    ScopedVolume scope(fake.volume());
    fake.write("/alias", std::string("book\0\0\0\0mark", 12));
    fake.write("/plain", "text");
    fake.write("/short", "bo");
    fake.symlink("/link", "plain");
    fake.mkdir("/folder.bundle");
    fake.mkdir("/Kit.framework");
    fake.mkdir("/my.folder");
    fake.symlink("/folder-link", "my.folder");
    EXPECT_TRUE(AdwareScan::isAlias("/alias"));
    EXPECT_TRUE(AdwareScan::isAlias("/link"));
    EXPECT_FALSE(AdwareScan::isAlias("/plain"));
    EXPECT_FALSE(AdwareScan::isAlias("/short"));
    EXPECT_FALSE(AdwareScan::isAlias("/missing"));
    EXPECT_FALSE(AdwareScan::isAlias(""));

    EXPECT_TRUE(isDirectory("/my.folder"));
    EXPECT_TRUE(isDirectory("/folder-link"));
    EXPECT_FALSE(isDirectory("/folder.bundle"));
    EXPECT_FALSE(isDirectory("/Kit.framework"));
    EXPECT_FALSE(isDirectory("/plain"));
    EXPECT_FALSE(isDirectory("/missing"));
}

}  // namespace
}  // namespace sysmend
