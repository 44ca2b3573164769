// Legitimate software must never be taken for adware: the applications, launchd jobs and browser
// extensions of public lists of popular Mac software (tests/data/allowlist, their sources in
// SOURCES.md), installed on a volume where each kind is looked for and scanned with the
// signature database the build ships, give no finding beside the known adware placed with
// them. Every signature string added later passes through this test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "adware/adware_scan.h"
#include "adware/signature_loader.h"
#include "sample/fake_volume.h"

namespace sysmend {
namespace {

std::vector<std::string> readList(const std::string& fileName) {
    std::ifstream list(SYSMEND_TEST_DATA "/allowlist/" + fileName);
    std::vector<std::string> names;
    for (std::string name; std::getline(list, name);)
        if (!name.empty())
            names.push_back(name);
    return names;
}

std::string jsonString(const std::string& text) {
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

TEST(AllowListTest, PopularSoftwareIsNoFinding) {
    sample::FakeVolume volume;
    std::vector<std::string> apps = readList("mac-apps.txt");
    const std::vector<std::string> openSourceApps = readList("open-source-mac-apps.txt");
    apps.insert(apps.end(), openSourceApps.begin(), openSourceApps.end());
    std::vector<std::string> jobs = readList("launch-jobs.txt");
    std::vector<std::string> extensions = readList("browser-extensions.txt");
    ASSERT_GE(apps.size() + jobs.size() + extensions.size(), 1000u);
    // One known adware item of each kind, placed the same way, shows that every placement is
    // reached by the scan.
    apps.push_back("InstallMac");
    jobs.push_back("com.genieo.engine");
    extensions.push_back("Omnibar");

    // The scan tells a bundle by its name, so an empty folder stands for each application.
    for (const std::string& name : apps)
        for (const std::string& folder : {std::string("/Applications"), volume.home()})
            volume.mkdir(folder + "/" + name + ".app");
    // A job's file is named after its Label, as vendors install them.
    for (const std::string& label : jobs)
        for (const std::string& folder : {std::string("/Library/LaunchAgents"),
                                          std::string("/Library/LaunchDaemons"),
                                          volume.home() + "/Library/LaunchAgents"})
            volume.addLaunchJob(folder, label + ".plist", label);
    std::string firefoxAddons;
    for (std::size_t i = 0; i < extensions.size(); ++i) {
        const std::string& name = extensions[i];
        volume.write(volume.home() + "/Library/Safari/Extensions/" + name + ".safariextz", "x");
        volume.addBrowserExtension(volume.chromeExtensionsFolder(), "id" + std::to_string(i),
                                   "1.0", R"({"icons": {}, "name": )" + jsonString(name) + "}");
        firefoxAddons += std::string(i ? "," : "") + R"({"descriptor": "/x)" +
                         std::to_string(i) + R"(.xpi", "defaultLocale": {"name": )" +
                         jsonString(name) + "}}";
    }
    volume.addFirefoxRegistry("p", R"({"addons": [)" + firefoxAddons + "]}");

    // The shipped database, as a program run from the build tree finds it.
    setResourceFolder("");
    const char* given = std::getenv("SYSMEND_RESOURCES");
    const std::string saved = given ? given : "";
    ::unsetenv("SYSMEND_RESOURCES");
    plist::Value database = loadSignatureDatabase();
    if (given)
        ::setenv("SYSMEND_RESOURCES", saved.c_str(), 1);
    ASSERT_TRUE(database.asArray() && database.asArray()->size() > 100) << resourceFolder();

    ScopedVolume scope(volume.volume());
    AdwareScan scan(std::move(database), std::make_shared<NACategoryObj>());
    scan.initargs();
    scan.analysisAdware();
    std::vector<std::string> found;
    for (const auto& treat : scan.treats())
        found.push_back(treat->title() + ": " + treat->filePath());
    // Two application folders, three job folders, and Safari, Chrome and Firefox.
    using ::testing::AnyOf;
    using ::testing::StartsWith;
    EXPECT_THAT(found, ::testing::Each(AnyOf(StartsWith("Genieo / InstallMac: "),
                                             StartsWith("Omnibar (Genieo"))));
    EXPECT_EQ(found.size(), 2u + 3u + 3u) << ::testing::PrintToString(found);
}

}  // namespace
}  // namespace sysmend
