// Security-scoped bookmarks: the four operations the folder grants need, behind an interface.
//
// On macOS they are the platform's bookmark and security-scope calls. Elsewhere the portable
// backend stands in: its data records the folder's volume path and its (device, inode), so a
// folder that was deleted and made again resolves as stale, and a folder that is gone does
// not resolve at all. It restricts no access, so starting and stopping do nothing.
#pragma once

#include <optional>

#include "platform/file_url.h"
#include "platform/values.h"

namespace sysmend {

class BookmarkBackend {
  public:
    virtual ~BookmarkBackend() = default;

    // Bookmark data for the URL, or nullopt when none can be made (the path does not exist).
    // The data is plain bytes that survive being stored in the user defaults.
    virtual std::optional<Data> create(const FileURL& url) = 0;

    // The URL that the data points to now, or nullopt when the data cannot be resolved.
    // *isStale is set to whether the data should be made again; it is left alone when
    // nothing resolves.
    virtual std::optional<FileURL> resolve(const Data& data, bool* isStale) = 0;

    // Opens access to the URL's file or folder; true when access was granted. Access stays
    // open until stopAccessing is called with the same URL.
    virtual bool startAccessing(const FileURL& url) = 0;
    virtual void stopAccessing(const FileURL& url) = 0;
};

// Bookmarks as {path, device, inode} in a binary property list. Stateless and thread-safe.
class PortableBookmarkBackend final : public BookmarkBackend {
  public:
    std::optional<Data> create(const FileURL& url) override;
    std::optional<FileURL> resolve(const Data& data, bool* isStale) override;
    bool startAccessing(const FileURL& url) override;
    void stopAccessing(const FileURL& url) override;
};

// The backend the folder grants use: the installed one, else the portable one.
BookmarkBackend& bookmarkBackend();

// Installs a backend (not owned; it must outlive its installation) and returns the one that
// was installed before; nullptr goes back to the portable backend. Install before any thread
// uses bookmarks, or in tests through ScopedBookmarkBackend.
BookmarkBackend* setBookmarkBackend(BookmarkBackend* backend);

// Installs a backend for the lifetime of the object and then restores the previous one.
class ScopedBookmarkBackend {
  public:
    explicit ScopedBookmarkBackend(BookmarkBackend& backend)
        : previous_(setBookmarkBackend(&backend)) {}
    ~ScopedBookmarkBackend() { setBookmarkBackend(previous_); }
    ScopedBookmarkBackend(const ScopedBookmarkBackend&) = delete;
    ScopedBookmarkBackend& operator=(const ScopedBookmarkBackend&) = delete;

  private:
    BookmarkBackend* previous_;
};

}  // namespace sysmend
