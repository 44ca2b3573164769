#include "appviewer/app_information.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/metadata.h"
#include "platform/path.h"
#include "sample/fake_volume.h"
#include "sample/macho_builder.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

using Row = std::pair<std::string, std::string>;
using Rows = std::vector<Row>;

const std::string kDisabled = "Disabled, application has full access to your user account";

Rows rowsOf(const NAGroupObj& group) {
    Rows rows;
    for (const auto& item : group.contents()) {
        const auto& row = static_cast<const NAAppSingleInformation&>(*item);
        rows.emplace_back(row.key_title(), row.value_title());
    }
    return rows;
}

std::string readData(const std::string& relative) {
    std::ifstream in(std::string(SYSMEND_TEST_DATA) + "/" + relative, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class AppInformationTest : public ::testing::Test {
  protected:
    std::string app(const std::string& name) {
        sample::AppSpec layout;
        layout.name = name;
        return vol_.addApp(layout);
    }

    // Signs the bundle's main executable (named like the bundle) with these entitlements.
    std::string sign(const std::string& bundle, plist::Dictionary entitlements) {
        sample::MachOSpec macho;
        macho.entitlements = std::move(entitlements);
        sample::writeBundleExecutable(vol_.host(bundle),
                                      path::deletingPathExtension(path::lastPathComponent(bundle)),
                                      sample::buildMachO(macho));
        return bundle;
    }

    Rows rowsFor(const std::string& bundle, bool* failed = nullptr) {
        bool ignored = false;
        return rowsOf(*NAAppInformation(bundle).convertToGroup(failed ? failed : &ignored));
    }

    sample::FakeVolume vol_;
    ScopedVolume scope_{vol_.volume()};
};

TEST_F(AppInformationTest, FactRowsInOrderWithTheBundleSizeOnTheSizeRow) {
    sample::AppSpec layout;
    layout.name = "Editor";
    layout.version = "4.2";
    layout.minimumSystem = "10.13";
    layout.copyright = "© 2020 Someone";
    layout.developmentRegion = "de";
    layout.payloadBytes = 50'000;
    const std::string bundle = vol_.addApp(layout);
    const std::int64_t size = sizeAtPath(bundle, 1);

    NAAppInformation info(bundle);
    bool failed = false;
    auto group = info.convertToGroup(&failed);
    EXPECT_FALSE(failed);
    EXPECT_EQ(group->title(), "Editor");
    EXPECT_TRUE(group->attachImage().isNone());
    EXPECT_EQ(rowsOf(*group), (Rows{{"Editor", "v4.2"},
                                    {"Application Size", recal_size(size)},
                                    {"Copyright", "© 2020 Someone"},
                                    {"Requires Mac OS", "v10.13"},
                                    {"Development Language", "de"},
                                    {"Application Sandbox", kDisabled}}));
    EXPECT_EQ(info.fileSize(), size);
    EXPECT_EQ(group->contents()[1]->fileSize(), size);
    EXPECT_EQ(group->size(), size);
}

TEST_F(AppInformationTest, MissingKeysGiveDefaultVersionsOrNoRow) {
    const std::string bare = app("Bare");
    EXPECT_EQ(rowsFor(bare), (Rows{{"Bare", "v1.0"},
                                   {"Application Size", recal_size(sizeAtPath(bare, 1))},
                                   {"Requires Mac OS", "v10.8.0"},
                                   {"Application Sandbox", kDisabled}}));

    // Hand-written Info.plists put numbers where strings belong.
    plist::Dictionary numbers;
    numbers.set("CFBundleName", "Numbers");
    numbers.set("CFBundleVersion", 2);
    numbers.set("LSMinimumSystemVersion", 10.5);
    vol_.writePlist("/Applications/Numbers.app/Contents/Info.plist", numbers,
                    plist::Format::Binary);
    NAAppInformation info("/Applications/Numbers.app");
    EXPECT_EQ(info.app_version(), "v2");
    EXPECT_EQ(info.app_requiresOs(), "v10.5");
}

TEST_F(AppInformationTest, SizeComesFromTheMetadataIndexUnlessItSaysZero) {
    sample::AppSpec layout;
    layout.name = "Indexed";
    layout.payloadBytes = 9000;
    const std::string bundle = vol_.addApp(layout);
    std::int64_t indexed = 0;
    MetadataProvider previous = setMetadataProvider([&](std::string_view p) {
        return MetadataItem{std::nullopt, std::string(p), indexed, std::nullopt};
    });

    indexed = 123'456'789;
    EXPECT_EQ(NAAppInformation(bundle).fileSize(), indexed);
    EXPECT_EQ(NAAppInformation(bundle).app_size(), "123.5 MB");
    indexed = 0;
    EXPECT_EQ(NAAppInformation(bundle).fileSize(), sizeAtPath(bundle, 1));
    setMetadataProvider(std::move(previous));
}

TEST_F(AppInformationTest, SandboxRowThenEveryPresentEntitlementInTableOrder) {
    plist::Dictionary sandboxed;
    sandboxed.set("com.apple.security.print", true);
    sandboxed.set("com.apple.security.personal-information.location", true);
    sandboxed.set("com.apple.security.device.camera", false);  // present: still listed
    sandboxed.set("com.apple.security.assets.movies.read-write", true);
    sandboxed.set("com.apple.security.assets.movies.read-only", true);
    sandboxed.set("com.apple.security.app-sandbox", true);
    sandboxed.set("com.example.unknown", true);
    NAAppInformation info(sign(app("Boxed"), sandboxed));
    bool failed = false;
    Rows rows = rowsOf(*info.convertToGroup(&failed));
    EXPECT_TRUE(info.app_enable_sandbox());
    EXPECT_EQ(Rows(rows.begin() + 3, rows.end()),
              (Rows{{"Application Sandbox", "Enabled"},
                    {"Accesses your Movies", "Allowed to read your Movies"},
                    {"Accesses your Movies", "Allowed to read and write to your Movies"},
                    {"Camera Capture", "Allowed to capture movies and still images"},
                    {"Location", "Application is allowed to determine your computer's locationr"},
                    {"Printers", "Application is allowed to print"}}));

    plist::Dictionary open;
    open.set("com.apple.security.network.client", true);
    rows = rowsFor(sign(app("Open"), open));
    EXPECT_EQ(Rows(rows.begin() + 3, rows.end()),
              (Rows{{"Application Sandbox", kDisabled},
                    {"Network Access", "Application is allowed to access the network"}}));

    plist::Dictionary off;
    off.set("com.apple.security.app-sandbox", false);
    EXPECT_EQ(rowsFor(sign(app("Off"), off)).back(), Row("Application Sandbox", kDisabled));
}

TEST_F(AppInformationTest, NamelessOrMissingBundleFailsButKeepsTheEntitlementRows) {
    sample::AppSpec layout;
    layout.name = "Nameless";
    layout.omitBundleName = true;
    layout.version = "3";
    plist::Dictionary camera;
    camera.set("com.apple.security.device.camera", true);
    NAAppInformation info(sign(vol_.addApp(layout), camera));
    EXPECT_FALSE(info.getInformationSuccess());
    EXPECT_EQ(info.app_version(), "v3");  // read all the same
    bool failed = false;
    auto group = info.convertToGroup(&failed);
    EXPECT_TRUE(failed);
    EXPECT_EQ(group->title(), "");
    EXPECT_EQ(rowsOf(*group),
              (Rows{{"Application Sandbox", kDisabled},
                    {"Camera Capture", "Allowed to capture movies and still images"}}));

    vol_.write("/Applications/File.app", "not a folder");
    for (const std::string path : {"/Applications/Missing.app", "/Applications/File.app"}) {
        NAAppInformation none(path);
        EXPECT_EQ(none.appPath(), path);
        EXPECT_FALSE(none.app_version());
        EXPECT_EQ(rowsFor(path, &failed), (Rows{{"Application Sandbox", kDisabled}}));
    }

    // The flag is only ever raised: a caller's earlier failure stays.
    failed = true;
    rowsFor(app("Fine"), &failed);
    EXPECT_TRUE(failed);
}

TEST_F(AppInformationTest, RealInfoPlists) {
    const std::string lulu = readData("plist/infoplist/LuLu.app/Contents/Info.plist");
    const Rows expected{{"LuLu", "v0.9.0"},
                        {"Application Size", ""},
                        {"Copyright", "Copyright © 2017 Objective-See. All rights reserved."},
                        {"Requires Mac OS", "v10.12"},
                        {"Development Language", "en"},
                        {"Application Sandbox", kDisabled}};
    vol_.write("/Applications/LuLu.app/Contents/Info.plist", lulu);
    const auto binary =
        plist::parse(std::span(reinterpret_cast<const std::uint8_t*>(lulu.data()), lulu.size()));
    ASSERT_TRUE(binary);
    vol_.writePlist("/Applications/LuLu Binary.app/Contents/Info.plist", *binary,
                    plist::Format::Binary);
    for (const std::string bundle : {"/Applications/LuLu.app", "/Applications/LuLu Binary.app"}) {
        Rows rows = rowsFor(bundle);
        ASSERT_EQ(rows.size(), expected.size()) << bundle;
        rows[1].second.clear();  // the size differs with the file's format
        EXPECT_EQ(rows, expected) << bundle;
    }

    // Photo Booth's has no CFBundleName.
    vol_.write("/Applications/Photo Booth.app/Contents/Info.plist",
               readData("plist/infoplist/test_info.plist"));
    NAAppInformation booth("/Applications/Photo Booth.app");
    EXPECT_FALSE(booth.getInformationSuccess());
    EXPECT_EQ(booth.app_version(), "v517");
    EXPECT_EQ(booth.app_requiresOs(), "v10.7.0");
    EXPECT_EQ(booth.development_language(), "English");
    EXPECT_FALSE(booth.app_copyright());
}

}  // namespace
}  // namespace sysmend
