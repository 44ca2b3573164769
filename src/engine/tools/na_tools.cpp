#include "tools/na_tools.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <limits>
#include <mutex>
#include <thread>
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

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Sums everything below a folder, both ways at once: folders add nothing themselves, links
// are measured as links, unreadable folders and entries that vanish add nothing.
//
// Sums do not depend on the order, so the walk is shared: folders waiting to be read sit on
// one stack, and the calling thread reads them depth first. Once the tree has shown itself
// large, a second thread joins and takes folders from the same stack. Each thread holds one
// open folder at a time (opened by path with O_NOFOLLOW, so a folder swapped for a link is not
// entered) and the stack holds only the frontier of the walk, never the whole tree.
class TreeSum {
  public:
    SizePair run(std::string hostPath) {
        pending_.push_back(std::move(hostPath));
        SizePair mine = work();
        if (helper_.joinable())
            helper_.join();
        return {mine.allocated + helperTotals_.allocated, mine.logical + helperTotals_.logical};
    }

  private:
    // Folders read before a second thread is worth starting.
    static constexpr int kFoldersBeforeHelper = 64;

    SizePair work() {
        SizePair totals;
        std::vector<std::string> found;
        for (;;) {
            std::string folder;
            {
                std::unique_lock lock(mutex_);
                wake_.wait(lock, [&] { return !pending_.empty() || busy_ == 0; });
                if (pending_.empty())
                    break;
                folder = std::move(pending_.back());
                pending_.pop_back();
                ++busy_;
            }
            found.clear();
            readFolder(folder, totals, found);
            {
                std::lock_guard lock(mutex_);
                for (std::string& sub : found)
                    pending_.push_back(std::move(sub));
                --busy_;
                if (++foldersRead_ == kFoldersBeforeHelper && !helper_.joinable()) {
                    helper_ = std::thread([this] { helperTotals_ = work(); });
                }
            }
            wake_.notify_all();
        }
        wake_.notify_all();
        return totals;
    }

    static void readFolder(const std::string& folder, SizePair& totals,
                           std::vector<std::string>& subfolders) {
        const int fd = ::open(folder.c_str(), kFolderFlags);
        if (fd < 0)
            return;
        DIR* dir = ::fdopendir(fd);
        if (dir == nullptr) {
            ::close(fd);
            return;
        }
        while (const dirent* e = ::readdir(dir)) {
            if (isDotOrDotDot(e->d_name))
                continue;
            // A folder adds nothing, so the listing's type spares its status.
            if (e->d_type == DT_DIR) {
                subfolders.push_back(folder + '/' + e->d_name);
                continue;
            }
            struct stat st {};
            if (::fstatat(fd, e->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            if (S_ISDIR(st.st_mode)) {
                subfolders.push_back(folder + '/' + e->d_name);
            } else {
                totals.allocated += sizeFromStatus(st, true);
                totals.logical += sizeFromStatus(st, false);
            }
        }
        ::closedir(dir);
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::vector<std::string> pending_;
    int busy_ = 0;
    int foldersRead_ = 0;
    std::thread helper_;
    SizePair helperTotals_;
};

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

SizePair sizesAtPath(std::string_view volumePath) {
    std::string host = Volume::current().hostPath(volumePath);
    struct stat st {};
    if (::lstat(host.c_str(), &st) != 0)
        return {};
    if (!S_ISDIR(st.st_mode))
        return {sizeFromStatus(st, true), sizeFromStatus(st, false)};
    return TreeSum().run(std::move(host));
}

std::int64_t sizeAtPath(std::string_view volumePath, int option) {
    const SizePair sizes = sizesAtPath(volumePath);
    return option != 0 ? sizes.allocated : sizes.logical;
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
