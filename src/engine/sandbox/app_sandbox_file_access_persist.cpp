#include "sandbox/app_sandbox_file_access_persist.h"

namespace sysmend {

std::string AppSandboxFileAccessPersist::keyForBookmarkDataForURL(const FileURL& url) {
    return "bd_" + url.absoluteString();
}

std::optional<Data> AppSandboxFileAccessPersist::bookmarkDataForURL(const FileURL& url,
                                                                    UserDefaults& defaults) {
    for (FileURL candidate = url; candidate.path().size() >= 2;
         candidate = candidate.URLByDeletingLastPathComponent()) {
        if (auto data = defaults.dataForKey(keyForBookmarkDataForURL(candidate)))
            return data;
    }
    return std::nullopt;
}

void AppSandboxFileAccessPersist::setBookmarkData(const Data& data, const FileURL& url,
                                                  UserDefaults& defaults) {
    defaults.setObject(plist::Value(data), keyForBookmarkDataForURL(url));
}

void AppSandboxFileAccessPersist::removeBookmarkData(const FileURL& url, UserDefaults& defaults) {
    defaults.removeObjectForKey(keyForBookmarkDataForURL(url));
}

}  // namespace sysmend
