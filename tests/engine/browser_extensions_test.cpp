#include "adware/browser_extensions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/syslog.h"
#include "sample/fake_volume.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Json = nlohmann::ordered_json;

Json json(std::string_view text) {
    std::optional<Json> value = jsonFromBytes(text);
    EXPECT_TRUE(value) << text;
    return value.value_or(Json());
}

// Name and path of each record, for assertions that read like the list.
std::vector<std::string> describe(const TreatArray& records) {
    std::vector<std::string> out;
    for (const auto& record : records)
        out.push_back(record->fileName() + " @ " + record->filePath());
    return out;
}

TEST(ExtensionPathTest, ClimbsToTheFolderBelowExtensions) {
    EXPECT_EQ(extensionPath("/Users/a/Chrome/Default/Extensions/abcdef/1.0_0/manifest.json"),
              "/Users/a/Chrome/Default/Extensions/abcdef");
    EXPECT_EQ(extensionPath("/Users/a/Safari/Extensions/Foo.safariextz"),
              "/Users/a/Safari/Extensions/Foo.safariextz");
    // The nearest "Extensions" wins, and the comparison is case-sensitive.
    EXPECT_EQ(extensionPath("/x/Extensions/y/Extensions/z/m.json"), "/x/Extensions/y/Extensions/z");
    EXPECT_EQ(extensionPath("/Users/a/extensions/abcdef/manifest.json"), "/");
    EXPECT_EQ(extensionPath("/Extensions"), "/");
    EXPECT_EQ(extensionPath("relative/name"), "relative");
}

TEST(JsonTest, ObjectsKeepTheFileOrderAndLastValueOfARepeatedKey) {
    Json value = json(R"({"z": 1, "a": {"k": [1, "x"]}, "m": 2, "z": 3})");
    std::vector<std::string> keys;
    for (const auto& [key, item] : value.items())
        keys.push_back(key);
    EXPECT_THAT(keys, ElementsAre("z", "a", "m"));
    EXPECT_EQ(value["z"], 3);
    EXPECT_EQ(value["a"]["k"][1], "x");

    // Large objects are indexed while they are read: every key must still land in place.
    std::string big = "{";
    for (int i = 0; i < 20000; ++i)
        big += (i ? ",\"k" : "\"k") + std::to_string(i % 10000) + "\":" + std::to_string(i);
    big += "}";
    Json many = json(big);
    ASSERT_EQ(many.size(), 10000u);
    EXPECT_EQ(many.begin().key(), "k0");
    EXPECT_EQ(many["k9999"], 19999);
}

TEST(JsonTest, FragmentsParseButBrokenTextAndDeepNestingDoNot) {
    EXPECT_EQ(json("\"text\""), "text");
    EXPECT_EQ(json(" 12 "), 12);
    EXPECT_EQ(json("[]"), Json::array());
    EXPECT_FALSE(jsonFromBytes(""));
    EXPECT_FALSE(jsonFromBytes("{\"a\": 1"));
    EXPECT_FALSE(jsonFromBytes("{} {}"));
    EXPECT_FALSE(jsonFromBytes("\"\xff\""));
    EXPECT_TRUE(jsonFromBytes(std::string(512, '[') + std::string(512, ']')));
    EXPECT_FALSE(jsonFromBytes(std::string(513, '[') + std::string(513, ']')));
}

TEST(LocalizedNameTest, ReplacesKeysContainedInTheNameInFileOrder) {
    Json messages = json(R"({"description": {"message": "unused"},
                             "EXTNAME": {"message": "Shiny Helper"}})");
    EXPECT_EQ(localizedName("__MSG_extName__", messages), "Shiny Helper");
    EXPECT_EQ(localizedName("Plain Name", messages), "Plain Name");

    // After a replacement the later keys are compared with the new name; earlier keys are not
    // looked at again.
    Json chain = json(R"({"title": {"message": "never"},
                          "appName": {"message": "Coupon title finder"},
                          "finder": {"message": "Deal Finder"}})");
    EXPECT_EQ(localizedName("__MSG_appName__", chain), "Deal Finder");

    // An empty key is contained in nothing.
    EXPECT_EQ(localizedName("__MSG_x__", json(R"({"": {"message": "no"}})")), "__MSG_x__");
    // Messages that are not an object leave the name alone.
    EXPECT_EQ(localizedName("__MSG_x__", json(R"(["x"])")), "__MSG_x__");
}

TEST(LocalizedNameTest, AnEntryWithoutAMessageEndsWithNoName) {
    EXPECT_EQ(localizedName("__MSG_extName__",
                            json(R"({"extName": {"description": "x"}, "e": {"message": "y"}})")),
              "");
    EXPECT_EQ(localizedName("__MSG_extName__", json(R"({"extName": "bare"})")), "");
    EXPECT_EQ(localizedName("__MSG_extName__", json(R"({"extName": {"message": 7}})")), "");
}

TEST(ManifestFactsTest, NeedsIconsAndANameAndTakesTheLastIconInFileOrder) {
    EXPECT_EQ(manifestFacts(json(R"({"name": "N", "default_locale": "en",
                                     "icons": {"128": "big.png", "16": "small.png"}})")),
              (ManifestFacts{"N", "en", "small.png"}));
    EXPECT_EQ(manifestFacts(json(R"({"name": "N", "icons": {"16": 5}})")),
              (ManifestFacts{"N", std::nullopt, std::nullopt}));
    EXPECT_FALSE(manifestFacts(json(R"({"name": "N"})")));
    EXPECT_FALSE(manifestFacts(json(R"({"name": "N", "icons": ["a.png"]})")));
    EXPECT_FALSE(manifestFacts(json(R"({"icons": {"16": "a.png"}})")));
    EXPECT_FALSE(manifestFacts(json(R"({"name": 3, "icons": {"16": "a.png"}})")));
    EXPECT_FALSE(manifestFacts(json(R"([{"name": "N", "icons": {}}])")));
}

TEST(FirefoxAddonsTest, KeepsAddonsWithDescriptorAndLocaleName) {
    Json registry = json(R"({"schemaVersion": 16, "addons": [
        {"id": "a", "descriptor": "/p/a.xpi", "defaultLocale": {"name": "Alpha"}},
        {"id": "b", "descriptor": "/p/b.xpi", "defaultLocale": {"creator": "x"}},
        {"id": "c", "defaultLocale": {"name": "No descriptor"}},
        {"id": "d", "descriptor": "/p/d.xpi", "defaultLocale": "Delta"},
        "not an add-on",
        {"id": "e", "descriptor": "/p/e.xpi", "defaultLocale": {"name": "Echo"}}]})");
    EXPECT_THAT(firefoxAddons(registry),
                ElementsAre(FirefoxAddon{"/p/a.xpi", "Alpha"}, FirefoxAddon{"/p/e.xpi", "Echo"}));
    EXPECT_THAT(firefoxAddons(json(R"({"addons": {"a": {}}})")), IsEmpty());
    EXPECT_THAT(firefoxAddons(json(R"([{"addons": []}])")), IsEmpty());
}

class BrowserExtensionsTest : public ::testing::Test {
  protected:
    std::string chromeManifest(std::string_view name, std::string_view locale = "") {
        std::string text = R"({"name": ")" + std::string(name) + R"(", "version": "1.0")";
        if (!locale.empty())
            text += R"(, "default_locale": ")" + std::string(locale) + "\"";
        return text + R"(, "icons": {"128": "icon128.png", "16": "icon16.png"}})";
    }

    std::vector<std::string> walk(void (*walker)(const std::atomic<bool>&, const PathBlock&)) {
        std::vector<std::string> paths;
        walker(stop_, [&](const std::string& path) { paths.push_back(path); });
        return paths;
    }

    sample::FakeVolume fake_;
    ScopedVolume scope_{fake_.volume()};
    std::atomic<bool> stop_{false};
    const std::string support_ = fake_.home() + "/Library/Application Support";
};

TEST_F(BrowserExtensionsTest, WalkersSkipHiddenItemsAndChromeSkipsPackages) {
    fake_.write(fake_.home() + "/Library/Safari/Extensions/Foo.safariextz", "x");
    fake_.write(fake_.home() + "/Library/Safari/Extensions/.Hidden.safariextz", "x");
    fake_.write(fake_.home() + "/Library/Safari/Extensions/.cache/Bar.safariextz", "x");
    fake_.write(support_ + "/Google/Chrome/Default/Tool.app/Contents/Info.plist", "x");
    fake_.write(support_ + "/Google/Chrome/.Trash/x/manifest.json", "{}");
    fake_.write(support_ + "/Firefox/Profiles/p1/extensions.json", "{}");
    fake_.write(support_ + "/Firefox/Profiles/p1/prefs.js", "");
    fake_.write(support_ + "/Firefox/Profiles/.p2/extensions.json", "{}");

    EXPECT_THAT(walk(analysisSafariExtentsions),
                ElementsAre(fake_.home() + "/Library/Safari/Extensions/Foo.safariextz"));
    EXPECT_THAT(walk(analysisChromeExtentsions),
                ElementsAre(support_ + "/Google/Chrome/Default",
                            support_ + "/Google/Chrome/Default/Tool.app"));
    EXPECT_THAT(walk(analysisFirefoxExtentsions),
                ElementsAre(support_ + "/Firefox/Profiles/p1/extensions.json"));
    EXPECT_THAT(walk(analysisOperaExtentsions), IsEmpty());

    stop_ = true;
    EXPECT_THAT(walk(analysisChromeExtentsions), IsEmpty());
}

TEST_F(BrowserExtensionsTest, ChromeRecordsCarryTheResolvedNameFolderIconAndSize) {
    const std::string extensions = fake_.chromeExtensionsFolder();
    fake_.addBrowserExtension(extensions, "aaaa", "1.0_0", chromeManifest("__MSG_extName__", "en"),
                              {{"en", R"({"extName": {"message": "Coupon Buddy"}})"},
                               {"de", R"({"extName": {"message": "Gutschein"}})"}});
    fake_.write(extensions + "/aaaa/1.0_0/icon16.png", std::string(5000, 'p'));
    // A second version of the same extension gives a second record for the same folder.
    fake_.addBrowserExtension(extensions, "aaaa", "1.1_0", chromeManifest("Coupon Buddy"));
    // No messages file: the name stays as written.
    fake_.addBrowserExtension(extensions, "bbbb", "2.0", chromeManifest("__MSG_extName__", "en"));
    // Without "icons" an extension is not found at all.
    fake_.addBrowserExtension(extensions, "cccc", "3.0", R"({"name": "Coupon Buddy"})");
    // A messages entry without "message" leaves no name.
    fake_.addBrowserExtension(extensions, "dddd", "4.0", chromeManifest("__MSG_n__", "en"),
                              {{"en", R"({"n": {"description": "x"}})"}});
    fake_.addBrowserExtension(extensions, "eeee", "5.0", "not json");
    fake_.addBrowserExtension(extensions + "/.hidden", "ffff", "6.0", chromeManifest("Hidden"));
    // A locale is one folder name: one with slashes may not lead the read elsewhere.
    fake_.addBrowserExtension(extensions, "gggg", "7.0", chromeManifest("__MSG_n__", "../../x"));
    fake_.write(extensions + "/gggg/x/messages.json", R"({"n": {"message": "Escaped"}})");

    TreatArray records = foundExtentsionWithExtentsionPaths(extensions, true, stop_);
    EXPECT_THAT(describe(records),
                ElementsAre("Coupon Buddy @ " + extensions + "/aaaa",
                            "Coupon Buddy @ " + extensions + "/aaaa",
                            "__MSG_extName__ @ " + extensions + "/bbbb",
                            " @ " + extensions + "/dddd", "__MSG_n__ @ " + extensions + "/gggg"));
    const auto& first = *records.front();
    EXPECT_EQ(first.fileIcon(), ImageRef::imageFile(extensions + "/aaaa/1.0_0/icon16.png"));
    EXPECT_EQ(first.fileSize(), sizeAtPath(extensions + "/aaaa", 1));
    EXPECT_GE(first.fileSize(), 5000);
    EXPECT_EQ(first.fileType(), "");

    // The flag is only passed along; Opera's folder gives the same records.
    EXPECT_EQ(describe(foundExtentsionWithExtentsionPaths(extensions, false, stop_)),
              describe(records));
    stop_ = true;
    EXPECT_THAT(foundExtentsionWithExtentsionPaths(extensions, true, stop_), IsEmpty());
}

TEST_F(BrowserExtensionsTest, FirefoxRecordsComeFromTheRegistry) {
    const std::string xpi =
        fake_.write(support_ + "/Firefox/Profiles/p1/extensions/a@b.xpi", std::string(3000, 'z'));
    const std::string registry = fake_.addFirefoxRegistry("p1", R"({"addons": [
        {"descriptor": ")" + xpi + R"(", "defaultLocale": {"name": "Search Plus"}},
        {"descriptor": "/gone.xpi", "defaultLocale": {"name": "Gone"}}]})");

    TreatArray records = foundExtentsionWithExtentsionPaths(registry);
    EXPECT_THAT(describe(records), ElementsAre("Search Plus @ " + xpi, "Gone @ /gone.xpi"));
    EXPECT_EQ(records[0]->fileType(), "xpi");
    EXPECT_EQ(records[0]->fileIcon(), ImageRef::fileTypeIcon("safariextz"));
    EXPECT_EQ(records[0]->fileSize(), sizeAtPath(xpi, 1));
    EXPECT_EQ(records[1]->fileSize(), 0);

    const std::string other = fake_.write(support_ + "/Firefox/Profiles/p1/addons.json",
                                          R"({"addons": [{"descriptor": "/x", "defaultLocale":
                                              {"name": "X"}}]})");
    EXPECT_THAT(foundExtentsionWithExtentsionPaths(other), IsEmpty());
}

TEST_F(BrowserExtensionsTest, JsonToDictionaryLogsOnlyForBareValues) {
    LogCapture log;
    EXPECT_TRUE(jsonToDictionary(fake_.write("/a.json", "[1, 2]")));
    EXPECT_FALSE(jsonToDictionary(fake_.write("/b.json", "\"bare\"")));
    EXPECT_FALSE(jsonToDictionary(fake_.write("/c.json", "null")));
    EXPECT_FALSE(jsonToDictionary(fake_.write("/d.json", "{broken")));
    EXPECT_FALSE(jsonToDictionary("/missing.json"));
    EXPECT_FALSE(jsonToDictionary(fake_.mkdir("/folder.json")));
    EXPECT_THAT(log.lines(), ElementsAre("An error happened while deserializing the JSON data.",
                                         "An error happened while deserializing the JSON data."));
}

TEST_F(BrowserExtensionsTest, RealManifestsResolveTheirNames) {
    const std::string data = std::string(SYSMEND_TEST_DATA) + "/browser";
    const std::string extensions = fake_.chromeExtensionsFolder();
    fake_.copyIn(data + "/privacybadger", extensions + "/pkehgijcmpdhfbdbbnkijodmdjhbjlgp/1_0");
    fake_.copyIn(data + "/ublock-origin", extensions + "/cjpalhdlnbpafiamejdnhcphjbkeiagm/1_0");
    fake_.copyIn(data + "/ublock-origin-lite",
                 extensions + "/ddkjiahejlhfcafbddmgiahcphecmpfh/1_0");
    fake_.copyIn(data + "/edge-profile-Extensions", extensions);

    EXPECT_THAT(
        describe(foundExtentsionWithExtentsionPaths(extensions, true, stop_)),
        ElementsAre("uBlock Origin @ " + extensions + "/cjpalhdlnbpafiamejdnhcphjbkeiagm",
                    "uBlock Origin Lite @ " + extensions + "/ddkjiahejlhfcafbddmgiahcphecmpfh",
                    "__MSG_extName__ @ " + extensions + "/ghbmnnjooekpmoecnnnilnnbdlolhkhi",
                    "uBlock Origin @ " + extensions + "/odfafepnkmbhccpbejgmiehpchacaeak",
                    "Privacy Badger @ " + extensions + "/pkehgijcmpdhfbdbbnkijodmdjhbjlgp"));
}

}  // namespace
}  // namespace sysmend
