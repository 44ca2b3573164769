// Legitimate software must never be taken for adware: the applications of a public list of
// popular Mac software (tests/data/allowlist, its source in SOURCES.md), installed on a volume
// in both application folders and scanned with the signature database the build ships, give
// no finding. Every signature string added later passes through this test.
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

TEST(AllowListTest, PopularApplicationsAreNoFindings) {
    sample::FakeVolume volume;
    std::ifstream list(SYSMEND_TEST_DATA "/allowlist/mac-apps.txt");
    std::size_t placed = 0;
    for (std::string name; std::getline(list, name);) {
        for (const std::string& folder : {std::string("/Applications"), volume.home()})
            volume.mkdir(folder + "/" + name + ".app/Contents/MacOS");
        ++placed;
    }
    ASSERT_GE(placed, 500u);

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
    EXPECT_THAT(found, ::testing::IsEmpty());
}

}  // namespace
}  // namespace sysmend
