// Where the application with a given bundle identifier is installed: the portable stand-in for
// the workspace's absolutePathForAppBundleWithIdentifier, answered from an index of
// CFBundleIdentifier -> bundle path built over the application folders of the current volume.
//
// The folders are walked in this order, and the first bundle met with an identifier wins:
//   1. "/Applications", with every sub-folder (so "/Applications/Utilities" too);
//   2. "/System/Applications", with its sub-folders ("Utilities" there since macOS 10.15);
//   3. the home folder's "Applications".
// Inside a folder the walker's sorted pre-order decides. Application bundles are indexed and
// never entered, so helper applications nested in a bundle are not found; other folders are
// entered, symbolic links to folders are not followed. A symbolic link named as an application
// bundle ("Linked.app") is followed inside the volume (Volume::resolvingLinks) and indexed as
// the bundle it leads to, as the system registers the real bundle. A bundle's identifier is the string
// "CFBundleIdentifier" of its "Contents/Info.plist" (or, for a shallow bundle, "Info.plist");
// a bundle without one is not indexed.
//
// Identifiers are compared ignoring ASCII case, as LaunchServices compares them.
//
// Build one index per scan (installing an application during a scan is not noticed). A built
// index is read-only, so any number of threads may query it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace sysmend {

class AppIndex {
  public:
    // An empty index, which finds nothing.
    AppIndex() = default;

    // Walks the folders above on Volume::current(). Missing folders and unreadable bundles are
    // skipped quietly.
    static AppIndex build();

    // The volume path of the bundle, or nullopt when no indexed bundle has the identifier.
    // The identifier is taken as given: callers trim it.
    std::optional<std::string> absolutePathForAppBundleWithIdentifier(
        std::string_view bundleId) const;

    std::size_t size() const { return paths_.size(); }

  private:
    void addBundlesBelow(const std::string& folder);

    std::unordered_map<std::string, std::string> paths_;  // lower-cased identifier -> bundle
};

}  // namespace sysmend
