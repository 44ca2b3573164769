#include "startup/startup_scan.h"

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <utility>

#include "model/tool_records.h"
#include "platform/file_url.h"
#include "platform/path.h"
#include "platform/plist.h"
#include "platform/uti.h"
#include "platform/volume.h"
#include "platform/walker.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

// A link's target is a volume path; the host would resolve an absolute one against its own
// root.
std::string hostPathOf(const DirectoryEnumerator::Entry& entry) {
    if (entry.kind != EntryKind::Symlink)
        return Volume::current().hostPath(entry.path);
    const FileURL target =
        FileURL::fileURLWithPath(entry.path, false).URLByResolvingSymlinksInPath();
    return Volume::current().hostPath(target.path());
}

std::optional<std::string> jobLabel(const std::string& hostPath) {
    std::optional<plist::Value> job = plist::readFile(hostPath);
    if (!job || job->asDictionary() == nullptr)
        return std::nullopt;
    const plist::Value* label = job->find("Label");
    if (label == nullptr || label->asString() == nullptr)
        return std::nullopt;
    return *label->asString();
}

bool fileExists(const std::string& volumePath) {
    struct stat st {};
    return ::stat(Volume::current().hostPath(volumePath).c_str(), &st) == 0;
}

}  // namespace

NAStartupItemsScan::NAStartupItemsScan() : apps_(AppIndex::build()) {}

NAStartupItemsScan::NAStartupItemsScan(AppIndex apps) : apps_(std::move(apps)) {}

bool NAStartupItemsScan::isPlistFile(std::string_view volumePath) {
    return uti::conformsTo(fileType(volumePath), uti::kPropertyList);
}

std::vector<std::string> NAStartupItemsScan::folders() {
    const std::string& home = Volume::current().home();
    return {
        path::appending(home, "Library/LaunchAgents"),
        "/Library/LaunchAgents",
        "/System/Library/LaunchAgents",
        "/Library/LaunchDaemons",
        path::appending(home, "Library/LaunchDaemons"),
    };
}

NAGroupObjArray NAStartupItemsScan::scanFolder(std::string_view folder) const {
    NAGroupObjArray groups;
    DirectoryEnumerator walk(folder, DirectoryEnumerator::SkipsPackageDescendants);
    while (std::optional<DirectoryEnumerator::Entry> entry = walk.next()) {
        if (!isPlistFile(entry->path))
            continue;
        std::optional<std::string> label = jobLabel(hostPathOf(*entry));
        if (!label)
            continue;
        const std::string bundleId = path::trimmedWhitespace(*label);
        std::optional<std::string> app = apps_.absolutePathForAppBundleWithIdentifier(bundleId);
        if (!app || !fileExists(*app))
            continue;

        auto item = std::make_shared<NAStartupItemObj>();
        item->setLoaded_using(entry->path);
        item->setFull_path(*app);
        item->setTitle(path::deletingPathExtension(path::lastPathComponent(*app)));
        item->setItem_id(bundleId);
        auto group = std::make_shared<NAGroupObj>(item->title(), ImageRef::fileIcon(*app));
        group->addFileObj(item);
        groups.push_back(std::move(group));
    }
    return groups;
}

void NAStartupItemsScan::loadStartusItems(NACategoryObj& category) const {
    for (const std::string& folder : folders()) {
        NAGroupObjArray found = scanFolder(folder);
        category.groups().insert(category.groups().end(), found.begin(), found.end());
    }
}

}  // namespace sysmend
