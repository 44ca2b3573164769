#include "startup/startup_scan.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "model/tool_records.h"
#include "sample/fake_volume.h"

namespace sysmend {
namespace {

const NAStartupItemObj& job(const std::shared_ptr<NAGroupObj>& group) {
    return dynamic_cast<const NAStartupItemObj&>(*group->contents().at(0));
}

class StartupScanTest : public ::testing::Test {
  protected:
    NAGroupObjArray scan() {
        ScopedVolume scope(vol_.volume());
        NACategoryObj category;
        NAStartupItemsScan().loadStartusItems(category);
        return category.groups();
    }

    // The job file of each group, with the group's title.
    std::vector<std::string> jobFiles() {
        std::vector<std::string> files;
        for (const auto& group : scan())
            files.push_back(group->title() + " " + job(group).loaded_using());
        return files;
    }

    sample::FakeVolume vol_;
};

TEST_F(StartupScanTest, LabelWithBlanksAndTabsMatchesAndIsShownTrimmed) {
    vol_.addAppBundle("/Applications", "Cloud Sync", "com.example.cloudsync");
    vol_.addLaunchJob("/Library/LaunchAgents", "agent.plist", " \t com.example.cloudsync\t ");

    NAGroupObjArray groups = scan();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0]->title(), "Cloud Sync");
    EXPECT_EQ(groups[0]->attachImage(), ImageRef::fileIcon("/Applications/Cloud Sync.app"));
    ASSERT_EQ(groups[0]->contents().size(), 1u);
    const NAStartupItemObj& item = job(groups[0]);
    EXPECT_EQ(item.item_id(), "com.example.cloudsync");
    EXPECT_EQ(item.loaded_using(), "/Library/LaunchAgents/agent.plist");
    EXPECT_EQ(item.full_path(), "/Applications/Cloud Sync.app");
    EXPECT_EQ(item.title(), "Cloud Sync");
    EXPECT_EQ(item.isChecked(), 0);
    EXPECT_EQ(item.fileSize(), 0);
}

TEST_F(StartupScanTest, JobsThatNameNoInstalledApplicationOrAreNoJobsGiveNothing) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    const std::string agents = "/Library/LaunchAgents/";
    vol_.addLaunchJob(agents, "tool.plist", "com.example.commandline-tool");
    vol_.addLaunchJob(agents, "newline.plist", "com.example.foo\n");
    vol_.writePlist(agents + "array.plist", plist::Array{plist::Value("com.example.foo")});
    plist::Dictionary numberLabel;
    numberLabel.set("Label", 7);
    vol_.writePlist(agents + "number.plist", numberLabel);
    vol_.write(agents + "garbage.plist", "<?xml version=\"1.0\"?><plist><dict><key>Label");
    vol_.addAppBundle("/Applications", "Gone", "com.example.gone");
    vol_.addLaunchJob(agents, "gone.plist", "com.example.gone");
    std::filesystem::remove_all(vol_.host("/Applications/Gone.app"));

    EXPECT_TRUE(scan().empty());
}

// Types come from extensions here, so a property list is known by its name alone.
TEST_F(StartupScanTest, PropertyListsBelowTheFolderButNotInBundlesNorWithoutTheExtension) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    const std::string agents = "/Library/LaunchAgents/";
    for (const char* file : {"Vendor/Nested/deep.plist", ".hidden.plist", "upper.PLIST",
                             "Foo.app/Contents/Resources/inside.plist", "Kit.bundle/inside.plist",
                             "com.example.foo", "noextension", "job.xml"}) {
        vol_.addLaunchJob(agents, file, "com.example.foo");
    }
    vol_.mkdir(agents + "folder.plist");
    vol_.addLaunchJob("/Library/Real", "agent.plist", "com.example.foo");
    vol_.symlink(agents + "linked.plist", "/Library/Real/agent.plist");

    EXPECT_EQ(jobFiles(), (std::vector<std::string>{
                              "Foo /Library/LaunchAgents/.hidden.plist",
                              "Foo /Library/LaunchAgents/Vendor/Nested/deep.plist",
                              "Foo /Library/LaunchAgents/linked.plist",
                              "Foo /Library/LaunchAgents/upper.PLIST",
                          }));
}

TEST_F(StartupScanTest, FiveFoldersInTheirOrderPerUserDaemonsLast) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    const std::vector<std::string> folders = {
        "/Users/alice/Library/LaunchAgents", "/Library/LaunchAgents",
        "/System/Library/LaunchAgents", "/Library/LaunchDaemons",
        "/Users/alice/Library/LaunchDaemons"};
    std::vector<std::string> expected;
    for (std::size_t i = folders.size(); i-- > 0;) {  // written last to first
        const std::string file = std::to_string(i + 1) + ".plist";
        vol_.addLaunchJob(folders[i], file, "com.example.foo");
        expected.insert(expected.begin(), "Foo " + folders[i] + "/" + file);
    }
    EXPECT_EQ(jobFiles(), expected);
}

TEST_F(StartupScanTest, RealJobFilesEachNamingAnAppGiveTheirOwnGroup) {
    vol_.copyIn(SYSMEND_TEST_DATA "/plist/launchd", "/Library/LaunchDaemons");
    vol_.addAppBundle("/Applications", "LuLu", "com.objective-see.lulu");
    vol_.addAppBundle("/Applications", "osqueryd", "io.osquery.agent");
    vol_.addAppBundle("/System/Applications", "Responder", "com.apple.mDNSResponder");

    EXPECT_EQ(jobFiles(), (std::vector<std::string>{
                              "Responder /Library/LaunchDaemons/LaunchDaemonInfo.plist",
                              "LuLu /Library/LaunchDaemons/com.objective-see.lulu.plist",
                              "osqueryd /Library/LaunchDaemons/io.osquery.agent.plist",
                              "Responder /Library/LaunchDaemons/test_launchd.plist",
                          }));
}

}  // namespace
}  // namespace sysmend
