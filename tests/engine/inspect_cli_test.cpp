#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "sample/fake_volume.h"
#include "support/run_command.h"

namespace sysmend {
namespace {

using nlohmann::json;

const std::string kReports = "/Users/alice/Library/Logs/DiagnosticReports/";

class InspectCliTest : public ::testing::Test {
  protected:
    testing::CommandResult run(std::vector<std::string> args) {
        args.insert(args.begin(), {SYSMEND_CLI, "--root", vol_.root()});
        return testing::runCommand(args);
    }

    json runJson(std::vector<std::string> args, int status = 0) {
        args.push_back("--json");
        testing::CommandResult r = run(args);
        EXPECT_EQ(r.status, status) << r.err;
        return json::parse(r.out);
    }

    bool exists(const std::string& volumePath) {
        return std::filesystem::exists(vol_.host(volumePath));
    }

    sample::FakeVolume vol_;
};

TEST_F(InspectCliTest, StartupListsOneGroupPerJobInFolderOrder) {
    vol_.addAppBundle("/Applications", "CloudSync", "com.example.cloudsync");
    vol_.addLaunchJob("/Library/LaunchDaemons", "b.plist", "com.example.cloudsync");
    vol_.addLaunchJob("/Users/alice/Library/LaunchAgents", "a.plist", " com.example.cloudsync\t");
    vol_.addLaunchJob("/Library/LaunchAgents", "tool.plist", "org.example.tool");

    auto group = [](const std::string& jobFile) {
        return json{{"title", "CloudSync"},
                    {"checked", 0},
                    {"items",
                     {{{"title", "CloudSync"},
                       {"item_id", "com.example.cloudsync"},
                       {"loaded_using", jobFile},
                       {"full_path", "/Applications/CloudSync.app"}}}}};
    };
    EXPECT_EQ(runJson({"startup"}), (json{{"tool", "startup"},
                                          {"groups",
                                           {group("/Users/alice/Library/LaunchAgents/a.plist"),
                                            group("/Library/LaunchDaemons/b.plist")}}}));
}

TEST_F(InspectCliTest, CrashesListsGroupsAndSummarisesCheckedItemsOnly) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addCrashReport("Foo_1.crash", "com.example.foo");
    vol_.addCrashReport("Foo_2.crash", "com.example.foo");

    // Nothing is checked while the reporter folder is empty: --remove deletes nothing.
    json doc = runJson({"crashes", "--remove"});
    ASSERT_EQ(doc["groups"].size(), 1u);
    const json& group = doc["groups"][0];
    EXPECT_EQ(group["title"], "Foo");
    EXPECT_EQ(group["checked"], 0);
    ASSERT_EQ(group["items"].size(), 2u);
    EXPECT_EQ(group["items"][1]["name"], "Foo_2.crash");
    EXPECT_EQ(group["items"][1]["path"], kReports + "Foo_2.crash");
    EXPECT_EQ(group["items"][1]["checked"], 0);
    EXPECT_EQ(group["size"], group["items"][0]["size"].get<std::int64_t>() +
                                 group["items"][1]["size"].get<std::int64_t>());
    EXPECT_EQ(doc["summary"], "");
    EXPECT_EQ(doc["removed"], json::array());
    EXPECT_TRUE(exists(kReports + "Foo_1.crash"));

    vol_.addCrashReporterEntry("nothing-matches.plist");
    doc = runJson({"crashes"});
    EXPECT_EQ(doc["groups"][0]["checked"], 1);
    EXPECT_EQ(doc["summary"].get<std::string>().rfind("2 files | ", 0), 0u) << doc["summary"];
    EXPECT_FALSE(doc.contains("removed"));
}

// A reporter entry whose name holds two titles is listed in both groups: it goes with the first
// and, being gone, is neither a failure nor removed twice.
TEST_F(InspectCliTest, CrashesRemoveDeletesTheCheckedFilesOnce) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addAppBundle("/Applications", "Bar", "com.example.bar");
    vol_.addCrashReport("Foo_1.crash", "com.example.foo");
    vol_.addCrashReport("Bar_1.crash", "com.example.bar");
    const std::string shared = vol_.addCrashReporterEntry("Foo-Bar.plist");
    const std::string unrelated = vol_.addCrashReporterEntry("Other.plist");

    json doc = runJson({"crashes", "--remove"});
    EXPECT_EQ(doc["removed"], (json{kReports + "Bar_1.crash", shared, kReports + "Foo_1.crash"}));
    EXPECT_EQ(doc["failed"], json::array());
    EXPECT_EQ(doc["groups"], json::array());
    EXPECT_EQ(doc["summary"], "");
    EXPECT_FALSE(exists(kReports + "Foo_1.crash"));
    EXPECT_TRUE(exists(unrelated));
    EXPECT_EQ(run({"crashes", "--remove"}).out, "no crash reports\n");
}

TEST_F(InspectCliTest, FirewallSaysOnUnlessTheFileSaysZero) {
    EXPECT_EQ(runJson({"firewall"}),
              (json{{"tool", "firewall"}, {"on", true}, {"text", "Firewall is on"}}));
    vol_.setFirewall(0);
    EXPECT_EQ(runJson({"firewall"}),
              (json{{"tool", "firewall"}, {"on", false}, {"text", "Firewall is off"}}));
    EXPECT_EQ(run({"firewall", "extra"}).status, 2);
}

}  // namespace
}  // namespace sysmend
