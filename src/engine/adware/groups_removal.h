// What the Remove button of the grouped result pages does to a category's groups, and their
// display filter. These functions change the groups in place, exactly as the page shows them
// afterwards; the page (or the CLI) only reloads and opens its sheets from the result.
//
// All files go through removePath (tools/file_manager.h) on Volume::current(): links are
// removed, never followed. Call them on the GUI thread, never while a scan writes the groups.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/na_category_obj.h"
#include "model/na_fileobj.h"
#include "model/na_group_obj.h"

namespace sysmend {

struct GroupsRemoval {
    // False when no group's mark was non-zero: nothing was touched, and the page shows neither
    // its progress sheet nor its failure sheet.
    bool anyChecked = false;
    // filePath of every checked item that removePath was asked to delete, in the order of the
    // walk: `failed` where it is still there afterwards, `removed` (once each) where it is
    // gone, an item that had already vanished included (a reporter entry listed in two groups
    // is deleted with the first). The browser registries deleted along with a finding are in
    // neither list.
    std::vector<std::string> removed;
    std::vector<std::string> failed;
};

// The adware page's removal (category type 3). Groups are walked by index, and the index
// moves only past a group that stays. A group marked 1 has each item of its contents removed
// in order and is then dropped, failures or not; its cache_contents are dropped with it
// without being deleted. A group marked -1 has its checked items removed and taken out of
// contents, and is then marked 0 (propagation as set), since only unchecked items remain.
// Any other group is passed over.
//
// Along with a finding whose fileType is "com.apple.safari.extension" (compared without
// case), the "Extensions.plist" beside it goes too; with an "xpi" one, the line "fire fox"
// is logged and the "extensions.json" two folders above it (the Firefox profile's add-on
// list) goes, so that the browser rebuilds its list. Both are best effort: deleted even when
// the finding itself could not be, and their outcome is not looked at.
//
// Every finding that could not be removed is appended to `removeFaildFiles`, the page's own
// list, which its failure sheet shares.
GroupsRemoval remove_adware_action(NACategoryObj& category, NAFileobjArray& removeFaildFiles);

// The removal of the other grouped pages (Crashes). In every group, each item of contents
// whose mark is non-zero has its filePath removed and is taken out; no registry is touched and
// nothing is kept for a failure sheet. Afterwards a group still marked 1 is dropped, and any
// other gets its own mark set again with downward propagation off, so that its remaining
// items keep theirs.
GroupsRemoval remove_normal_objects_action(NACategoryObj& category);

// The list-only removal of the startup and App Viewer pages: true when some group's mark was
// non-zero (the page then shows and ends its progress sheet). Only groups with a non-zero
// browserType (web groups) are touched: their items marked exactly 1 are taken out of contents
// and cache_contents, after the group has been marked 0 with downward propagation off. Nothing
// is deleted on disk.
bool removeAction(NACategoryObj& category);

// The display filter. A non-zero index moves, in each group, the items that are not malicious
// cookies (every item but an NABrowserObj with isMaliciousCookie) from contents to the end of
// cache_contents, keeping their order. Index 0 appends all of cache_contents back to the end
// of contents and empties it, so restored items come after the ones that stayed in view.
void setDisplayIndex(NAGroupObjArray& groups, std::int64_t index);

}  // namespace sysmend
