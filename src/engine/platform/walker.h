// Folder listing and deep enumeration of volume paths, the portable stand-in for the file
// manager's directory listing and enumerator.
//
// Order: entries of a folder come sorted by the bytes of their names ("B" before "a", "a"
// before "a.b"). The platform's own order depends on the file system; callers that depend on
// an order depend on this one, which is the same on every disk and every run.
//
// Symbolic links inside a folder are reported as links and never followed. The folder named by
// the caller is opened like any path, so a link there is followed. Neither function holds a
// descriptor after it returns; a walker object holds none between calls.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sysmend {

enum class EntryKind { Directory, File, Symlink, Other };

struct DirEntry {
    std::string name;
    EntryKind kind = EntryKind::Other;

    bool operator==(const DirEntry&) const = default;
};

std::ostream& operator<<(std::ostream& os, EntryKind kind);
std::ostream& operator<<(std::ostream& os, const DirEntry& entry);

// The entries of one folder, hidden ones included, without "." and "..", sorted as above. A
// missing or unreadable folder (or a file) gives an empty list and sets *ok to false; *ok is
// true otherwise.
std::vector<DirEntry> contentsOfDirectory(std::string_view volumePath, bool* ok = nullptr);

// Depth-first, pre-order walk below a folder: each folder is yielded before its contents, the
// contents of a folder in the sorted order. The start folder itself is not yielded; it is read
// when the object is made. A missing or unreadable start folder yields nothing; a folder below
// it that cannot be read is yielded and has no contents, and the walk goes on.
//
// Memory holds the names in each folder on the current branch, never the whole tree.
// Not thread-safe: one walk belongs to one thread.
class DirectoryEnumerator {
  public:
    // The values of the platform's enumeration options, so that callers can pass 4 or 6.
    enum Option : unsigned {
        SkipsSubdirectoryDescendants = 1,  // yield the start folder's entries only
        SkipsPackageDescendants = 2,       // yield packages, do not enter them
        SkipsHiddenFiles = 4,  // names starting with "." are neither yielded nor entered
    };

    struct Entry {
        std::string path;  // volume path: the start path (standardised) + "/" + names
        EntryKind kind = EntryKind::Other;
        bool isPackage = false;  // a folder whose extension is a package type

        bool operator==(const Entry&) const = default;
    };

    explicit DirectoryEnumerator(std::string_view volumePath, unsigned options = 0);

    // The next entry, or nullopt when the walk is over.
    std::optional<Entry> next();

    // Do not enter the folder that next() returned last (no effect for other kinds).
    void skipDescendants();

  private:
    struct Frame {
        std::string path;
        std::vector<DirEntry> entries;
        std::size_t next = 0;
    };

    void enter(std::string folder, bool isStart);

    unsigned options_;
    std::vector<Frame> stack_;
    std::optional<std::string> pendingFolder_;  // last yielded folder, entered on the next call
};

}  // namespace sysmend
