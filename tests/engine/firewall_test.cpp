#include "network/firewall.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "sample/fake_volume.h"

namespace sysmend {
namespace {

plist::Value preferences(plist::Value globalstate) {
    plist::Dictionary alf;
    alf.set("globalstate", std::move(globalstate));
    return alf;
}

TEST(FirewallStatusTest, OffOnlyWhenTheVolumesFileIsADictionaryWithGlobalstateZero) {
    for (const plist::Value& zero : {plist::Value(0), plist::Value(false), plist::Value("0")})
        EXPECT_FALSE(getFirewallStatus(preferences(zero))) << plist::describe(zero);

    for (const plist::Value& on :
         {preferences(1), preferences(2), preferences(plist::Array{plist::Value(0)}),
          preferences(Data{0}), plist::Value(plist::Dictionary{}),
          plist::Value(plist::Array{preferences(0)}), plist::Value(0)}) {
        EXPECT_TRUE(getFirewallStatus(on)) << plist::describe(on);
    }
    EXPECT_TRUE(getFirewallStatus(std::nullopt));

    // The volume's file, in either format, through links whose targets are volume paths.
    sample::FakeVolume vol;
    ScopedVolume scope(vol.volume());
    EXPECT_TRUE(getFirewallStatus());  // no file

    vol.setFirewallPreferences(preferences(0), plist::Format::Binary);
    EXPECT_FALSE(getFirewallStatus());
    vol.setFirewallPreferences(plist::Array{preferences(0)});
    EXPECT_TRUE(getFirewallStatus());
    vol.write(std::string(kFirewallPreferencesPath), "<plist><dict><key>globalstate</key>");
    EXPECT_TRUE(getFirewallStatus());

    vol.copyIn(SYSMEND_TEST_DATA "/plist/alf", "/Library/Shared");
    std::filesystem::remove(vol.host(std::string(kFirewallPreferencesPath)));
    vol.symlink(std::string(kFirewallPreferencesPath), "/Library/Shared/test_alf.plist");
    EXPECT_FALSE(getFirewallStatus());  // XML, globalstate 0
    std::filesystem::remove(vol.host(std::string(kFirewallPreferencesPath)));
    vol.symlink(std::string(kFirewallPreferencesPath),
                "/Library/Shared/test_alf_nested_path.plist");
    EXPECT_TRUE(getFirewallStatus());  // binary, globalstate 1
}

}  // namespace
}  // namespace sysmend
