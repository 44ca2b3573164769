// The App Viewer's scan: every application bundle below a folder ("/Applications"), one
// information group each (appviewer/app_information.h), in the order the walk meets them.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>

#include "model/na_group_obj.h"

namespace sysmend {

class AppListing {
  public:
    using ProgressHook = std::function<void(float fraction)>;

    // `stop` is the start page's stop flag; it must outlive the object. It is read after
    // each entry of the walk, from the thread that runs loadAllApps.
    explicit AppListing(const std::atomic<bool>& stop) : stop_(stop) {}

    // The running application's own bundle (a volume path), which is never listed. On macOS
    // the application sets it; elsewhere there is none unless it is set.
    void setOwnBundlePath(std::string volumePath);
    const std::string& ownBundlePath() const { return ownBundlePath_; }

    // Called by updateProgress. The page shows no determinate progress, so it sets none; the
    // hook is there for the calls to land somewhere.
    void setProgressHook(ProgressHook hook) { progressHook_ = std::move(hook); }

    // Walks `folder` (a volume path) without hidden entries and without entering packages, so
    // bundles inside bundles are not listed but those in ordinary sub-folders are, where the
    // walk meets them (folders sorted by name, a folder before its contents). The whole walk
    // is collected first, to know its length N. Every entry that isAppFile accepts, but the
    // own bundle, becomes an NAAppInformation; its group, with the bundle's icon as image,
    // is appended to `apps` unless the information failed (no bundle, no name). After each
    // entry i the stop flag is read: when set, the listing ends there, keeping the groups so
    // far; otherwise updateProgress((i + 1) / N). Unreadable folders are skipped silently.
    //
    // The page passes its category's groups as `apps` and reads them only after this has
    // returned (the progress sheet ends then). Bundles are read on two worker threads, ahead
    // of the walk's order, so the installed metadata provider must be callable from several
    // threads; groups are still appended, and the hook called, in walk order on the calling
    // thread. After a stop, the call returns once the bundles the workers hold are read.
    void loadAllApps(std::string_view folder, NAGroupObjArray& apps);

    // Hands the fraction (0..1) of the walk done to the progress hook, if any.
    void updateProgress(float fraction) const;

    // True when the path's extension is that of an application bundle type ("Foo.app",
    // "Foo.APP"). The disk is not consulted: a folder or a file named so answers true.
    static bool isAppFile(std::string_view volumePath);

    // True for a symbolic link or a Finder alias file (bookmark data); false for a missing
    // path or an empty one. The listing does not use it.
    static bool isAlias(std::string_view volumePath);

  private:
    const std::atomic<bool>& stop_;
    std::string ownBundlePath_;
    ProgressHook progressHook_;
};

// The bundle path of a group that loadAllApps made (its icon names the bundle); empty for
// any other group.
std::string appPathOfGroup(const NAGroupObj& group);

}  // namespace sysmend
