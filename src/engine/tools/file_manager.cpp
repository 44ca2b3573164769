#include "tools/file_manager.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <system_error>

#include "platform/path.h"
#include "platform/volume.h"

namespace sysmend {
namespace {

using Failures = std::vector<std::pair<std::string, int>>;

// A folder is only ever opened as a folder and never through a link: if the entry was swapped
// for a link (or a file) after it was listed, the open fails instead of landing elsewhere.
constexpr int kFolderFlags = O_RDONLY | O_NOFOLLOW | O_DIRECTORY | O_CLOEXEC;

// How many folders of the branch being removed stay open. Deeper down, the oldest one is
// closed and opened again through ".." on the way back, so a tree of any depth fits in the
// 256 descriptors that macOS gives an application.
constexpr std::size_t kOpenLevels = 16;

RemovalHook& hookSlot() {
    static RemovalHook hook;
    return hook;
}

class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        reset(std::exchange(other.fd_, -1));
        return *this;
    }
    ~UniqueFd() { reset(); }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    void reset(int fd = -1) {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = fd;
    }

  private:
    int fd_ = -1;
};

bool sameFolder(int fd, dev_t dev, ino_t ino) {
    struct stat st {};
    return ::fstat(fd, &st) == 0 && st.st_dev == dev && st.st_ino == ino;
}

struct Listed {
    std::string name;
    bool maybeFolder;  // only these need an fstatat; everything else is unlinked at once
};

// The names in a folder, read through a descriptor of its own so the level's stays as it is.
bool readNames(int folderFd, std::vector<Listed>& names) {
    int fd = ::openat(folderFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    DIR* dir = ::fdopendir(fd);
    if (dir == nullptr) {
        ::close(fd);
        return false;
    }
    errno = 0;
    while (dirent* entry = ::readdir(dir)) {
        std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(
                {std::string(name), entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN});
        }
        errno = 0;
    }
    int readError = errno;
    ::closedir(dir);
    errno = readError;
    return readError == 0;
}

// A folder that was listed and not entered yet, with the identity the listing saw.
struct Folder {
    std::string name;
    dev_t dev;
    ino_t ino;
};

// One folder of the branch being removed.
struct Level {
    Folder folder;
    UniqueFd fd;                   // closed while the level is out of the open window
    bool listed = false;           // `folders` is current; dropped with the descriptor
    std::vector<Folder> folders;   // subfolders listed and not entered yet
    std::set<std::string> stayed;  // entries that failed: never tried again on a new listing
    int error = 0;                 // why this folder cannot be removed; 0 while it can
};

// Removes one entry of a base folder. The walk keeps its own stack of levels, never the C++
// stack, and holds the names of at most kOpenLevels folders at a time.
class Remover {
  public:
    Remover(std::string base, int baseFd) : base_(std::move(base)), baseFd_(baseFd) {}

    Failures remove(const std::string& name) {
        struct stat st {};
        if (::fstatat(baseFd_, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
            failures_.emplace_back(pathOf(name), errno);
        } else if (!S_ISDIR(st.st_mode)) {
            if (int code = unlinkEntry(name, 0))
                failures_.emplace_back(pathOf(name), code);
        } else {
            device_ = st.st_dev;
            enter({name, st.st_dev, st.st_ino});
            walk();
        }
        return std::move(failures_);
    }

  private:
    void walk() {
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (!level.fd) {
                leave();  // lost on the way back up: nothing can reach it any more
                continue;
            }
            if (!level.listed)
                list(level);
            if (level.folders.empty()) {
                leave();
                continue;
            }
            Folder next = std::move(level.folders.back());
            level.folders.pop_back();
            enter(std::move(next));
        }
    }

    void enter(Folder folder) {
        if (int code = hookCode(RemovalStep::Open, folder.name)) {
            fail(folder.name, code);
            return;
        }
        UniqueFd fd(::openat(topFd(), folder.name.c_str(), kFolderFlags));
        if (!fd) {
            if (errno == ENOENT)
                return;  // someone else removed it: it is gone all the same
            fail(folder.name, errno == ELOOP || errno == ENOTDIR ? ESTALE : errno);
            return;
        }
        // The name may now stand for another folder (moved in, or a mount); only the one that
        // was listed is emptied.
        if (!sameFolder(fd.get(), folder.dev, folder.ino)) {
            fail(folder.name, ESTALE);
            return;
        }
        Level& level = levels_.emplace_back();
        level.folder = std::move(folder);
        level.fd = std::move(fd);
        if (levels_.size() > kOpenLevels) {
            Level& old = levels_[levels_.size() - 1 - kOpenLevels];
            old.fd.reset();
            old.listed = false;
            old.folders = {};
        }
    }

    // Unlinks what is not a folder right away and queues the folders.
    void list(Level& level) {
        level.listed = true;
        std::vector<Listed> names;
        if (!readNames(level.fd.get(), names)) {
            level.error = errno;
            return;
        }
        for (const Listed& entry : names) {
            if (level.stayed.count(entry.name) != 0)
                continue;
            struct stat st {};
            if (entry.maybeFolder &&
                ::fstatat(level.fd.get(), entry.name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
                if (errno != ENOENT)
                    fail(entry.name, errno);
            } else if (entry.maybeFolder && S_ISDIR(st.st_mode)) {
                // A mount point below the selection belongs to another volume.
                if (st.st_dev != device_) {
                    fail(entry.name, EXDEV);
                } else {
                    level.folders.push_back({entry.name, st.st_dev, st.st_ino});
                }
            } else if (int code = unlinkEntry(entry.name, 0); code != 0 && code != ENOENT) {
                fail(entry.name, code);
            }
        }
    }

    // Takes the finished top level off the stack and removes its folder if it is empty.
    void leave() {
        Level done = std::move(levels_.back());
        levels_.pop_back();
        if (!levels_.empty() && !levels_.back().fd && !reopenParent(done)) {
            // The folder we came up from is no longer inside the parent we entered it from
            // (it was moved away mid-walk). Climbing on could only land in someone else's
            // folder, so this branch is abandoned up to the nearest level still open.
            levels_.back().error = ESTALE;
            if (done.error == 0)
                done.error = ESTALE;
        }
        done.fd.reset();
        if (done.error != 0) {
            fail(done.folder.name, done.error);
        } else if (int code = unlinkEntry(done.folder.name, AT_REMOVEDIR);
                   code != 0 && code != ENOENT) {
            fail(done.folder.name, code);
        }
    }

    // Opens the new top level again through ".." of the level just left, and accepts it only
    // if it is the very folder that was entered on the way down.
    bool reopenParent(const Level& child) {
        if (!child.fd)
            return false;
        Level& parent = levels_.back();
        UniqueFd fd(::openat(child.fd.get(), "..", kFolderFlags));
        if (!fd || !sameFolder(fd.get(), parent.folder.dev, parent.folder.ino))
            return false;
        parent.fd = std::move(fd);
        return true;
    }

    // Records an entry of the top level (or of the base) that could not be removed: its folder
    // cannot be either.
    void fail(const std::string& name, int code) {
        failures_.emplace_back(pathOf(name), code);
        if (levels_.empty())
            return;
        Level& level = levels_.back();
        level.stayed.insert(name);
        if (level.error == 0)
            level.error = ENOTEMPTY;
    }

    // errno of unlinkat on a name of the top level (or of the base), 0 on success.
    int unlinkEntry(const std::string& name, int flags) {
        if (int code = hookCode(RemovalStep::Unlink, name))
            return code;
        return ::unlinkat(topFd(), name.c_str(), flags) == 0 ? 0 : errno;
    }

    int hookCode(RemovalStep step, const std::string& name) const {
        const RemovalHook& hook = hookSlot();
        return hook ? hook(step, pathOf(name)) : 0;
    }

    int topFd() const { return levels_.empty() ? baseFd_ : levels_.back().fd.get(); }

    // Volume path of a name in the top level, built only when needed: keeping every level's
    // full path would cost memory quadratic in the depth.
    std::string pathOf(const std::string& name) const {
        std::string p = base_;
        for (const Level& level : levels_)
            p = path::appending(p, level.folder.name);
        return path::appending(p, name);
    }

    std::string base_;
    int baseFd_;
    dev_t device_ = 0;
    std::vector<Level> levels_;
    Failures failures_;
};

// The folder that holds the selected path, or an invalid descriptor and `code`. On the live
// system it is opened as the path says; on an inspected volume an absolute link resolves
// against the host's root, not the volume's, so every ancestor below the volume root is
// entered without following links.
UniqueFd openParent(const std::string& parent, int& code) {
    const Volume& volume = Volume::current();
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    UniqueFd fd(::open(volume.hostPath(volume.isLiveSystem() ? parent : "/").c_str(), flags));
    code = fd ? 0 : errno;
    if (volume.isLiveSystem())
        return fd;
    for (const std::string& component : path::components(parent)) {
        if (!fd || component == "/")
            continue;
        UniqueFd next(::openat(fd.get(), component.c_str(), kFolderFlags));
        if (!next) {
            code = errno;
            // Linux answers ENOTDIR for a link that is not followed; name the real cause.
            struct stat st {};
            if (::fstatat(fd.get(), component.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 &&
                S_ISLNK(st.st_mode)) {
                code = ELOOP;
            }
        }
        fd = std::move(next);
    }
    return fd;
}

std::string describe(const std::string& target, const Failures& failures) {
    const auto& [failedPath, code] = failures.front();
    std::string message =
        "Could not remove \"" + failedPath + "\": " + std::generic_category().message(code);
    if (failures.size() > 1) {
        message += " (" + std::to_string(failures.size()) + " items stayed in \"" + target + "\")";
    }
    return message;
}

}  // namespace

bool removePath(std::string_view volumePath, FileError* error) {
    // Textual standardisation first: "..", "." and trailing slashes can then neither climb out
    // of the volume nor turn a selected link into the folder it points to.
    const std::string target = path::standardized("/" + std::string(volumePath));
    Failures failures;
    if (target == "/") {
        failures.emplace_back(target, EPERM);
    } else {
        const std::string parent = path::deletingLastPathComponent(target);
        int code = 0;
        if (UniqueFd base = openParent(parent, code)) {
            failures = Remover(parent, base.get()).remove(path::lastPathComponent(target));
        } else {
            failures.emplace_back(target, code);
        }
    }
    if (failures.empty()) {
        if (error != nullptr)
            *error = FileError{};
        return true;
    }
    if (error != nullptr) {
        error->code = failures.front().second;
        error->path = failures.front().first;
        error->message =
            target == "/" ? "The volume root is never removed" : describe(target, failures);
        error->failures = std::move(failures);
    }
    return false;
}

void setRemovalHook(RemovalHook hook) {
    hookSlot() = std::move(hook);
}

}  // namespace sysmend
