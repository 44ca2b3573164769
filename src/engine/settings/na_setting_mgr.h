// Boolean preferences kept in the user defaults, under keys equal to the property names (the
// spellings are the persisted keys and must not be corrected).
//
// Only checkedCount is consulted by the application today; the store is kept whole because its
// keys and first-run defaults are part of the persisted format. Nothing calls save_data, so
// the first-run defaults are applied again at every launch until something does.
#pragma once

#include <array>
#include <string_view>

namespace sysmend {

class UserDefaults;

class NASettingMgr {
  public:
    // The process-wide store over the standard user defaults, loaded on first use.
    static NASettingMgr& mgr();

    // A store over the given defaults, loaded at once (tests use this with a temporary file).
    explicit NASettingMgr(UserDefaults& defaults);

    // Reads "haveRunBefor"; when it is YES every other key is read with boolForKey (absent keys
    // read NO), otherwise the first-run defaults are set in memory without reading anything.
    void get_data();
    // Writes all eighteen properties, in table order.
    void save_data();

    // Number of the nine isNeedRemove_ properties that are YES (4 with the defaults).
    int checkedCount() const;

    bool haveRunBefor() const { return haveRunBefor_; }
    void setHaveRunBefor(bool v) { haveRunBefor_ = v; }
    bool isShowTrashBinsAlert() const { return isShowTrashBinsAlert_; }
    void setIsShowTrashBinsAlert(bool v) { isShowTrashBinsAlert_ = v; }
    bool isShowPhotoJunAlert() const { return isShowPhotoJunAlert_; }
    void setIsShowPhotoJunAlert(bool v) { isShowPhotoJunAlert_ = v; }
    bool isShowAppJunkAlert() const { return isShowAppJunkAlert_; }
    void setIsShowAppJunkAlert(bool v) { isShowAppJunkAlert_ = v; }
    bool isShowInstallPackagesAlert() const { return isShowInstallPackagesAlert_; }
    void setIsShowInstallPackagesAlert(bool v) { isShowInstallPackagesAlert_ = v; }
    bool isShowMailCleanerAlert() const { return isShowMailCleanerAlert_; }
    void setIsShowMailCleanerAlert(bool v) { isShowMailCleanerAlert_ = v; }
    bool isShowItunesCleanerAlert() const { return isShowItunesCleanerAlert_; }
    void setIsShowItunesCleanerAlert(bool v) { isShowItunesCleanerAlert_ = v; }
    bool isShowLargeFIleCleanerAlert() const { return isShowLargeFIleCleanerAlert_; }
    void setIsShowLargeFIleCleanerAlert(bool v) { isShowLargeFIleCleanerAlert_ = v; }
    bool isShowDownloadCleaerAlert() const { return isShowDownloadCleaerAlert_; }
    void setIsShowDownloadCleaerAlert(bool v) { isShowDownloadCleaerAlert_ = v; }
    bool isNeedRemove_caches() const { return isNeedRemove_caches_; }
    void setIsNeedRemove_caches(bool v) { isNeedRemove_caches_ = v; }
    bool isNeedRemove_logs() const { return isNeedRemove_logs_; }
    void setIsNeedRemove_logs(bool v) { isNeedRemove_logs_ = v; }
    bool isNeedRemove_history() const { return isNeedRemove_history_; }
    void setIsNeedRemove_history(bool v) { isNeedRemove_history_ = v; }
    bool isNeedRemove_localStorage() const { return isNeedRemove_localStorage_; }
    void setIsNeedRemove_localStorage(bool v) { isNeedRemove_localStorage_ = v; }
    bool isNeedRemove_cookies() const { return isNeedRemove_cookies_; }
    void setIsNeedRemove_cookies(bool v) { isNeedRemove_cookies_ = v; }
    bool isNeedRemove_sessions() const { return isNeedRemove_sessions_; }
    void setIsNeedRemove_sessions(bool v) { isNeedRemove_sessions_ = v; }
    bool isNeedRemove_savedPsw() const { return isNeedRemove_savedPsw_; }
    void setIsNeedRemove_savedPsw(bool v) { isNeedRemove_savedPsw_ = v; }
    bool isNeedRemove_maliciousextensions() const { return isNeedRemove_maliciousextensions_; }
    void setIsNeedRemove_maliciousextensions(bool v) { isNeedRemove_maliciousextensions_ = v; }
    bool isNeedRemove_maliciousplugins() const { return isNeedRemove_maliciousplugins_; }
    void setIsNeedRemove_maliciousplugins(bool v) { isNeedRemove_maliciousplugins_ = v; }

  private:
    struct Key {
        std::string_view name;
        bool firstRunDefault;
        bool NASettingMgr::*member;
        bool countsAsRemovalKind;
    };
    static const std::array<Key, 18> kKeys;

    UserDefaults& defaults_;
    bool haveRunBefor_ = false;
    bool isShowTrashBinsAlert_ = false;
    bool isShowPhotoJunAlert_ = false;
    bool isShowAppJunkAlert_ = false;
    bool isShowInstallPackagesAlert_ = false;
    bool isShowMailCleanerAlert_ = false;
    bool isShowItunesCleanerAlert_ = false;
    bool isShowLargeFIleCleanerAlert_ = false;
    bool isShowDownloadCleaerAlert_ = false;
    bool isNeedRemove_caches_ = false;
    bool isNeedRemove_logs_ = false;
    bool isNeedRemove_history_ = false;
    bool isNeedRemove_localStorage_ = false;
    bool isNeedRemove_cookies_ = false;
    bool isNeedRemove_sessions_ = false;
    bool isNeedRemove_savedPsw_ = false;
    bool isNeedRemove_maliciousextensions_ = false;
    bool isNeedRemove_maliciousplugins_ = false;
};

}  // namespace sysmend
