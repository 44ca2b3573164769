#include "settings/na_setting_mgr.h"

#include "settings/user_defaults.h"

namespace sysmend {

// The persisted format: key, first-run default, property, and whether it is a removal kind.
const std::array<NASettingMgr::Key, 18> NASettingMgr::kKeys = {{
    {"haveRunBefor", true, &NASettingMgr::haveRunBefor_, false},
    {"isShowTrashBinsAlert", true, &NASettingMgr::isShowTrashBinsAlert_, false},
    {"isShowPhotoJunAlert", true, &NASettingMgr::isShowPhotoJunAlert_, false},
    {"isShowAppJunkAlert", true, &NASettingMgr::isShowAppJunkAlert_, false},
    {"isShowInstallPackagesAlert", true, &NASettingMgr::isShowInstallPackagesAlert_, false},
    {"isShowMailCleanerAlert", true, &NASettingMgr::isShowMailCleanerAlert_, false},
    {"isShowItunesCleanerAlert", true, &NASettingMgr::isShowItunesCleanerAlert_, false},
    {"isShowLargeFIleCleanerAlert", true, &NASettingMgr::isShowLargeFIleCleanerAlert_, false},
    {"isShowDownloadCleaerAlert", true, &NASettingMgr::isShowDownloadCleaerAlert_, false},
    {"isNeedRemove_caches", true, &NASettingMgr::isNeedRemove_caches_, true},
    {"isNeedRemove_logs", true, &NASettingMgr::isNeedRemove_logs_, true},
    {"isNeedRemove_history", false, &NASettingMgr::isNeedRemove_history_, true},
    {"isNeedRemove_localStorage", false, &NASettingMgr::isNeedRemove_localStorage_, true},
    {"isNeedRemove_cookies", false, &NASettingMgr::isNeedRemove_cookies_, true},
    {"isNeedRemove_sessions", false, &NASettingMgr::isNeedRemove_sessions_, true},
    {"isNeedRemove_savedPsw", false, &NASettingMgr::isNeedRemove_savedPsw_, true},
    {"isNeedRemove_maliciousextensions", true, &NASettingMgr::isNeedRemove_maliciousextensions_,
     true},
    {"isNeedRemove_maliciousplugins", true, &NASettingMgr::isNeedRemove_maliciousplugins_, true},
}};

NASettingMgr& NASettingMgr::mgr() {
    static NASettingMgr shared(UserDefaults::standardUserDefaults());
    return shared;
}

NASettingMgr::NASettingMgr(UserDefaults& defaults) : defaults_(defaults) {
    get_data();
}

void NASettingMgr::get_data() {
    bool ranBefore = defaults_.boolForKey("haveRunBefor");
    for (const Key& key : kKeys) {
        this->*key.member = ranBefore ? defaults_.boolForKey(key.name) : key.firstRunDefault;
    }
}

void NASettingMgr::save_data() {
    for (const Key& key : kKeys)
        defaults_.setBool(this->*key.member, key.name);
}

int NASettingMgr::checkedCount() const {
    int count = 0;
    for (const Key& key : kKeys) {
        if (key.countsAsRemovalKind && this->*key.member)
            ++count;
    }
    return count;
}

}  // namespace sysmend
