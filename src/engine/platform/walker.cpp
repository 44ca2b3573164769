#include "platform/walker.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ostream>
#include <utility>

#include "platform/path.h"
#include "platform/uti.h"
#include "platform/volume.h"

namespace sysmend {
namespace {

EntryKind kindFromMode(mode_t mode) {
    if (S_ISDIR(mode))
        return EntryKind::Directory;
    if (S_ISREG(mode))
        return EntryKind::File;
    if (S_ISLNK(mode))
        return EntryKind::Symlink;
    return EntryKind::Other;
}

EntryKind kindOf(int dirFd, const dirent& e) {
    switch (e.d_type) {
        case DT_DIR:
            return EntryKind::Directory;
        case DT_REG:
            return EntryKind::File;
        case DT_LNK:
            return EntryKind::Symlink;
        case DT_UNKNOWN: {
            // Some file systems leave the type out of the listing.
            struct stat st {};
            if (::fstatat(dirFd, e.d_name, &st, AT_SYMLINK_NOFOLLOW) != 0)
                return EntryKind::Other;
            return kindFromMode(st.st_mode);
        }
        default:
            return EntryKind::Other;
    }
}

bool isHidden(std::string_view name) {
    return !name.empty() && name.front() == '.';
}

// Reads a whole folder and closes it. `followLink` is for the folder a caller names; folders
// met during a walk are opened with O_NOFOLLOW so that a link swapped in is not entered.
bool readFolder(std::string_view volumePath, bool followLink, bool skipHidden,
                std::vector<DirEntry>& out) {
    const std::string host = Volume::current().hostPath(volumePath);
    int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (followLink ? 0 : O_NOFOLLOW);
    int fd = ::open(host.c_str(), flags);
    if (fd < 0)
        return false;
    DIR* dir = ::fdopendir(fd);
    if (dir == nullptr) {
        ::close(fd);
        return false;
    }
    while (const dirent* e = ::readdir(dir)) {
        std::string_view name = e->d_name;
        if (name == "." || name == "..")
            continue;
        if (skipHidden && isHidden(name))
            continue;
        out.push_back({std::string(name), kindOf(fd, *e)});
    }
    ::closedir(dir);
    std::sort(out.begin(), out.end(),
              [](const DirEntry& a, const DirEntry& b) { return a.name < b.name; });
    return true;
}

std::string childPath(const std::string& folder, std::string_view name) {
    std::string out = folder;
    if (out.empty() || out.back() != '/')
        out += '/';
    out += name;
    return out;
}

}  // namespace

std::ostream& operator<<(std::ostream& os, EntryKind kind) {
    switch (kind) {
        case EntryKind::Directory:
            return os << "Directory";
        case EntryKind::File:
            return os << "File";
        case EntryKind::Symlink:
            return os << "Symlink";
        case EntryKind::Other:
            break;
    }
    return os << "Other";
}

std::ostream& operator<<(std::ostream& os, const DirEntry& entry) {
    return os << "{\"" << entry.name << "\", " << entry.kind << "}";
}

std::vector<DirEntry> contentsOfDirectory(std::string_view volumePath, bool* ok) {
    std::vector<DirEntry> entries;
    bool read = readFolder(volumePath, true, false, entries);
    if (ok != nullptr)
        *ok = read;
    return entries;
}

DirectoryEnumerator::DirectoryEnumerator(std::string_view volumePath, unsigned options)
    : options_(options) {
    enter(path::standardized(volumePath), true);
}

void DirectoryEnumerator::enter(std::string folder, bool isStart) {
    Frame frame{std::move(folder), {}, 0};
    readFolder(frame.path, isStart, (options_ & SkipsHiddenFiles) != 0, frame.entries);
    if (!frame.entries.empty())
        stack_.push_back(std::move(frame));
}

std::optional<DirectoryEnumerator::Entry> DirectoryEnumerator::next() {
    if (pendingFolder_) {
        std::string folder = std::move(*pendingFolder_);
        pendingFolder_.reset();
        enter(std::move(folder), false);
    }
    while (!stack_.empty()) {
        Frame& frame = stack_.back();
        if (frame.next == frame.entries.size()) {
            stack_.pop_back();
            continue;
        }
        const DirEntry& e = frame.entries[frame.next++];
        Entry out{childPath(frame.path, e.name), e.kind, false};
        if (e.kind == EntryKind::Directory) {
            out.isPackage = uti::isPackageExtension(path::pathExtension(e.name));
            bool enters = (options_ & SkipsSubdirectoryDescendants) == 0 &&
                          !(out.isPackage && (options_ & SkipsPackageDescendants) != 0);
            if (enters)
                pendingFolder_ = out.path;
        }
        return out;
    }
    return std::nullopt;
}

void DirectoryEnumerator::skipDescendants() {
    pendingFolder_.reset();
}

}  // namespace sysmend
