#include "crashes/crash_scan.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "sample/fake_volume.h"

namespace sysmend {
namespace {

const std::string kReports = "/Users/alice/Library/Logs/DiagnosticReports/";
const std::string kReporter = "/Users/alice/Library/Application Support/CrashReporter/";

TEST(CrashReportIdentifierTest, LastPieceOfTheFirstIdentifierLineTrimmed) {
    EXPECT_EQ(crashReportIdentifier("P: x\nIdentifier:  \t a.b \t\nVersion: 1"), "a.b");
    EXPECT_EQ(crashReportIdentifier("Identifier: x:y:a.b"), "a.b");
    EXPECT_EQ(crashReportIdentifier("Bundle Identifier a.b\nIdentifier: c"),
              "Bundle Identifier a.b");
    EXPECT_EQ(crashReportIdentifier("identifier: a.b"), std::nullopt);
    for (const char* newline :
         {"\r", "\r\n", "\v", "\f", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"}) {
        // Without a colon of its own, the line would take in its neighbours' pieces.
        EXPECT_EQ(crashReportIdentifier(std::string("P: /x") + newline + "Identifier a.b" +
                                        newline + "V: 1:2"),
                  "Identifier a.b")
            << ::testing::PrintToString(newline);
    }
    // Other characters with the same lead bytes end no line.
    EXPECT_EQ(crashReportIdentifier("P\xE2\x80\x94Identifier: x\xC2\xA0y"), "x\xC2\xA0y");
}

TEST(CrashReportIdentifierTest, TextThatIsNotWellFormedUtf8HasNoIdentifier) {
    const std::string good = "Identifier: a.b\n";
    for (const char* bad : {"\xFF", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                            "\x80", "\xE2\x82"}) {
        EXPECT_EQ(crashReportIdentifier(good + bad), std::nullopt) << ::testing::PrintToString(bad);
        EXPECT_EQ(crashReportIdentifier(bad + good), std::nullopt);
    }
    EXPECT_EQ(crashReportIdentifier(good + "caf\xC3\xA9 \xF0\x9F\x92\xA5"), "a.b");
    // A file cut at the read limit may end inside a character.
    EXPECT_EQ(crashReportIdentifier(good + "\xE2\x82", true), "a.b");
}

class CrashScanTest : public ::testing::Test {
  protected:
    std::shared_ptr<NACategoryObj> scan() {
        ScopedVolume scope(vol_.volume());
        auto category = std::make_shared<NACategoryObj>();
        scanCrashedApplications(category);
        return category;
    }

    // "Title[mark]{file[mark] ...}" per group.
    static std::vector<std::string> printed(const NACategoryObj& category) {
        std::vector<std::string> out;
        for (const auto& group : category.groups()) {
            std::string line = group->title() + "[" + std::to_string(group->isChecked()) + "]{";
            for (const auto& item : group->contents())
                line += " " + item->filePath() + "[" + std::to_string(item->isChecked()) + "]";
            out.push_back(line + " }");
        }
        return out;
    }

    sample::FakeVolume vol_;
};

TEST_F(CrashScanTest, ReportsOfOneApplicationMakeOneUncheckedGroupInListingOrder) {
    vol_.addAppBundle("/Applications", "Cloud Sync", "com.example.cloudsync");
    vol_.addAppBundle("/Applications/Utilities", "Notes", "net.example.notes");
    vol_.addCrashReportWithLine("b.crash", "Identifier:    \t com.example.cloudsync  ");
    vol_.addCrashReport("a.crash", "net.example.notes");
    vol_.addCrashReportWithLine("c.crash", "Identifier: x:y:com.example.cloudsync");
    vol_.mkdir(kReporter);

    auto category = scan();
    EXPECT_EQ(printed(*category),
              (std::vector<std::string>{
                  "Notes[0]{ " + kReports + "a.crash[0] }",
                  "Cloud Sync[0]{ " + kReports + "b.crash[0] " + kReports + "c.crash[0] }",
              }));
    const auto& sync = category->groups()[1];
    EXPECT_EQ(sync->attachImage(), ImageRef::fileIcon("/Applications/Cloud Sync.app"));
    EXPECT_EQ(sync->categoryObj(), category);
    EXPECT_GT(sync->contents()[0]->fileSize(), 0);
    EXPECT_EQ(sync->size(), sync->contents()[0]->fileSize() + sync->contents()[1]->fileSize());
}

TEST_F(CrashScanTest, ReportsThatNameNoInstalledApplicationOrAreNoTextAreDropped) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    vol_.addAppBundle("/Applications", "Gone", "com.example.gone");
    std::filesystem::remove_all(vol_.host("/Applications/Gone.app"));
    vol_.addCrashReport("gone.crash", "com.example.gone");
    vol_.addCrashReport("never.crash", "com.example.never-installed");
    vol_.write(kReports + "no-identifier.crash", "Process: Foo\nPath: /x\n");
    vol_.write(kReports + "latin1.crash", "Identifier: com.example.foo\n\xA9 Example\n");
    vol_.addCrashReport("Sub/inside.crash", "com.example.foo");
    vol_.symlink(kReports + "dangling.crash", "/nowhere.crash");
    ASSERT_EQ(::mkfifo(vol_.host(kReports + "fifo.crash").c_str(), 0644), 0);
    vol_.addCrashReporterEntry("Foo.plist");  // never makes a group

    EXPECT_TRUE(scan()->groups().empty());
}

// Names are compared without case and normal form: a decomposed "E\u0301LAN" (as HFS+ stores
// names) and "élan" both join "Élan", and "STRASSE" joins "Straße" by full case folding.
TEST_F(CrashScanTest, ReporterEntriesJoinEveryGroupTheirNameContainsAndCheckAllGroups) {
    for (const char* name : {"Foo", "Bar", "Baz", "\u00c9lan", "Stra\u00dfe"}) {
        vol_.addAppBundle("/Applications", name, std::string("com.example.") + name);
        vol_.addCrashReport(std::string(name) + ".crash", std::string("com.example.") + name);
    }
    const std::string decomposed = "E\u0301LAN_x.plist";
    for (const std::string& entry :
         {std::string("FOO_BAR.plist"), std::string("xfOox.plist"), std::string("Unrelated.plist"),
          decomposed, std::string("\u00e9lan_ABCD.plist"), std::string("STRASSE.plist")})
        vol_.addCrashReporterEntry(entry);

    // Baz matched nothing and is checked all the same.
    EXPECT_EQ(printed(*scan()),
              (std::vector<std::string>{
                  "Bar[1]{ " + kReports + "Bar.crash[1] " + kReporter + "FOO_BAR.plist[1] }",
                  "Baz[1]{ " + kReports + "Baz.crash[1] }",
                  "Foo[1]{ " + kReports + "Foo.crash[1] " + kReporter + "FOO_BAR.plist[1] " +
                      kReporter + "xfOox.plist[1] }",
                  "Stra\u00dfe[1]{ " + kReports + "Stra\u00dfe.crash[1] " + kReporter +
                      "STRASSE.plist[1] }",
                  "\u00c9lan[1]{ " + kReports + "\u00c9lan.crash[1] " + kReporter + decomposed +
                      "[1] " + kReporter + "\u00e9lan_ABCD.plist[1] }",
              }));
}

TEST_F(CrashScanTest, RealReportsAreAttributedWhenTheirApplicationIsInstalled) {
    vol_.copyIn(SYSMEND_TEST_DATA "/crash", kReports);
    std::filesystem::remove(vol_.host(kReports + "SOURCES.md"));
    EXPECT_TRUE(scan()->groups().empty());

    vol_.addAppBundle("/Applications", "Slack", "com.tinyspeck.slackmacgap");
    vol_.addAppBundle("/Users/alice/Applications", "iTube", "com.AlphaSoft.iTubeDownloader");
    EXPECT_EQ(printed(*scan()), (std::vector<std::string>{
                                    "iTube[0]{ " + kReports + "XCDYouTubeKit-54.txt[0] }",
                                    "Slack[0]{ " + kReports + "crash.txt[0] }",
                                }));
}

TEST_F(CrashScanTest, HugeReportIsJudgedByItsFirstBytes) {
    vol_.addAppBundle("/Applications", "Foo", "com.example.foo");
    std::string big = "Identifier: com.example.foo\n";
    big.resize(kCrashReportReadLimit + 1024, 'x');
    // A character cut by the limit is no fault, and bytes past it are not read.
    big.replace(kCrashReportReadLimit - 1, 3, "\xE2\x82\xAC");
    big.back() = '\xFF';
    vol_.write(kReports + "huge.crash", big);

    EXPECT_EQ(scan()->groups().size(), 1u);
}

}  // namespace
}  // namespace sysmend
