#include "platform/file_url.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ostream>
#include <utility>

#include "platform/path.h"
#include "platform/volume.h"

namespace sysmend {
namespace {

// The characters a URL path may hold unescaped: RFC 3986 unreserved and sub-delims, ':', '@'
// and the separator. Foundation escapes every other byte of a file path.
bool isPathCharacter(unsigned char c) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
        return true;
    constexpr std::string_view kOthers = "-._~!$&'()*+,;=:@/";
    return kOthers.find(static_cast<char>(c)) != std::string_view::npos;
}

bool isDirectoryOnVolume(const std::string& volumePath) {
    struct stat st {};
    return ::stat(Volume::current().hostPath(volumePath).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string absoluteVolumePath(std::string_view p) {
    std::string out = p.empty() || p.front() != '/' ? "/" + std::string(p) : std::string(p);
    while (out.size() > 1 && out.back() == '/')
        out.pop_back();
    return out;
}

// The same limit as the kernel's MAXSYMLINKS on macOS.
constexpr int kMaxLinks = 32;

}  // namespace

FileURL::FileURL(std::string path, bool isDirectory)
    : path_(std::move(path)), isDirectory_(isDirectory) {}

FileURL FileURL::fileURLWithPath(std::string_view volumePath) {
    std::string p = absoluteVolumePath(volumePath);
    bool directory = p == "/" || volumePath.back() == '/' || isDirectoryOnVolume(p);
    return FileURL(std::move(p), directory);
}

FileURL FileURL::fileURLWithPath(std::string_view volumePath, bool isDirectory) {
    std::string p = absoluteVolumePath(volumePath);
    return FileURL(p, isDirectory || p == "/");
}

std::string FileURL::absoluteString() const {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out = "file://";
    for (unsigned char c : path_) {
        if (isPathCharacter(c)) {
            out.push_back(static_cast<char>(c));
        } else {
            out.push_back('%');
            out.push_back(kHex[c >> 4]);
            out.push_back(kHex[c & 0xF]);
        }
    }
    if (isDirectory_ && path_ != "/")
        out.push_back('/');
    return out;
}

std::vector<std::string> FileURL::pathComponents() const {
    return path::components(path_);
}

FileURL FileURL::URLByStandardizingPath() const {
    return FileURL(path::standardized(path_), isDirectory_);
}

FileURL FileURL::URLByResolvingSymlinksInPath() const {
    const Volume& volume = Volume::current();
    // Components still to walk, the next one last, so that a link's target can be pushed in
    // front of the rest.
    std::vector<std::string> pending = path::components(path_);
    std::reverse(pending.begin(), pending.end());
    std::string resolved = "/";
    bool missing = false;
    int links = 0;
    while (!pending.empty()) {
        std::string name = std::move(pending.back());
        pending.pop_back();
        if (name == "/" || name == ".")
            continue;
        if (name == "..") {
            resolved = path::deletingLastPathComponent(resolved);
            continue;
        }
        std::string next = path::appending(resolved, name);
        struct stat st {};
        // Nothing below a missing component can exist, so the rest is kept as written.
        if (missing || ::lstat(volume.hostPath(next).c_str(), &st) != 0) {
            missing = true;
            resolved = std::move(next);
            continue;
        }
        if (!S_ISLNK(st.st_mode)) {
            resolved = std::move(next);
            continue;
        }
        if (++links > kMaxLinks)
            return *this;
        std::string target(static_cast<std::size_t>(st.st_size > 0 ? st.st_size : 4096), '\0');
        ssize_t n = ::readlink(volume.hostPath(next).c_str(), target.data(), target.size());
        if (n < 0)
            return *this;
        target.resize(static_cast<std::size_t>(n));
        // An absolute target names a path on the volume; a relative one is taken from the
        // link's folder, which `resolved` still is.
        if (!target.empty() && target.front() == '/')
            resolved = "/";
        std::vector<std::string> parts = path::components(target);
        pending.insert(pending.end(), parts.rbegin(), parts.rend());
    }
    bool directory = resolved == "/" || (missing ? isDirectory_ : isDirectoryOnVolume(resolved));
    return FileURL(std::move(resolved), directory);
}

FileURL FileURL::URLByDeletingLastPathComponent() const {
    return FileURL(path::deletingLastPathComponent(path_), true);
}

void PrintTo(const FileURL& url, std::ostream* os) {
    *os << url.absoluteString();
}

}  // namespace sysmend
