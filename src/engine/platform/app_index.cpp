#include "platform/app_index.h"

#include <sys/stat.h>

#include <utility>

#include "platform/path.h"
#include "platform/plist.h"
#include "platform/uti.h"
#include "platform/volume.h"
#include "platform/walker.h"

namespace sysmend {
namespace {

bool hasApplicationBundleName(const std::string& path) {
    return uti::conformsTo(
        uti::preferredIdentifierForExtension(path::pathExtension(path), uti::kDirectory),
        uti::kApplicationBundle);
}

// The path of the bundle an entry is or leads to; nullopt when it is no application bundle.
std::optional<std::string> applicationBundle(const DirectoryEnumerator::Entry& entry) {
    if (!hasApplicationBundleName(entry.path))
        return std::nullopt;
    if (entry.kind == EntryKind::Directory)
        return entry.path;
    if (entry.kind != EntryKind::Symlink)
        return std::nullopt;
    std::optional<std::string> target = Volume::current().resolvingLinks(entry.path);
    struct stat st {};
    if (!target || ::stat(Volume::current().hostPath(*target).c_str(), &st) != 0 ||
        !S_ISDIR(st.st_mode))
        return std::nullopt;
    return target;
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
        std::optional<std::string> bundle = applicationBundle(*entry);
        if (!bundle)
            continue;
        if (std::optional<std::string> id = bundleIdentifier(*bundle))
            paths_.try_emplace(path::lowercased(*id), std::move(*bundle));
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
