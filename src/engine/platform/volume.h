// The inspected macOS volume.
//
// The engine speaks in volume paths ("/Applications/Foo.app", "/Users/alice/Library"), the
// paths as the Mac sees them. A Volume maps them to host paths for I/O: on macOS the root is
// "/" and the two are the same; on Linux the root is a folder holding a Mac volume's tree.
// Everything the user sees, every JSON field and every comparison with a signature string
// uses volume paths.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sysmend {

class Volume {
  public:
    // root: host folder of the volume's "/" (made absolute, no trailing slash but "/").
    // home: the current user's home folder as a volume path.
    Volume(std::string root, std::string home);

    // The volume from the environment: SYSMEND_ROOT (default "/") and SYSMEND_HOME. Without
    // SYSMEND_HOME the home folder is the password database's entry for the current user id
    // (never $HOME, which is a sandbox container's on macOS); when the root is not "/" and
    // that folder does not exist on the volume but exactly one user folder stands in /Users
    // (besides "Shared"), that one is taken.
    static Volume fromEnvironment();

    // Like fromEnvironment, with explicit values taking precedence (the CLI's --root and
    // --home); empty strings mean "not given".
    static Volume fromOptions(std::string root, std::string home);

    const std::string& root() const { return root_; }
    const std::string& home() const { return home_; }
    bool isLiveSystem() const { return root_ == "/"; }

    // Host path for a volume path. A relative volume path is taken from "/".
    std::string hostPath(std::string_view volumePath) const;

    // Volume path for a host path below the root; nullopt for a host path outside it.
    std::optional<std::string> volumePath(std::string_view hostPath) const;

    // The volume path with every symbolic link in it followed the way the Mac would follow
    // it, but inside this volume: an absolute target is a volume path, a relative one is taken
    // from the link's folder, and ".." stops at the volume's "/", so the answer never leads
    // off the volume (where hostPath would, for an absolute link, on an inspected volume).
    // nullopt when a component is missing (a dangling link) or after 32 links (a loop).
    std::optional<std::string> resolvingLinks(std::string_view volumePath) const;

    // The volume that the engine's free functions (sizes, types, scans) work on. Set once at
    // start-up by the application or the CLI, before any scan thread starts; tests swap it
    // with ScopedVolume. Reading it from scan threads is safe as long as nobody sets it while
    // a scan runs.
    static const Volume& current();
    static void setCurrent(Volume volume);

  private:
    std::string root_;
    std::string home_;
};

// Makes a volume current for the lifetime of the object and restores the previous one.
class ScopedVolume {
  public:
    explicit ScopedVolume(Volume volume);
    ~ScopedVolume();
    ScopedVolume(const ScopedVolume&) = delete;
    ScopedVolume& operator=(const ScopedVolume&) = delete;

  private:
    Volume previous_;
};

// The home folder of the current user id in the host's password database.
std::string passwordDatabaseHome();

}  // namespace sysmend
