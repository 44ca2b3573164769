#include "platform/volume.h"

#include <dirent.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include "platform/path.h"

namespace sysmend {
namespace {

std::string absoluteRoot(std::string root) {
    if (root.empty())
        root = "/";
    if (root.front() != '/') {
        std::vector<char> buf(4096);
        if (getcwd(buf.data(), buf.size()) != nullptr)
            root = path::appending(buf.data(), root);
    }
    return path::standardized(root);
}

bool isDirectory(const std::string& hostPath) {
    struct stat st {};
    return ::stat(hostPath.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::unique_ptr<Volume>& currentSlot() {
    static std::unique_ptr<Volume> slot;
    return slot;
}

const char* env(const char* name) {
    const char* v = std::getenv(name);
    return (v != nullptr && *v != '\0') ? v : nullptr;
}

}  // namespace

std::string passwordDatabaseHome() {
    struct passwd* pw = ::getpwuid(::getuid());
    if (pw == nullptr || pw->pw_dir == nullptr)
        return "/";
    return pw->pw_dir;
}

Volume::Volume(std::string root, std::string home)
    : root_(absoluteRoot(std::move(root))), home_(path::standardized(home.empty() ? "/" : home)) {
    if (home_.front() != '/')
        home_ = "/" + home_;
}

std::optional<std::string> Volume::resolvingLinks(std::string_view volumePath) const {
    constexpr int kMaxLinks = 32;  // as MAXSYMLINKS on macOS
    // Components still to walk, the next one last.
    std::vector<std::string> pending;
    const auto push = [&pending](std::string_view p) {
        std::vector<std::string> parts = path::components(p);
        std::erase(parts, "/");  // slash markers: an absolute target is told by its first byte
        pending.insert(pending.end(), parts.rbegin(), parts.rend());
    };
    push(volumePath);
    std::string resolved = "/";
    int links = 0;
    while (!pending.empty()) {
        const std::string part = std::move(pending.back());
        pending.pop_back();
        if (part == ".")
            continue;
        if (part == "..") {
            resolved = path::deletingLastPathComponent(resolved);
            continue;
        }
        std::string next = path::appending(resolved, part);
        const std::string host = hostPath(next);
        struct stat st {};
        if (::lstat(host.c_str(), &st) != 0)
            return std::nullopt;
        if (!S_ISLNK(st.st_mode)) {
            resolved = std::move(next);
            continue;
        }
        if (++links > kMaxLinks)
            return std::nullopt;
        std::vector<char> target(static_cast<std::size_t>(st.st_size > 0 ? st.st_size : 1024) + 1);
        const ssize_t n = ::readlink(host.c_str(), target.data(), target.size());
        if (n <= 0 || static_cast<std::size_t>(n) >= target.size())
            return std::nullopt;
        const std::string_view to(target.data(), static_cast<std::size_t>(n));
        if (to.front() == '/')
            resolved = "/";
        push(to);
    }
    return resolved;
}

Volume Volume::fromEnvironment() {
    return fromOptions("", "");
}

Volume Volume::fromOptions(std::string root, std::string home) {
    if (root.empty()) {
        const char* r = env("SYSMEND_ROOT");
        root = r != nullptr ? r : "/";
    }
    if (home.empty()) {
        const char* h = env("SYSMEND_HOME");
        if (h != nullptr)
            home = h;
    }
    Volume volume(root, home.empty() ? passwordDatabaseHome() : home);
    if (home.empty() && !volume.isLiveSystem() && !isDirectory(volume.hostPath(volume.home()))) {
        // Inspecting someone else's disk: the host user's home is meaningless there, so take
        // the volume's one user when there is exactly one.
        std::vector<std::string> users;
        std::string usersHost = volume.hostPath("/Users");
        if (DIR* dir = ::opendir(usersHost.c_str())) {
            while (dirent* e = ::readdir(dir)) {
                std::string name = e->d_name;
                if (name.empty() || name[0] == '.' || name == "Shared")
                    continue;
                if (isDirectory(path::appending(usersHost, name)))
                    users.push_back(name);
            }
            ::closedir(dir);
        }
        if (users.size() == 1)
            volume.home_ = "/Users/" + users.front();
    }
    return volume;
}

std::string Volume::hostPath(std::string_view volumePath) const {
    if (root_ == "/") {
        if (!volumePath.empty() && volumePath.front() == '/')
            return std::string(volumePath);
        return "/" + std::string(volumePath);
    }
    // Resolve "." and ".." as text first, clamped at the volume's "/": a path taken from a file
    // on the inspected disk ("/Users/a/../../../etc") must never reach the host's own files.
    std::string clean = path::standardized("/" + std::string(volumePath));
    return path::appending(root_, clean);
}

std::optional<std::string> Volume::volumePath(std::string_view hostPath) const {
    if (root_ == "/")
        return std::string(hostPath);
    if (hostPath.substr(0, root_.size()) != root_)
        return std::nullopt;
    std::string_view rest = hostPath.substr(root_.size());
    if (rest.empty())
        return std::string("/");
    if (rest.front() != '/')
        return std::nullopt;
    return std::string(rest);
}

const Volume& Volume::current() {
    auto& slot = currentSlot();
    if (!slot)
        slot = std::make_unique<Volume>(fromEnvironment());
    return *slot;
}

void Volume::setCurrent(Volume volume) {
    currentSlot() = std::make_unique<Volume>(std::move(volume));
}

ScopedVolume::ScopedVolume(Volume volume) : previous_(Volume::current()) {
    Volume::setCurrent(std::move(volume));
}

ScopedVolume::~ScopedVolume() {
    Volume::setCurrent(std::move(previous_));
}

}  // namespace sysmend
