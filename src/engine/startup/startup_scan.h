// Startup items: the launchd job files whose "Label" is the bundle identifier of an installed
// application. Jobs of command-line tools, helpers and anything else whose label names no
// application are not listed at all; that narrow rule is deliberate.
//
// Every job file that passes becomes one group: an NAStartupItemObj (item_id = the trimmed
// label, loaded_using = the job file, full_path = the application bundle, title = the bundle's
// name less ".app") in a group titled like the item, with the application's icon. Two job
// files that name the same application give two groups. Check marks, sizes and dates keep
// their defaults.
//
// Failures are silent: missing or unreadable folders, unreadable or malformed property lists,
// property lists that are not dictionaries or have no string "Label", labels that name no
// application are all skipped, and the scan goes on.
//
// Threads: a scan runs on one pool thread and writes only the category it is given, without
// a lock; the result page must not read the groups before the scan has returned.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/na_category_obj.h"
#include "model/na_group_obj.h"
#include "platform/app_index.h"

namespace sysmend {

// One scan: holds the application index it matches labels against, built once for the scan.
// Not to be shared between threads while it scans.
class NAStartupItemsScan {
  public:
    // Builds the index over Volume::current().
    NAStartupItemsScan();
    explicit NAStartupItemsScan(AppIndex apps);

    // Whether the file viewer types the path as a property list: its type conforms to
    // "com.apple.property-list". Types come from filename extensions here (nothing on this
    // platform records a file's type apart from its name), so a file is a property list exactly
    // when its extension is "plist" in any case, whatever it holds; an extensionless job file
    // is not read even when it holds a property list. Folders, also those named "*.plist", are
    // not.
    static bool isPlistFile(std::string_view volumePath);

    // The folders scanned, in scan order: the home's LaunchAgents, "/Library/LaunchAgents",
    // "/System/Library/LaunchAgents", "/Library/LaunchDaemons", and last, on purpose, the
    // home's LaunchDaemons.
    static std::vector<std::string> folders();

    // One folder: every property list below it, sub-folders included, hidden files included,
    // bundles not entered, in the walker's sorted pre-order. Symbolic links are not entered as
    // folders; a link to a job file is read, an absolute link target being a path on the
    // volume.
    NAGroupObjArray scanFolder(std::string_view folder) const;

    // The whole scan: the five folders in their order, each folder's groups appended in order
    // to category.groups(), which is not emptied first (starting over empties it).
    void loadStartusItems(NACategoryObj& category) const;

  private:
    AppIndex apps_;
};

}  // namespace sysmend
