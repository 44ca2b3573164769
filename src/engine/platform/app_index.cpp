#include "platform/app_index.h"

#include <utility>

#include "platform/path.h"
#include "platform/plist.h"
#include "platform/uti.h"
#include "platform/volume.h"
#include "platform/walker.h"

namespace sysmend {
namespace {

bool isApplicationBundle(const DirectoryEnumerator::Entry& entry) {
    return entry.kind == EntryKind::Directory &&
           uti::conformsTo(uti::preferredIdentifierForExtension(path::pathExtension(entry.path),
                                                                uti::kDirectory),
                           uti::kApplicationBundle);
}

std::optional<std::string> bundleIdentifier(const std::string& bundle) {
    const Volume& volume = Volume::current();
    for (const char* info : {"/Contents/Info.plist", "/Info.plist"}) {
        std::optional<plist::Value> plist = plist::readFile(volume.hostPath(bundle + info));
        if (!plist)
            continue;
        const plist::Value* id = plist->find("CFBundleIdentifier");
        if (id != nullptr && id->asString() != nullptr && !id->asString()->empty())
            return *id->asString();
        // A readable Info.plist without an identifier is the bundle's answer.
        return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

AppIndex AppIndex::build() {
    AppIndex index;
    index.addBundlesBelow("/Applications");
    index.addBundlesBelow("/System/Applications");
    index.addBundlesBelow(path::appending(Volume::current().home(), "Applications"));
    return index;
}

void AppIndex::addBundlesBelow(const std::string& folder) {
    DirectoryEnumerator walk(folder, DirectoryEnumerator::SkipsPackageDescendants);
    while (std::optional<DirectoryEnumerator::Entry> entry = walk.next()) {
        // A bundle is a package, so the walk does not enter it.
        if (!isApplicationBundle(*entry))
            continue;
        if (std::optional<std::string> id = bundleIdentifier(entry->path))
            paths_.try_emplace(path::lowercased(*id), std::move(entry->path));
    }
}

std::optional<std::string> AppIndex::absolutePathForAppBundleWithIdentifier(
    std::string_view bundleId) const {
    auto found = paths_.find(path::lowercased(bundleId));
    if (found == paths_.end())
        return std::nullopt;
    return found->second;
}

}  // namespace sysmend
