#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "sample/fake_volume.h"
#include "support/run_command.h"

namespace sysmend {
namespace {

using testing::runCommand;

class CliTest : public ::testing::Test {
  protected:
    sample::FakeVolume vol_;
};

// A missing path is reported and gives status 1, but the others are still measured.
TEST_F(CliTest, SizeReportsAllocatedLogicalAndTextAsJson) {
    vol_.write("/Applications/Foo.app/Contents/MacOS/Foo", std::string(10000, 'x'));
    vol_.write("/Applications/Foo.app/Contents/Info.plist", std::string(500, 'y'));

    auto r = runCommand({SYSMEND_CLI, "--json", "--root=" + vol_.root(), "size", "/missing",
                         "/Applications/Foo.app"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("/missing"), std::string::npos);
    auto doc = nlohmann::json::parse(r.out);
    EXPECT_EQ(doc["tool"], "size");
    ASSERT_EQ(doc["paths"].size(), 2u);
    EXPECT_EQ(doc["paths"][0]["logical"], 0);
    const auto& entry = doc["paths"][1];
    EXPECT_EQ(entry["path"], "/Applications/Foo.app");
    EXPECT_EQ(entry["logical"], 10500);
    EXPECT_GE(entry["allocated"].get<std::int64_t>(), 10500);
    EXPECT_EQ(entry["allocated"].get<std::int64_t>() % 512, 0);
    EXPECT_FALSE(entry["text"].get<std::string>().empty());
}

TEST_F(CliTest, UsageErrorsExitWithStatusTwoAndOneLine) {
    for (const auto& argv : std::vector<std::vector<std::string>>{
             {SYSMEND_CLI},
             {SYSMEND_CLI, "size"},
             {SYSMEND_CLI, "frobnicate"},
             {SYSMEND_CLI, "size", "--bogus", "/x"},
             {SYSMEND_CLI, "--root"},
             {SYSMEND_CLI, "--root", "/no/such/folder/here", "size", "/"},
             {SYSMEND_CLI, "--home", "relative", "size", "/"},
         }) {
        auto r = runCommand(argv);
        EXPECT_EQ(r.status, 2) << argv.back();
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_TRUE(r.out.empty());
    }
}

}  // namespace
}  // namespace sysmend
