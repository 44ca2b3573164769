// Records with the fields of particular tools: a launch item, a named list of adware
// findings, and a browser data entry (a site with its cookies and the like).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model/image_ref.h"
#include "model/na_fileobj.h"

namespace sysmend {

// One launchd job that the startup-item tool lists.
class NAStartupItemObj : public NAFileobj {
  public:
    using NAFileobj::NAFileobj;

    // The job's label.
    const std::string& item_id() const { return item_id_; }
    void setItem_id(std::string id) { item_id_ = std::move(id); }
    // How the job is loaded: the folder or list it came from.
    const std::string& loaded_using() const { return loaded_using_; }
    void setLoaded_using(std::string how) { loaded_using_ = std::move(how); }
    // The job's definition or program.
    const std::string& full_path() const { return full_path_; }
    void setFull_path(std::string path) { full_path_ = std::move(path); }

  private:
    std::string item_id_;
    std::string loaded_using_;
    std::string full_path_;
};

// The findings listed under one adware name. Not an item: it has no check mark.
class NAAdwareObj {
  public:
    NAAdwareObj() = default;
    NAAdwareObj(std::string name, NAFileobjArray objs)
        : name_(std::move(name)), adwares_(std::move(objs)) {}

    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    const NAFileobjArray& adwares() const { return adwares_; }
    NAFileobjArray& adwares() { return adwares_; }

  private:
    std::string name_;
    NAFileobjArray adwares_;
};

// A browser data entry, or a parent that gathers such entries. Unlike a plain item it owns
// its children; it has no child array until one is set (addChilren appends nothing before).
class NABrowserObj : public NAFileobj {
  public:
    using NAFileobj::NAFileobj;

    std::shared_ptr<NAFileobjArray> chilren() const override { return ownedChilren_; }
    void setChilren(const std::shared_ptr<NAFileobjArray>& chilren) override {
        ownedChilren_ = chilren;
    }

    // Listed under its domain.
    const std::string& fileName() const override { return domain_; }
    // The size column shows a count of entries, not bytes.
    std::int64_t size() const { return someItems_count(); }

    // The number of underlying entries. When none was stored and there are children, it is the
    // sum of the children's counts (children that are not browser entries count 0), stored on
    // first use and never recomputed, even when children are added later.
    std::int64_t someItems_count() const;
    void setSomeItems_count(std::int64_t count) { someItems_count_ = count; }

    // Always removed, not left to the user's choice.
    bool isMustRemove() const { return isMustRemove_; }
    void setIsMustRemove(bool on) { isMustRemove_ = on; }
    // The entry's row in the browser's database.
    std::int64_t rowId() const { return rowId_; }
    void setRowId(std::int64_t rowId) { rowId_ = rowId; }
    const ImageRef& webIcon() const { return webIcon_; }
    void setWebIcon(ImageRef icon) { webIcon_ = std::move(icon); }
    const std::string& url() const { return url_; }
    void setUrl(std::string url) { url_ = std::move(url); }
    const std::string& redirectUrl() const { return redirectUrl_; }
    void setRedirectUrl(std::string url) { redirectUrl_ = std::move(url); }
    const std::string& domain() const { return domain_; }
    void setDomain(std::string domain) { domain_ = std::move(domain); }
    // A description line; "" until set.
    const std::string& information() const { return information_; }
    void setInformation(std::string text) { information_ = std::move(text); }
    bool isMaliciousCookie() const { return isMaliciousCookie_; }
    void setIsMaliciousCookie(bool on) { isMaliciousCookie_ = on; }
    // The browser database file the entry was read from.
    const std::string& cookies_db_path() const { return cookies_db_path_; }
    void setCookies_db_path(std::string path) { cookies_db_path_ = std::move(path); }

  private:
    std::shared_ptr<NAFileobjArray> ownedChilren_;
    mutable std::int64_t someItems_count_ = 0;  // also the cache of the computed count
    bool isMustRemove_ = false;
    std::int64_t rowId_ = 0;
    ImageRef webIcon_;
    std::string url_;
    std::string redirectUrl_;
    std::string domain_;
    std::string information_;
    bool isMaliciousCookie_ = false;
    std::string cookies_db_path_;
};

}  // namespace sysmend
