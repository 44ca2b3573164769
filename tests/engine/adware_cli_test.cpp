#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "sample/fake_volume.h"
#include "support/run_command.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::runCommand;

// A volume with one finding of each kind the removal treats differently: a launch agent, a
// Safari extension, a Firefox add-on and a folder named by path.
class AdwareCliTest : public ::testing::Test {
  protected:
    void SetUp() override {
        vol_.write("/signatures/threats.json", R"([
            {"name": "ShadyAds", "launch": ["com.shady.agent.plist"],
             "extensions": ["ShadyExt", "ShadySearch"]},
            {"name": "Cloudnine", "path": ["/Library/Application Support/Cloudnine"]}
        ])");
        const auto built = runCommand({SYSMEND_CLI, "signatures", "build",
                                       vol_.host("/signatures/threats.json"), database()});
        ASSERT_EQ(built.status, 0) << built.err;

        agent_ = vol_.addLaunchJob(home() + "/Library/LaunchAgents", "com.shady.agent.plist",
                                   "com.shady.agent");
        vol_.write(kSafari + "/Extensions.plist", "<plist/>");
        vol_.write(kSafari + "/Harmless.safariextz", "xar!");
        safari_ = vol_.write(kSafari + "/ShadyExt.safariextz", "xar!");
        addon_ = profile() + "/extensions/shady@search.xpi";
        vol_.write(addon_, "zip");
        vol_.addFirefoxRegistry("p.default",
                                R"({"addons": [{"descriptor": ")" + addon_ +
                                    R"(", "defaultLocale": {"name": "ShadySearch"}}]})");
        vol_.write(kCloudnine + "/helper", "binary");
    }

    std::string home() const { return vol_.home(); }
    std::string profile() const {
        return home() + "/Library/Application Support/Firefox/Profiles/p.default";
    }
    std::string database() const { return vol_.host("/signatures/db.cx"); }

    testing::CommandResult adware(const std::vector<std::string>& extra, bool json = true) {
        std::vector<std::string> argv{SYSMEND_CLI, "--root", vol_.root(),    "--home",
                                      home(),      "adware", "--signatures", database()};
        if (json)
            argv.push_back("--json");
        argv.insert(argv.end(), extra.begin(), extra.end());
        return runCommand(argv);
    }

    bool exists(const std::string& volumePath) const {
        struct stat st {};
        return ::lstat(vol_.host(volumePath).c_str(), &st) == 0;
    }

    const std::string kSafari = "/Users/alice/Library/Safari/Extensions";
    const std::string kCloudnine = "/Library/Application Support/Cloudnine";
    sample::FakeVolume vol_;
    std::string agent_, safari_, addon_;
};

TEST_F(AdwareCliTest, ListsFindingsByThreatWithTheSummaryAndDeletesNothing) {
    const auto r = adware({});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto doc = nlohmann::json::parse(r.out);

    EXPECT_EQ(doc["tool"], "adware");
    EXPECT_EQ(doc["threats"], 4);
    EXPECT_GT(doc["scanned"].get<int>(), 4);
    EXPECT_FALSE(doc.contains("removed"));
    ASSERT_EQ(doc["groups"].size(), 2u);
    EXPECT_EQ(doc["groups"][0]["title"], "ShadyAds");
    EXPECT_EQ(doc["groups"][0]["checked"], 1);
    std::vector<std::string> rows;
    std::int64_t total = 0;
    for (const auto& group : doc["groups"]) {
        for (const auto& item : group["items"]) {
            rows.push_back(item["title"].get<std::string>() + " " +
                           item["name"].get<std::string>() + " " + item["path"].get<std::string>() +
                           " " + item["type"].get<std::string>() + " " + item["checked"].dump());
            total += item["size"].get<std::int64_t>();
        }
    }
    EXPECT_THAT(rows, ElementsAre("ShadyAds com.shady.agent " + agent_ + "  1",
                                  "ShadyAds ShadyExt " + safari_ + " com.apple.safari.extension 1",
                                  "ShadyAds ShadySearch " + addon_ + " xpi 1",
                                  "Cloudnine Cloudnine " + kCloudnine + "  1"));
    EXPECT_EQ(doc["summary"], "4 files | " + recal_size(total));
    EXPECT_TRUE(exists(agent_) && exists(safari_) && exists(addon_) && exists(kCloudnine));

    const auto table = adware({}, false);
    ASSERT_EQ(table.status, 0) << table.err;
    EXPECT_THAT(table.out,
                ContainsRegex("\nShadyAds +\\[x\\] +[0-9.]+ [A-Za-z]+ +" + addon_ + "\n"));
    EXPECT_THAT(table.out, HasSubstr("\n" + doc["summary"].get<std::string>() + "\n"));
    EXPECT_THAT(table.out, HasSubstr(" scanned, 4 threats\n"));
}

TEST_F(AdwareCliTest, RemoveDeletesTheFindingsAndTheBrowserListsNamingThem) {
    const auto r = adware({"--remove"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto doc = nlohmann::json::parse(r.out);

    EXPECT_THAT(doc["removed"].get<std::vector<std::string>>(),
                ElementsAre(agent_, safari_, addon_, kCloudnine));
    EXPECT_THAT(doc["failed"].get<std::vector<std::string>>(), IsEmpty());
    EXPECT_TRUE(doc["groups"].empty());
    EXPECT_EQ(doc["summary"], "");
    for (const std::string& gone : {agent_, safari_, addon_, kCloudnine,
                                    kSafari + "/Extensions.plist", profile() + "/extensions.json"})
        EXPECT_FALSE(exists(gone)) << gone;
    EXPECT_TRUE(exists(kSafari + "/Harmless.safariextz"));
    EXPECT_TRUE(exists(profile() + "/extensions"));
    EXPECT_THAT(r.err, HasSubstr("fire fox"));
}

// An add-on already gone is no failure: nothing of it is left. Its registry still goes.
TEST_F(AdwareCliTest, AStaleAddOnIsNoFailureWhileItsRegistryStillGoes) {
    ASSERT_EQ(::unlink(vol_.host(addon_).c_str()), 0);

    const auto r = adware({"--remove"}, false);

    EXPECT_EQ(r.status, 0);
    EXPECT_THAT(r.out, Not(HasSubstr("could not remove")));
    EXPECT_THAT(r.out, HasSubstr("removed " + addon_ + "\n"));
    EXPECT_THAT(r.out, HasSubstr("removed " + safari_ + "\n"));
    EXPECT_FALSE(exists(profile() + "/extensions.json"));
    EXPECT_FALSE(exists(agent_));
}

TEST_F(AdwareCliTest, AnUnloadableDatabaseIsOneLineAndStatusOne) {
    vol_.write("/signatures/db.cx", std::string(64, 'x'));
    auto r = adware({});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err,
              "sysmend-cli: adware: cannot load the signature database: "
              "error-code-1000: has bug\n");
    EXPECT_TRUE(r.out.empty());

    r = runCommand({SYSMEND_CLI, "--root", vol_.root(), "adware", "--signatures",
                    vol_.host("/signatures/none.cx")});
    EXPECT_EQ(r.status, 1);
    EXPECT_THAT(r.err, HasSubstr("cannot load the signature database: cannot read "));
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1);
    EXPECT_TRUE(exists(agent_));

    EXPECT_EQ(runCommand({SYSMEND_CLI, "--root", vol_.root(), "adware", "extra"}).status, 2);
}

}  // namespace
}  // namespace sysmend
