// Permanent deletion: the one primitive that every removal in Sysmend goes through. Nothing
// goes to a Trash and nothing is ever chmod-ed to force a removal.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sysmend {

struct FileError {
    int code = 0;         // errno of the first failure
    std::string path;     // volume path of the first failure
    std::string message;  // one line for a person
    // Every path that stayed, as volume paths with their errno, in the order the walk met them:
    // an entry comes before the folders that could not be emptied because of it.
    std::vector<std::pair<std::string, int>> failures;
};

// Removes the file, link or folder at a volume path of Volume::current(), a folder with
// everything in it. A link is removed, never followed, wherever it stands in the tree.
//
// True when the path is gone. False with `error` filled when it was missing (ENOENT), when it
// is the volume root (EPERM: a finding is never the whole volume), or when anything stayed:
// one failing entry never stops its siblings, and the folders above it stay and are reported
// too. Entries on another device than the selected path are left alone (EXDEV); an entry that
// changed between being listed and being entered, or a folder that can no longer be reached
// the way it was entered, is left alone (ESTALE). On an inspected volume (root other than "/")
// no link is followed in the path's ancestors either (ELOOP), since an absolute link there
// resolves against the host's root. Entries below the path that vanish during the walk count as
// removed. `error` may be null; it is cleared on success.
//
// Thread-safe with respect to other calls; it opens at most about twenty descriptors whatever
// the depth of the tree.
bool removePath(std::string_view volumePath, FileError* error = nullptr);

// Test seam, so that failures and races that permissions cannot produce (tests run as root)
// can be staged. The hook sees the volume path of an entry just before removePath opens it to
// descend (Open) and just before each unlinkat (Unlink); it may change the tree, and a
// non-zero return makes that step fail with that errno without touching the entry. Set it
// only while no removal runs; an empty hook switches it off.
enum class RemovalStep { Open, Unlink };
using RemovalHook = std::function<int(RemovalStep step, const std::string& volumePath)>;
void setRemovalHook(RemovalHook hook);

}  // namespace sysmend
