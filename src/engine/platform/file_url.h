// A file URL over a volume path (NSURL for the "file" scheme).
//
// The URL keeps the path as given (only trailing slashes are dropped) and whether it names a
// directory; a directory URL's absolute string ends in "/", as Foundation's does. Folder grants
// are stored under that string, so its exact form is part of the persisted format.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace sysmend {

class FileURL {
  public:
    // The URL of a volume path. Without isDirectory, a path ending in "/" is a directory and
    // any other path is one when a directory (or a link to one) stands there on the current
    // volume. A relative path is taken from the volume's root; "" is the root.
    static FileURL fileURLWithPath(std::string_view volumePath);
    static FileURL fileURLWithPath(std::string_view volumePath, bool isDirectory);

    // "file://" + the path with every byte outside the URL path characters percent-encoded
    // (spaces, '%', '#', '?', brackets, non-ASCII UTF-8 bytes...) + "/" for a directory.
    std::string absoluteString() const;

    // The volume path, without a trailing slash (but "/").
    const std::string& path() const { return path_; }
    bool hasDirectoryPath() const { return isDirectory_; }

    // "/" first, then the names; a directory's trailing slash adds nothing.
    std::vector<std::string> pathComponents() const;

    // Empty and "." components removed, ".." resolved textually; the directory flag is kept.
    FileURL URLByStandardizingPath() const;

    // Symbolic links resolved component by component inside the volume: an absolute link
    // target "/x" is the volume path "/x", never the host's. Components that do not exist are
    // kept as written, so a missing path comes back unchanged. After 32 links (a loop) the URL
    // is returned as it was.
    FileURL URLByResolvingSymlinksInPath() const;

    // The parent folder, as a directory URL. The root's parent is the root.
    FileURL URLByDeletingLastPathComponent() const;

    bool operator==(const FileURL&) const = default;

  private:
    FileURL(std::string path, bool isDirectory);

    std::string path_;
    bool isDirectory_ = false;
};

// Lets GoogleTest print URLs as their absolute string.
void PrintTo(const FileURL& url, std::ostream* os);

}  // namespace sysmend
