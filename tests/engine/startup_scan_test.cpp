#include "startup/startup_scan.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "model/tool_records.h"
#include "support/fake_volume.h"

namespace sysmend {
namespace {

using testing::FakeVolume;

constexpr const char* kUserAgents = "/Users/alice/Library/LaunchAgents";
constexpr const char* kUserDaemons = "/Users/alice/Library/LaunchDaemons";

std::string readTestData(const std::string& relative) {
    std::ifstream in(std::string(SYSMEND_TEST_DATA) + "/" + relative, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

class StartupScanTest : public ::testing::Test {
  protected:
    NAGroupObjArray scan() {
        ScopedVolume scope(vol_.volume());
        NACategoryObj category;
        NAStartupItemsScan().loadStartusItems(category);
        return category.groups();
    }

    static const NAStartupItemObj& item(const std::shared_ptr<NAGroupObj>& group) {
        return dynamic_cast<const NAStartupItemObj&>(*group->contents().at(0));
    }

    static std::vector<std::string> jobFiles(const NAGroupObjArray& groups) {
        std::vector<std::string> files;
        for (const auto& group : groups)
            files.push_back(item(group).loaded_using());
        return files;
    }

    FakeVolume vol_;
};

TEST_F(StartupScanTest, LabelWithBlanksAndTabsMatchesAndIsShownTrimmed) {
    vol_.addAppBundle("/Applications", "Cloud Sync", "com.example.cloudsync");
    vol_.addLaunchJob("/Library/LaunchAgents", "com.example.cloudsync.agent.plist",
                      " \t com.example.cloudsync\t ");

    NAGroupObjArray groups = scan();
    ASSERT_EQ(groups.size(), 1u);
    const auto& group = groups[0];
    EXPECT_EQ(group->title(), "Cloud Sync");
    EXPECT_EQ(group->attachImage(), ImageRef::fileIcon("/Applications/Cloud Sync.app"));
    ASSERT_EQ(group->contents().size(), 1u);
    const NAStartupItemObj& job = item(group);
    EXPECT_EQ(job.item_id(), "com.example.cloudsync");
    EXPECT_EQ(job.loaded_using(), "/Library/LaunchAgents/com.example.cloudsync.agent.plist");
    EXPECT_EQ(job.full_path(), "/Applications/Cloud Sync.app");
    EXPECT_EQ(job.title(), "Cloud Sync");
    EXPECT_EQ(job.group(), group);
    // Nothing else is set on the item or the group.
    EXPECT_EQ(job.isChecked(), 0);
    EXPECT_EQ(job.fileSize(), 0);
    EXPECT_EQ(job.filePath(), "");
    EXPECT_EQ(group->isChecked(), 0);
}

TEST_F(StartupScanTest, JobsThatNameNoInstalledApplicationOrAreNoJobsGiveNothing) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    const std::string agents = "/Library/LaunchAgents";
    vol_.addLaunchJob(agents, "tool.plist", "com.example.commandline-tool");
    vol_.addLaunchJob(agents, "newline.plist", "com.example.foo\n");
    vol_.addLaunchJob(agents, "empty.plist", "");
    vol_.writePlist(agents + "/array.plist", plist::Array{plist::Value("com.example.foo")});
    vol_.writePlist(agents + "/string.plist", plist::Value("com.example.foo"));
    plist::Dictionary numberLabel;
    numberLabel.set("Label", 7);
    vol_.writePlist(agents + "/number.plist", numberLabel);
    plist::Dictionary noLabel;
    noLabel.set("Program", "com.example.foo");
    vol_.writePlist(agents + "/nolabel.plist", noLabel);
    vol_.write(agents + "/garbage.plist", "<?xml version=\"1.0\"?><plist><dict><key>Label");
    vol_.write(agents + "/empty-file.plist", "");
    vol_.writePlist(agents + "/binary.plist", plist::Array{}, plist::Format::Binary);
    // The application was deleted after its job was installed.
    vol_.addAppBundle("/Applications", "Gone", "com.example.gone");
    vol_.addLaunchJob(agents, "gone.plist", "com.example.gone");
    std::filesystem::remove_all(vol_.host("/Applications/Gone.app"));

    EXPECT_TRUE(scan().empty());
}

TEST_F(StartupScanTest, SubFoldersAndHiddenFilesAreSearchedButBundlesAreNot) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchAgents/Vendor/Nested", "deep.plist", "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchAgents", ".hidden.plist", "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchAgents/Foo.app/Contents/Resources", "inside.plist",
                      "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchAgents/Kit.bundle", "inside.plist", "com.example.foo");

    EXPECT_EQ(jobFiles(scan()), (std::vector<std::string>{
                                    "/Library/LaunchAgents/.hidden.plist",
                                    "/Library/LaunchAgents/Vendor/Nested/deep.plist",
                                }));
}

// Types come from extensions here, so a property list is read by its name alone.
TEST_F(StartupScanTest, OnlyFilesTypedAsPropertyListsByTheirExtensionAreRead) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchAgents", "upper.PLIST", "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchAgents", "com.example.foo", "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchAgents", "noextension", "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchAgents", "job.xml", "com.example.foo");
    vol_.mkdir("/Library/LaunchAgents/folder.plist");

    ScopedVolume scope(vol_.volume());
    EXPECT_TRUE(NAStartupItemsScan::isPlistFile("/Library/LaunchAgents/upper.PLIST"));
    EXPECT_FALSE(NAStartupItemsScan::isPlistFile("/Library/LaunchAgents/noextension"));
    EXPECT_FALSE(NAStartupItemsScan::isPlistFile("/Library/LaunchAgents/folder.plist"));
    EXPECT_EQ(jobFiles(NAStartupItemsScan().scanFolder("/Library/LaunchAgents/")),
              std::vector<std::string>{"/Library/LaunchAgents/upper.PLIST"});
}

TEST_F(StartupScanTest, FiveFoldersInTheirOrderAppendedToTheCategory) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addLaunchJob(kUserDaemons, "5.plist", "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchDaemons", "4.plist", "com.example.foo");
    vol_.addLaunchJob("/System/Library/LaunchAgents", "3.plist", "com.example.foo");
    vol_.addLaunchJob("/Library/LaunchAgents", "2.plist", "com.example.foo");
    vol_.addLaunchJob(kUserAgents, "1.plist", "com.example.foo");

    ScopedVolume scope(vol_.volume());
    NACategoryObj category;
    auto earlier = std::make_shared<NAGroupObj>("Earlier", ImageRef::none());
    category.groups().push_back(earlier);
    NAStartupItemsScan().loadStartusItems(category);

    ASSERT_EQ(category.groups().size(), 6u);
    EXPECT_EQ(category.groups()[0], earlier);
    NAGroupObjArray found(category.groups().begin() + 1, category.groups().end());
    EXPECT_EQ(jobFiles(found), (std::vector<std::string>{
                                   "/Users/alice/Library/LaunchAgents/1.plist",
                                   "/Library/LaunchAgents/2.plist",
                                   "/System/Library/LaunchAgents/3.plist",
                                   "/Library/LaunchDaemons/4.plist",
                                   "/Users/alice/Library/LaunchDaemons/5.plist",
                               }));
    for (const auto& group : found)
        EXPECT_EQ(group->title(), "Foo");
}

TEST_F(StartupScanTest, RealJobFilesAreReadAndEachNamingAnAppGivesItsOwnGroup) {
    for (const char* name :
         {"LaunchDaemonInfo.plist", "LaunchDaemonInfo.dnsextd.plist", "test_launchd.plist",
          "io.osquery.agent.plist", "com.objective-see.lulu.plist", "launchd.plist",
          "launchd.noprogram.plist"}) {
        vol_.write(std::string("/Library/LaunchDaemons/") + name,
                   readTestData(std::string("launchd/") + name));
    }
    vol_.addAppBundle("/Applications", "LuLu", "com.objective-see.lulu");
    vol_.addAppBundle("/Applications", "osqueryd", "io.osquery.agent");
    vol_.addAppBundle("/System/Applications", "Responder", "com.apple.mDNSResponder");

    NAGroupObjArray groups = scan();
    EXPECT_EQ(jobFiles(groups), (std::vector<std::string>{
                                    "/Library/LaunchDaemons/LaunchDaemonInfo.plist",
                                    "/Library/LaunchDaemons/com.objective-see.lulu.plist",
                                    "/Library/LaunchDaemons/io.osquery.agent.plist",
                                    "/Library/LaunchDaemons/test_launchd.plist",
                                }));
    ASSERT_EQ(groups.size(), 4u);
    EXPECT_EQ(groups[0]->title(), "Responder");
    EXPECT_EQ(groups[3]->title(), "Responder");
    EXPECT_EQ(item(groups[1]).item_id(), "com.objective-see.lulu");
}

TEST_F(StartupScanTest, LinkedJobFileIsReadFromTheVolumeNotTheHost) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addLaunchJob("/Applications/Foo.app/Contents/Resources", "agent.plist", "com.example.foo");
    vol_.symlink("/Library/LaunchAgents/com.example.foo.plist",
                 "/Applications/Foo.app/Contents/Resources/agent.plist");
    vol_.symlink("/Library/LaunchAgents/dangling.plist", "/nowhere/agent.plist");

    EXPECT_EQ(jobFiles(scan()),
              std::vector<std::string>{"/Library/LaunchAgents/com.example.foo.plist"});
}

TEST_F(StartupScanTest, MissingFoldersGiveAnEmptyResult) {
    EXPECT_TRUE(scan().empty());
}

}  // namespace
}  // namespace sysmend
