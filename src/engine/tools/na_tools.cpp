#include "tools/na_tools.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "platform/path.h"
#include "platform/uti.h"
#include "platform/volume.h"

namespace sysmend {
namespace {

std::string format(const char* fmt, double value) {
    char buf[64];
    std::snprintf(buf, sizeof buf, fmt, value);
    return buf;
}

std::int64_t sizeFromStatus(const struct stat& st, bool allocated) {
    return allocated ? static_cast<std::int64_t>(st.st_blocks) * 512
                     : static_cast<std::int64_t>(st.st_size);
}

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// The top folders of a branch, up to this many, stay open while their sub-folders are summed,
// so that those are opened relative to them; deeper ones are closed after reading and their
// sub-folders opened by path. A deep tree thus never holds more descriptors than this (a GUI
// app on macOS gets 256).
constexpr std::size_t kMaxOpenFolders = 64;

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Sums the sizes of everything below the folder open at `fd` (which it closes). Folders add
// nothing themselves; links are measured as links. Unreadable folders and entries that vanish
// add nothing.
std::int64_t sumBelow(int fd, std::string hostPath, bool allocated) {
    struct Frame {
        DIR* dir;  // null once closed for depth
        std::string path;
        std::vector<std::string> subfolders;
    };
    std::vector<Frame> stack;
    std::int64_t total = 0;

    auto read = [&](int folderFd, std::string path) {
        DIR* dir = ::fdopendir(folderFd);
        if (dir == nullptr) {
            ::close(folderFd);
            return;
        }
        Frame frame{dir, std::move(path), {}};
        while (const dirent* e = ::readdir(dir)) {
            if (isDotOrDotDot(e->d_name))
                continue;
            // A folder adds nothing, so the listing's type spares its status.
            if (e->d_type == DT_DIR) {
                frame.subfolders.emplace_back(e->d_name);
                continue;
            }
            struct stat st {};
            if (::fstatat(folderFd, e->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            if (S_ISDIR(st.st_mode)) {
                frame.subfolders.emplace_back(e->d_name);
            } else {
                total += sizeFromStatus(st, allocated);
            }
        }
        if (frame.subfolders.empty() || stack.size() >= kMaxOpenFolders) {
            ::closedir(dir);
            frame.dir = nullptr;
        }
        if (!frame.subfolders.empty())
            stack.push_back(std::move(frame));
    };

    read(fd, std::move(hostPath));
    while (!stack.empty()) {
        Frame& top = stack.back();
        if (top.subfolders.empty()) {
            if (top.dir != nullptr)
                ::closedir(top.dir);
            stack.pop_back();
            continue;
        }
        std::string name = std::move(top.subfolders.back());
        top.subfolders.pop_back();
        std::string childPath = top.path + '/' + name;
        int child = top.dir != nullptr ? ::openat(::dirfd(top.dir), name.c_str(), kFolderFlags)
                                       : ::open(childPath.c_str(), kFolderFlags);
        if (child >= 0)
            read(child, std::move(childPath));
    }
    return total;
}

std::string typeForKindTest(std::optional<std::string_view> volumePath, std::string_view type) {
    return volumePath ? fileType(*volumePath) : std::string(type);
}

}  // namespace

// Both formatters choose the unit on the exact count but print a single-precision copy of it,
// so counts just below a unit boundary print as the boundary ("1000.0 MB" for 999,999,999).
std::string recal_size(std::int64_t size) {
    const double exact = static_cast<double>(size);
    const double s = static_cast<float>(size);
    if (exact >= 1e12)
        return format("%.2f TB", s / 1e12);
    if (exact >= 1e9)
        return format("%.2f GB", s / 1e9);
    if (exact >= 1e6)
        return format("%.1f MB", s / 1e6);
    if (exact >= 1e3)
        return format("%.1f KB", s / 1e3);
    if (exact >= 0)
        return format("%.0f Byte", s);
    return "0 KB";
}

std::string recal_size1024(std::int64_t size) {
    const double exact = static_cast<double>(size);
    const float s = static_cast<float>(size);
    // The terabyte branch divides by zero on purpose: such sizes print "inf TB".
    if (exact >= 1e12)
        return format("%.2f TB", std::numeric_limits<float>::infinity());
    if (exact >= 1073741824.0)
        return format("%.2f GB ", s / 1073741824.0f);
    if (exact >= 1048576.0)
        return format("%.2f MB ", s / 1048576.0f);
    if (exact >= 1024.0)
        return format("%.1f KB ", s / 1024.0f);
    if (exact >= 0)
        return format("%.0f Byte ", s);
    return "0 KB";
}

std::int64_t sizeAtPath(std::string_view volumePath, int option) {
    const bool allocated = option != 0;
    std::string host = Volume::current().hostPath(volumePath);
    struct stat st {};
    if (::lstat(host.c_str(), &st) != 0)
        return 0;
    if (!S_ISDIR(st.st_mode))
        return sizeFromStatus(st, allocated);
    int fd = ::open(host.c_str(), kFolderFlags);
    if (fd < 0)
        return 0;
    return sumBelow(fd, std::move(host), allocated);
}

std::int64_t fileSize(std::string_view volumePath) {
    struct stat st {};
    if (::lstat(Volume::current().hostPath(volumePath).c_str(), &st) != 0)
        return 0;
    return st.st_size;
}

std::string fileType(std::string_view volumePath) {
    std::optional<std::string> type = uti::typeOfFile(volumePath);
    if (type && uti::conformsTo(*type, uti::kFolder))
        return *type;
    return uti::preferredIdentifierForExtension(path::pathExtension(volumePath));
}

Date lastAssessTime(std::string_view volumePath) {
    struct stat st {};
    if (::lstat(Volume::current().hostPath(volumePath).c_str(), &st) != 0) {
        return std::chrono::system_clock::now();
    }
    // The modification time was once compared with this one, but the status-change time is
    // what has always been returned, and the lists sort by it.
    auto since =
        std::chrono::seconds(st.st_ctim.tv_sec) + std::chrono::nanoseconds(st.st_ctim.tv_nsec);
    return Date(std::chrono::duration_cast<Date::duration>(since));
}

bool isPicFile(std::optional<std::string_view> volumePath, std::string_view type) {
    return uti::conformsTo(typeForKindTest(volumePath, type), uti::kImage);
}

bool isMessageFile(std::optional<std::string_view> volumePath, std::string_view type) {
    return uti::conformsTo(typeForKindTest(volumePath, type), uti::kEmailMessage);
}

bool isMovieFile(std::optional<std::string_view> volumePath, std::string_view type) {
    return uti::conformsTo(typeForKindTest(volumePath, type), uti::kMovie);
}

bool isAudioFile(std::optional<std::string_view> volumePath, std::string_view type) {
    return uti::conformsTo(typeForKindTest(volumePath, type), uti::kAudio);
}

bool isArchiveFile(std::optional<std::string_view> volumePath, std::string_view type) {
    return uti::conformsTo(typeForKindTest(volumePath, type), uti::kArchive);
}

bool isMailBox(std::optional<std::string_view> volumePath, std::string_view type) {
    return uti::conformsTo(typeForKindTest(volumePath, type), uti::kMailbox);
}

bool isFolder(std::optional<std::string_view> volumePath, std::string_view type) {
    std::optional<std::string> standard;
    if (volumePath)
        standard = path::standardized(*volumePath);
    return typeForKindTest(standard, type) == uti::kFolder;
}

std::string stringFromInt(int value) {
    return std::to_string(value);
}

bool isAliasFile(std::string_view volumePath) {
    if (volumePath.empty())
        return false;
    const std::string host = Volume::current().hostPath(volumePath);
    struct stat st {};
    if (::lstat(host.c_str(), &st) != 0)
        return false;
    if (S_ISLNK(st.st_mode))
        return true;
    if (!S_ISREG(st.st_mode))
        return false;
    const int fd = ::open(host.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return false;
    char head[12];
    const bool whole = ::read(fd, head, sizeof head) == static_cast<ssize_t>(sizeof head);
    ::close(fd);
    return whole && std::memcmp(head, "book", 4) == 0 && std::memcmp(head + 8, "mark", 4) == 0;
}

bool isApplicationBundleName(std::string_view path) {
    return uti::conformsTo(uti::preferredIdentifierForExtension(path::pathExtension(path)),
                           uti::kApplicationBundle);
}

}  // namespace sysmend
