#include "sandbox/bookmarks.h"

#include <sys/stat.h>

#include <atomic>

#include "platform/plist.h"
#include "platform/volume.h"

namespace sysmend {
namespace {

// Inode and device numbers are unsigned 64-bit values; a property list holds signed ones, so
// they are stored with their bits reinterpreted and compared the same way.
std::int64_t asStored(std::uint64_t n) {
    return static_cast<std::int64_t>(n);
}

std::optional<struct stat> statOnVolume(const std::string& volumePath) {
    struct stat st {};
    if (::stat(Volume::current().hostPath(volumePath).c_str(), &st) != 0)
        return std::nullopt;
    return st;
}

std::atomic<BookmarkBackend*>& installedBackend() {
    static std::atomic<BookmarkBackend*> installed{nullptr};
    return installed;
}

}  // namespace

std::optional<Data> PortableBookmarkBackend::create(const FileURL& url) {
    auto st = statOnVolume(url.path());
    if (!st)
        return std::nullopt;
    plist::Dictionary record;
    record.set("path", url.path());
    record.set("device", asStored(st->st_dev));
    record.set("inode", asStored(st->st_ino));
    return plist::serialize(plist::Value(std::move(record)), plist::Format::Binary);
}

std::optional<FileURL> PortableBookmarkBackend::resolve(const Data& data, bool* isStale) {
    // Bookmark data is a few dozen bytes; anything larger did not come from create().
    plist::ReadLimits limits;
    limits.maxBytes = 64 * 1024;
    auto value = plist::parse(data, limits);
    if (!value)
        return std::nullopt;
    const plist::Value* path = value->find("path");
    const plist::Value* device = value->find("device");
    const plist::Value* inode = value->find("inode");
    if (path == nullptr || path->asString() == nullptr || path->asString()->empty() ||
        path->asString()->front() != '/' || device == nullptr || inode == nullptr)
        return std::nullopt;
    auto st = statOnVolume(*path->asString());
    if (!st)
        return std::nullopt;
    if (isStale != nullptr) {
        *isStale = device->asInteger() != asStored(st->st_dev) ||
                   inode->asInteger() != asStored(st->st_ino);
    }
    return FileURL::fileURLWithPath(*path->asString());
}

bool PortableBookmarkBackend::startAccessing(const FileURL&) {
    return true;
}

void PortableBookmarkBackend::stopAccessing(const FileURL&) {}

BookmarkBackend& bookmarkBackend() {
    static PortableBookmarkBackend portable;
    BookmarkBackend* installed = installedBackend().load();
    return installed != nullptr ? *installed : portable;
}

BookmarkBackend* setBookmarkBackend(BookmarkBackend* backend) {
    return installedBackend().exchange(backend);
}

}  // namespace sysmend
