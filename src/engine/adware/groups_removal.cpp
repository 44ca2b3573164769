#include "adware/groups_removal.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>

#include "model/tool_records.h"
#include "platform/path.h"
#include "platform/syslog.h"
#include "tools/file_manager.h"

namespace sysmend {
namespace {

bool anyGroupChecked(const NAGroupObjArray& groups) {
    return std::any_of(groups.begin(), groups.end(),
                       [](const auto& group) { return group->isChecked() != 0; });
}

void eraseAt(NAGroupObjArray& groups, std::size_t index) {
    groups.erase(groups.begin() + static_cast<std::ptrdiff_t>(index));
}

// Removes one checked item's file and records the outcome; true when removePath deleted it.
// A path that was already gone (an entry listed in two groups goes with the first) is no
// failure: it is recorded once as removed, since nothing of it is left.
bool removeItemFile(const NAFileobj& item, GroupsRemoval& result) {
    const std::string& path = item.filePath();
    FileError error;
    const bool removed = removePath(path, &error);
    if (!removed && !(error.code == ENOENT && error.path == path))
        result.failed.push_back(path);
    else if (std::find(result.removed.begin(), result.removed.end(), path) == result.removed.end())
        result.removed.push_back(path);
    return removed;
}

// Hands each item of the group's contents whose mark is non-zero to `remove`, in order, and
// takes it out of the group; unchecked items stay where they are.
template <class Remove>
void takeOutCheckedItems(NAGroupObj& group, Remove remove) {
    NAFileobjArray& contents = group.contents();
    for (std::size_t i = 0; i < contents.size();) {
        const std::shared_ptr<NAFileobj> item = contents[i];
        if (item->isChecked() == 0) {
            ++i;
            continue;
        }
        remove(item);
        group.removeFileObj(item);
    }
}

// Sets the group's own mark with downward propagation off, so that its items keep theirs.
void setGroupMarkOnly(NAGroupObj& group, std::int64_t mark) {
    group.setIsNeedChangeSubGroupsOrChirenState(false);
    group.setIsChecked(mark);
    group.setIsNeedChangeSubGroupsOrChirenState(true);
}

void removeFinding(const std::shared_ptr<NAFileobj>& finding, NAFileobjArray& removeFaildFiles,
                   GroupsRemoval& result) {
    const bool removed = removeItemFile(*finding, result);
    const std::string type = path::lowercased(finding->fileType());
    const std::string& filePath = finding->filePath();
    if (type == "com.apple.safari.extension") {
        removePath(path::appending(path::deletingLastPathComponent(filePath), "Extensions.plist"));
    } else if (type == "xpi") {
        logLine("fire fox");
        const std::string profile =
            path::deletingLastPathComponent(path::deletingLastPathComponent(filePath));
        removePath(path::appending(profile, "extensions.json"));
    }
    if (!removed)
        removeFaildFiles.push_back(finding);
}

bool isMaliciousCookie(const NAFileobj& item) {
    const auto* browserItem = dynamic_cast<const NABrowserObj*>(&item);
    return browserItem != nullptr && browserItem->isMaliciousCookie();
}

}  // namespace

GroupsRemoval remove_adware_action(NACategoryObj& category, NAFileobjArray& removeFaildFiles) {
    GroupsRemoval result;
    NAGroupObjArray& groups = category.groups();
    result.anyChecked = anyGroupChecked(groups);
    if (!result.anyChecked)
        return result;

    for (std::size_t g = 0; g < groups.size();) {
        const std::shared_ptr<NAGroupObj> group = groups[g];
        if (group->isChecked() == 1) {
            for (const auto& finding : group->contents())
                removeFinding(finding, removeFaildFiles, result);
            eraseAt(groups, g);
            continue;
        }
        if (group->isChecked() == -1) {
            takeOutCheckedItems(*group, [&](const std::shared_ptr<NAFileobj>& finding) {
                removeFinding(finding, removeFaildFiles, result);
            });
            group->setIsChecked(0);
        }
        ++g;
    }
    return result;
}

GroupsRemoval remove_normal_objects_action(NACategoryObj& category) {
    GroupsRemoval result;
    NAGroupObjArray& groups = category.groups();
    result.anyChecked = anyGroupChecked(groups);
    if (!result.anyChecked)
        return result;

    for (std::size_t g = 0; g < groups.size();) {
        const std::shared_ptr<NAGroupObj> group = groups[g];
        takeOutCheckedItems(
            *group, [&](const std::shared_ptr<NAFileobj>& item) { removeItemFile(*item, result); });
        if (group->isChecked() == 1) {
            eraseAt(groups, g);
            continue;
        }
        // Setting the mark again recomputes the parent group without touching the items left.
        setGroupMarkOnly(*group, group->isChecked());
        ++g;
    }
    return result;
}

bool removeAction(NACategoryObj& category) {
    NAGroupObjArray& groups = category.groups();
    if (!anyGroupChecked(groups))
        return false;

    for (const auto& group : groups) {
        if (group->browserType() == 0)
            continue;
        NAFileobjArray picked;
        for (const NAFileobjArray* items : {&group->contents(), &group->cache_contents()}) {
            std::copy_if(items->begin(), items->end(), std::back_inserter(picked),
                         [](const auto& item) { return item->isChecked() == 1; });
        }
        setGroupMarkOnly(*group, 0);
        auto isPicked = [&](const auto& item) {
            return std::find(picked.begin(), picked.end(), item) != picked.end();
        };
        std::erase_if(group->contents(), isPicked);
        std::erase_if(group->cache_contents(), isPicked);
    }
    return true;
}

void setDisplayIndex(NAGroupObjArray& groups, std::int64_t index) {
    for (const auto& group : groups) {
        NAFileobjArray& contents = group->contents();
        NAFileobjArray& cache = group->cache_contents();
        if (index != 0) {
            auto hidden =
                std::stable_partition(contents.begin(), contents.end(),
                                      [](const auto& item) { return isMaliciousCookie(*item); });
            cache.insert(cache.end(), std::make_move_iterator(hidden),
                         std::make_move_iterator(contents.end()));
            contents.erase(hidden, contents.end());
        } else {
            contents.insert(contents.end(), std::make_move_iterator(cache.begin()),
                            std::make_move_iterator(cache.end()));
            cache.clear();
        }
    }
}

}  // namespace sysmend
