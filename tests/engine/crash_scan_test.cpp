#include "crashes/crash_scan.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "model/na_group_obj.h"
#include "support/fake_volume.h"

namespace sysmend {
namespace {

using testing::FakeVolume;

constexpr const char* kReports = "/Users/alice/Library/Logs/DiagnosticReports";
constexpr const char* kReporter = "/Users/alice/Library/Application Support/CrashReporter";

std::string readTestData(const std::string& relative) {
    std::ifstream in(std::string(SYSMEND_TEST_DATA) + "/" + relative, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

TEST(CrashReportIdentifierTest, TakesTheLastPieceOfTheFirstIdentifierLineTrimmed) {
    EXPECT_EQ(crashReportIdentifier("Process: X\nIdentifier:   \t com.example.x \t\nVersion: 1"),
              "com.example.x");
    EXPECT_EQ(crashReportIdentifier("Identifier: a:b:com.example.x"), "com.example.x");
    EXPECT_EQ(crashReportIdentifier("Bundle Identifier com.example.x\nIdentifier: y"),
              "Bundle Identifier com.example.x");
    EXPECT_EQ(crashReportIdentifier("Identifier:"), "");
    EXPECT_EQ(crashReportIdentifier("identifier: com.example.x"), std::nullopt);
    EXPECT_EQ(crashReportIdentifier(""), std::nullopt);
}

TEST(CrashReportIdentifierTest, LinesEndAtEveryNewlineCharacter) {
    for (const char* newline :
         {"\n", "\r", "\r\n", "\v", "\f", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"}) {
        const std::string text = std::string("Path: /x") + newline + "Identifier: com.example.x" +
                                 newline + "Version: 1:2";
        EXPECT_EQ(crashReportIdentifier(text), "com.example.x")
            << ::testing::PrintToString(newline);
    }
    // Other characters of those lead bytes are no line end.
    EXPECT_EQ(crashReportIdentifier("P\xE2\x80\x94Identifier: x\xC2\xA0y"), "x\xC2\xA0y");
}

TEST(CrashReportIdentifierTest, TextThatIsNotWellFormedUtf8HasNoIdentifier) {
    const std::string good = "Identifier: com.example.x\n";
    for (const char* bad : {"\xFF", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                            "\x80", "\xC3", "\xE2\x82"}) {
        EXPECT_EQ(crashReportIdentifier(good + "tail " + bad), std::nullopt)
            << ::testing::PrintToString(bad);
        EXPECT_EQ(crashReportIdentifier(bad + good), std::nullopt);
    }
    EXPECT_EQ(crashReportIdentifier(good + "caf\xC3\xA9 \xF0\x9F\x92\xA5 \xE2\x82\xAC"),
              "com.example.x");
    // A file cut at the read limit may end inside a character.
    EXPECT_EQ(crashReportIdentifier(good + "\xE2\x82", true), "com.example.x");
    EXPECT_EQ(crashReportIdentifier(good + "\xFF", true), std::nullopt);
}

class CrashScanTest : public ::testing::Test {
  protected:
    std::shared_ptr<NACategoryObj> scan() {
        ScopedVolume scope(vol_.volume());
        auto category = std::make_shared<NACategoryObj>();
        scanCrashedApplications(category);
        return category;
    }

    static std::vector<std::string> paths(const std::shared_ptr<NAGroupObj>& group) {
        std::vector<std::string> out;
        for (const auto& item : group->contents())
            out.push_back(item->filePath());
        return out;
    }

    static std::vector<std::string> titles(const NACategoryObj& category) {
        std::vector<std::string> out;
        for (const auto& group : category.groups())
            out.push_back(group->title());
        return out;
    }

    FakeVolume vol_;
};

TEST_F(CrashScanTest, ReportsOfOneApplicationMakeOneGroupInListingOrder) {
    vol_.addAppBundle("/Applications", "Cloud Sync", "com.example.cloudsync");
    vol_.addAppBundle("/Applications/Utilities", "Notes", "net.example.notes");
    vol_.addCrashReportWithLine("b.crash", "Identifier:    \t com.example.cloudsync  ");
    vol_.addCrashReport("a.crash", "net.example.notes");
    vol_.addCrashReportWithLine("c.crash", "Identifier: x:y:com.example.cloudsync");

    auto category = scan();
    ASSERT_EQ(titles(*category), (std::vector<std::string>{"Notes", "Cloud Sync"}));
    const auto& sync = category->groups()[1];
    EXPECT_EQ(paths(sync), (std::vector<std::string>{std::string(kReports) + "/b.crash",
                                                     std::string(kReports) + "/c.crash"}));
    EXPECT_EQ(sync->attachImage(), ImageRef::fileIcon("/Applications/Cloud Sync.app"));
    EXPECT_EQ(sync->categoryObj(), category);
    EXPECT_GT(sync->size(), 0);
    EXPECT_EQ(sync->size(), sync->contents()[0]->fileSize() + sync->contents()[1]->fileSize());
    EXPECT_EQ(sync->contents()[0]->group(), sync);
}

TEST_F(CrashScanTest, ReportsThatNameNoInstalledApplicationOrAreNoTextAreDropped) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addAppBundle("/Applications", "Gone", "com.example.gone");
    std::filesystem::remove_all(vol_.host("/Applications/Gone.app"));
    vol_.addCrashReport("gone.crash", "com.example.gone");
    vol_.addCrashReport("never.crash", "com.example.never-installed");
    vol_.write(std::string(kReports) + "/no-identifier.crash", "Process: Foo\nPath: /x\n");
    vol_.write(std::string(kReports) + "/latin1.crash",
               "Identifier: com.example.foo\nCopyright \xA9 Example\n");
    vol_.addCrashReport("Sub/inside.crash", "com.example.foo");
    vol_.symlink(std::string(kReports) + "/dangling.crash", "/nowhere.crash");
    ASSERT_EQ(::mkfifo(vol_.host(std::string(kReports) + "/fifo.crash").c_str(), 0644), 0);

    EXPECT_TRUE(scan()->groups().empty());
}

TEST_F(CrashScanTest, ReporterEntriesJoinEveryGroupTheirNameContainsAndCheckAllGroups) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addAppBundle("/Applications", "Bar", "com.example.bar");
    vol_.addAppBundle("/Applications", "Baz", "com.example.baz");
    vol_.addCrashReport("foo.crash", "com.example.foo");
    vol_.addCrashReport("bar.crash", "com.example.bar");
    vol_.addCrashReport("baz.crash", "com.example.baz");
    vol_.addCrashReporterEntry("FOO_BAR.plist");
    vol_.addCrashReporterEntry("xfOox.plist");
    vol_.addCrashReporterEntry("Unrelated.plist");

    auto category = scan();
    ASSERT_EQ(titles(*category), (std::vector<std::string>{"Bar", "Baz", "Foo"}));
    const std::string reporter = kReporter;
    EXPECT_EQ(paths(category->groups()[0]),
              (std::vector<std::string>{std::string(kReports) + "/bar.crash",
                                        reporter + "/FOO_BAR.plist"}));
    EXPECT_EQ(paths(category->groups()[1]),
              (std::vector<std::string>{std::string(kReports) + "/baz.crash"}));
    EXPECT_EQ(paths(category->groups()[2]),
              (std::vector<std::string>{std::string(kReports) + "/foo.crash",
                                        reporter + "/FOO_BAR.plist", reporter + "/xfOox.plist"}));
    // Baz matched nothing and is checked all the same, with its item.
    for (const auto& group : category->groups()) {
        EXPECT_EQ(group->isChecked(), 1) << group->title();
        for (const auto& item : group->contents())
            EXPECT_EQ(item->isChecked(), 1) << item->filePath();
    }
}

TEST_F(CrashScanTest, WithAnEmptyReporterFolderGroupsAndItemsStartUnchecked) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addCrashReport("foo.crash", "com.example.foo");
    vol_.mkdir(kReporter);

    auto category = scan();
    ASSERT_EQ(category->groups().size(), 1u);
    EXPECT_EQ(category->groups()[0]->isChecked(), 0);
    EXPECT_EQ(category->groups()[0]->contents()[0]->isChecked(), 0);
}

TEST_F(CrashScanTest, ReporterEntriesNeverMakeGroups) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addCrashReporterEntry("Foo.plist");

    EXPECT_TRUE(scan()->groups().empty());
}

TEST_F(CrashScanTest, RealReportsAreAttributedWhenTheirApplicationIsInstalled) {
    vol_.write(std::string(kReports) + "/Slack_2021-07-19.crash", readTestData("crash/crash.txt"));
    vol_.write(std::string(kReports) + "/iTubeDownloader.crash",
               readTestData("crash/XCDYouTubeKit-54.txt"));
    EXPECT_TRUE(scan()->groups().empty());

    vol_.addAppBundle("/Applications", "Slack", "com.tinyspeck.slackmacgap");
    vol_.addAppBundle("/Users/alice/Applications", "iTubeDownloader",
                      "com.AlphaSoft.iTubeDownloader");
    auto category = scan();
    ASSERT_EQ(titles(*category), (std::vector<std::string>{"Slack", "iTubeDownloader"}));
    EXPECT_EQ(paths(category->groups()[0]),
              std::vector<std::string>{std::string(kReports) + "/Slack_2021-07-19.crash"});
}

TEST_F(CrashScanTest, HugeReportIsJudgedByItsFirstBytes) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    std::string big = "Identifier: com.example.foo\n";
    big.resize(kCrashReportReadLimit + 1024, 'x');
    // A character cut by the limit is no fault; bytes past it are not read.
    big.replace(kCrashReportReadLimit - 1, 3, "\xE2\x82\xAC");
    big.back() = '\xFF';
    vol_.write(std::string(kReports) + "/huge.crash", big);

    auto category = scan();
    ASSERT_EQ(category->groups().size(), 1u);
    EXPECT_EQ(category->groups()[0]->contents().size(), 1u);
}

TEST_F(CrashScanTest, ReportsJoinAGroupAlreadyInTheCategory) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addCrashReport("foo.crash", "com.example.foo");

    ScopedVolume scope(vol_.volume());
    auto category = std::make_shared<NACategoryObj>();
    auto earlier = std::make_shared<NAGroupObj>("Foo", ImageRef::none());
    category->groups().push_back(earlier);
    scanCrashedApplications(category);
    ASSERT_EQ(category->groups().size(), 1u);
    EXPECT_EQ(earlier->contents().size(), 1u);
}

}  // namespace
}  // namespace sysmend
