#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "sample/fake_volume.h"
#include "settings/na_setting_mgr.h"
#include "settings/user_defaults.h"

namespace sysmend {
namespace {

class SettingsTest : public ::testing::Test {
  protected:
    sample::FakeVolume scratch_;  // only used as a temporary folder here
    std::string file_ = scratch_.host("/prefs/net.qvarlo.Sysmend.plist");
};

TEST_F(SettingsTest, DefaultsPersistAtOnceAndKeepUnknownKeys) {
    plist::Dictionary existing;
    existing.set("someFutureKey", "kept");
    scratch_.writePlist("/prefs/net.qvarlo.Sysmend.plist", plist::Value(existing));
    UserDefaults defaults(file_);
    defaults.setBool(true, "flag");
    defaults.setObject(plist::Value(Data{1, 2, 3}), "bd_file:///Users/alice/");

    UserDefaults reread(file_);
    EXPECT_TRUE(reread.boolForKey("flag"));
    EXPECT_EQ(reread.dataForKey("bd_file:///Users/alice/"), (Data{1, 2, 3}));
    EXPECT_EQ(reread.objectForKey("someFutureKey"), plist::Value("kept"));
    EXPECT_EQ(reread.keys(),
              (std::vector<std::string>{"someFutureKey", "flag", "bd_file:///Users/alice/"}));

    reread.removeObjectForKey("flag");
    EXPECT_FALSE(UserDefaults(file_).objectForKey("flag").has_value());
    EXPECT_TRUE(reread.synchronize());
}

TEST_F(SettingsTest, UnreadableFileIsKeptAsideNotOverwritten) {
    scratch_.write("/prefs/net.qvarlo.Sysmend.plist", "<plist><dict><key>a</key>");
    UserDefaults defaults(file_);
    EXPECT_TRUE(defaults.keys().empty());
    EXPECT_FALSE(defaults.boolForKey("anything"));
    defaults.setBool(true, "haveRunBefor");
    EXPECT_TRUE(UserDefaults(file_).boolForKey("haveRunBefor"));
    EXPECT_TRUE(std::filesystem::exists(file_ + ".corrupt"));
}

TEST_F(SettingsTest, UnwritableFolderKeepsValuesForTheRun) {
    scratch_.write("/prefs-file", "a file where the folder should be");
    UserDefaults defaults(scratch_.host("/prefs-file/sub/net.qvarlo.Sysmend.plist"));
    defaults.setBool(true, "isNeedRemove_logs");
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_TRUE(defaults.boolForKey("isNeedRemove_logs"));
}

TEST_F(SettingsTest, FirstRunAppliesDefaultsWithoutReading) {
    UserDefaults defaults(file_);
    defaults.setBool(true, "isNeedRemove_history");  // ignored: haveRunBefor is not set
    NASettingMgr mgr(defaults);
    EXPECT_TRUE(mgr.haveRunBefor());
    EXPECT_TRUE(mgr.isShowTrashBinsAlert());
    EXPECT_FALSE(mgr.isNeedRemove_history());
    EXPECT_EQ(mgr.checkedCount(), 4);
}

TEST_F(SettingsTest, AfterFirstRunAbsentKeysReadNo) {
    UserDefaults defaults(file_);
    defaults.setBool(true, "haveRunBefor");
    NASettingMgr mgr(defaults);
    EXPECT_FALSE(mgr.isShowTrashBinsAlert());
    EXPECT_EQ(mgr.checkedCount(), 0);

    defaults.setBool(true, "isNeedRemove_cookies");
    defaults.setBool(true, "isNeedRemove_maliciousplugins");
    mgr.get_data();
    EXPECT_EQ(mgr.checkedCount(), 2);
}

TEST_F(SettingsTest, SaveDataWritesEveryKeyInTableOrder) {
    UserDefaults defaults(file_);
    NASettingMgr mgr(defaults);
    mgr.setIsNeedRemove_savedPsw(true);
    mgr.save_data();

    UserDefaults reread(file_);
    ASSERT_EQ(reread.keys().size(), 18u);
    EXPECT_EQ(reread.keys().front(), "haveRunBefor");
    EXPECT_EQ(reread.keys().back(), "isNeedRemove_maliciousplugins");
    EXPECT_EQ(NASettingMgr(reread).checkedCount(), 5);
}

}  // namespace
}  // namespace sysmend
