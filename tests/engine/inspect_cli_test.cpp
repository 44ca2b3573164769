#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "support/fake_volume.h"
#include "support/run_command.h"

namespace sysmend {
namespace {

using nlohmann::json;
using testing::runCommand;

constexpr const char* kReports = "/Users/alice/Library/Logs/DiagnosticReports";

class InspectCliTest : public ::testing::Test {
  protected:
    testing::CommandResult run(std::vector<std::string> args) {
        std::vector<std::string> argv{SYSMEND_CLI, "--root", vol_.root(), "--home", "/Users/alice"};
        argv.insert(argv.end(), args.begin(), args.end());
        return runCommand(argv);
    }

    json runJson(std::vector<std::string> args, int status = 0) {
        args.push_back("--json");
        testing::CommandResult r = run(args);
        EXPECT_EQ(r.status, status) << r.err;
        return json::parse(r.out);
    }

    bool exists(const std::string& volumePath) {
        return std::filesystem::exists(std::filesystem::symlink_status(vol_.host(volumePath)));
    }

    testing::FakeVolume vol_;
};

TEST_F(InspectCliTest, StartupListsOneGroupPerJobInFolderOrder) {
    vol_.addAppBundle("/Applications", "CloudSync", "com.example.cloudsync");
    vol_.addLaunchJob("/Library/LaunchDaemons", "b.plist", "com.example.cloudsync");
    vol_.addLaunchJob("/Users/alice/Library/LaunchAgents", "a.plist", " com.example.cloudsync\t");
    vol_.addLaunchJob("/Library/LaunchAgents", "tool.plist", "org.example.tool");

    json doc = runJson({"startup"});
    EXPECT_EQ(doc, json::parse(R"({"tool": "startup", "groups": [
        {"title": "CloudSync", "checked": 0, "items": [{"title": "CloudSync",
         "item_id": "com.example.cloudsync",
         "loaded_using": "/Users/alice/Library/LaunchAgents/a.plist",
         "full_path": "/Applications/CloudSync.app"}]},
        {"title": "CloudSync", "checked": 0, "items": [{"title": "CloudSync",
         "item_id": "com.example.cloudsync",
         "loaded_using": "/Library/LaunchDaemons/b.plist",
         "full_path": "/Applications/CloudSync.app"}]}]})"));

    testing::CommandResult table = run({"startup"});
    EXPECT_EQ(table.status, 0);
    EXPECT_NE(table.out.find("/Library/LaunchDaemons/b.plist"), std::string::npos);
}

TEST_F(InspectCliTest, CrashesListsGroupsItemsAndTheSummaryOfCheckedItems) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addCrashReport("Foo_1.crash", "com.example.foo");
    vol_.addCrashReport("Foo_2.crash", "com.example.foo");

    json doc = runJson({"crashes"});
    EXPECT_EQ(doc["tool"], "crashes");
    ASSERT_EQ(doc["groups"].size(), 1u);
    const json& group = doc["groups"][0];
    EXPECT_EQ(group["title"], "Foo");
    EXPECT_EQ(group["checked"], 0);
    ASSERT_EQ(group["items"].size(), 2u);
    EXPECT_EQ(group["items"][0]["name"], "Foo_1.crash");
    EXPECT_EQ(group["items"][0]["path"], std::string(kReports) + "/Foo_1.crash");
    EXPECT_EQ(group["items"][0]["checked"], 0);
    EXPECT_EQ(group["size"], group["items"][0]["size"].get<std::int64_t>() +
                                 group["items"][1]["size"].get<std::int64_t>());
    EXPECT_EQ(doc["summary"], "");
    EXPECT_FALSE(doc.contains("removed"));

    vol_.addCrashReporterEntry("nothing-matches.plist");
    doc = runJson({"crashes"});
    EXPECT_EQ(doc["groups"][0]["checked"], 1);
    const std::string summary = doc["summary"];
    EXPECT_EQ(summary.rfind("2 files | ", 0), 0u) << summary;
}

TEST_F(InspectCliTest, CrashesRemoveDeletesNothingWhenNothingIsChecked) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addCrashReport("Foo_1.crash", "com.example.foo");

    json doc = runJson({"crashes", "--remove"});
    EXPECT_EQ(doc["removed"], json::array());
    EXPECT_EQ(doc["failed"], json::array());
    EXPECT_EQ(doc["groups"].size(), 1u);
    EXPECT_TRUE(exists(std::string(kReports) + "/Foo_1.crash"));
}

// A reporter entry whose name holds two titles is listed in both groups: the second removal of
// the same file fails, and is reported.
TEST_F(InspectCliTest, CrashesRemoveDeletesTheCheckedFilesAndReportsFailures) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addAppBundle("/Applications", "Bar", "com.example.bar");
    vol_.addCrashReport("Foo_1.crash", "com.example.foo");
    vol_.addCrashReport("Bar_1.crash", "com.example.bar");
    const std::string shared = vol_.addCrashReporterEntry("Foo-Bar.plist");
    const std::string unrelated = vol_.addCrashReporterEntry("Other.plist");
    const std::string stray = vol_.write("/Users/alice/Library/Logs/stray.crash", "x");

    json doc = runJson({"crashes", "--remove"}, 1);
    EXPECT_EQ(doc["removed"], (json{std::string(kReports) + "/Bar_1.crash", shared,
                                    std::string(kReports) + "/Foo_1.crash"}));
    EXPECT_EQ(doc["failed"], json{shared});
    EXPECT_EQ(doc["groups"], json::array());
    EXPECT_EQ(doc["summary"], "");
    EXPECT_FALSE(exists(std::string(kReports) + "/Foo_1.crash"));
    EXPECT_FALSE(exists(shared));
    EXPECT_TRUE(exists(unrelated));
    EXPECT_TRUE(exists(stray));

    testing::CommandResult again = run({"crashes", "--remove"});
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_NE(again.out.find("no crash reports"), std::string::npos);
}

TEST_F(InspectCliTest, FirewallSaysOnUnlessTheFileSaysZero) {
    EXPECT_EQ(runJson({"firewall"}),
              json::parse(R"({"tool": "firewall", "on": true, "text": "Firewall is on"})"));
    vol_.setFirewall(0);
    EXPECT_EQ(runJson({"firewall"}),
              json::parse(R"({"tool": "firewall", "on": false, "text": "Firewall is off"})"));
    EXPECT_EQ(run({"firewall"}).out, "Firewall is off\n");
}

TEST_F(InspectCliTest, ExtraArgumentsAreUsageErrors) {
    for (const char* command : {"startup", "crashes", "firewall"}) {
        EXPECT_EQ(run({command, "extra"}).status, 2) << command;
        EXPECT_EQ(run({command, "--bogus"}).status, 2) << command;
    }
}

}  // namespace
}  // namespace sysmend
