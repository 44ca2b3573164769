// The folder grants in the user defaults: one entry per granted folder, its bookmark data
// under "bd_" + the folder URL's absolute string ("bd_file:///Users/alice/Library/").
//
// The key is the URL's string exactly as it comes (a directory URL's trailing slash
// included), so a grant saved for a directory URL is found only through a directory URL.
// Every operation works on the given defaults, the application's standard ones unless a test
// passes its own; the defaults are thread-safe and so is this class.
#pragma once

#include <optional>
#include <string>

#include "platform/file_url.h"
#include "platform/values.h"
#include "settings/user_defaults.h"

namespace sysmend {

class AppSandboxFileAccessPersist {
  public:
    AppSandboxFileAccessPersist() = delete;

    static std::string keyForBookmarkDataForURL(const FileURL& url);

    // The data saved for the URL or for its nearest saved ancestor; nullopt when none is. The
    // root folder's own entry is never consulted, so a grant for "/" covers nothing.
    static std::optional<Data> bookmarkDataForURL(
        const FileURL& url, UserDefaults& defaults = UserDefaults::standardUserDefaults());

    static void setBookmarkData(const Data& data, const FileURL& url,
                                UserDefaults& defaults = UserDefaults::standardUserDefaults());

    // Removes the entry under the URL's own key; its ancestors' entries stay.
    static void removeBookmarkData(const FileURL& url,
                                   UserDefaults& defaults = UserDefaults::standardUserDefaults());
};

}  // namespace sysmend
