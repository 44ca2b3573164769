#include "network/firewall.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "support/fake_volume.h"

namespace sysmend {
namespace {

using testing::FakeVolume;

plist::Value preferences(plist::Value globalstate) {
    plist::Dictionary alf;
    alf.set("stealthenabled", 0);
    alf.set("globalstate", std::move(globalstate));
    return alf;
}

std::string readTestData(const std::string& relative) {
    std::ifstream in(std::string(SYSMEND_TEST_DATA) + "/" + relative, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

TEST(FirewallStatusTest, OffOnlyWhenADictionaryWasReadAndGlobalstateReadsAsZero) {
    EXPECT_FALSE(getFirewallStatus(preferences(0)));
    EXPECT_FALSE(getFirewallStatus(preferences(false)));
    EXPECT_FALSE(getFirewallStatus(preferences(0.5)));
    EXPECT_FALSE(getFirewallStatus(preferences("0")));
    EXPECT_FALSE(getFirewallStatus(preferences("off")));

    EXPECT_TRUE(getFirewallStatus(preferences(1)));
    EXPECT_TRUE(getFirewallStatus(preferences(2)));
    EXPECT_TRUE(getFirewallStatus(preferences(-1)));
    EXPECT_TRUE(getFirewallStatus(preferences("2")));
    EXPECT_TRUE(getFirewallStatus(preferences(plist::Array{plist::Value(0)})));
    EXPECT_TRUE(getFirewallStatus(preferences(Data{0})));
    EXPECT_TRUE(getFirewallStatus(plist::Value(plist::Dictionary{})));
    EXPECT_TRUE(getFirewallStatus(plist::Value(plist::Array{preferences(0)})));
    EXPECT_TRUE(getFirewallStatus(plist::Value(0)));
    EXPECT_TRUE(getFirewallStatus(std::nullopt));
}

class FirewallFileTest : public ::testing::Test {
  protected:
    bool status() {
        ScopedVolume scope(vol_.volume());
        return getFirewallStatus();
    }

    FakeVolume vol_;
};

TEST_F(FirewallFileTest, ReadsTheVolumesPreferenceFileInEitherFormat) {
    EXPECT_TRUE(status());  // no file

    vol_.setFirewall(0);
    EXPECT_FALSE(status());
    vol_.setFirewall(1);
    EXPECT_TRUE(status());
    vol_.setFirewallPreferences(preferences(0), plist::Format::Binary);
    EXPECT_FALSE(status());
    vol_.setFirewallPreferences(plist::Array{preferences(0)});
    EXPECT_TRUE(status());
    vol_.write(std::string(kFirewallPreferencesPath), "<plist><dict><key>globalstate</key>");
    EXPECT_TRUE(status());
}

TEST_F(FirewallFileTest, RealPreferenceFiles) {
    vol_.write(std::string(kFirewallPreferencesPath), readTestData("alf/test_alf.plist"));
    EXPECT_FALSE(status());
    vol_.write(std::string(kFirewallPreferencesPath),
               readTestData("alf/test_alf_nested_path.plist"));
    EXPECT_TRUE(status());
}

TEST_F(FirewallFileTest, ALinkIsFollowedInsideTheVolume) {
    vol_.writePlist("/Library/Shared/alf.plist", preferences(0));
    vol_.symlink(std::string(kFirewallPreferencesPath), "/Library/Shared/alf.plist");
    EXPECT_FALSE(status());
}

}  // namespace
}  // namespace sysmend
