#include "sandbox/app_sandbox_file_access.h"

#include <sys/stat.h>

#include <utility>

#include "platform/path.h"
#include "platform/volume.h"
#include "sandbox/app_sandbox_file_access_persist.h"
#include "sandbox/bookmarks.h"

namespace sysmend {
namespace {

plist::Dictionary& mainBundleInfo() {
    static plist::Dictionary info = [] {
        plist::Dictionary d;
        d.set("CFBundleName", "Sysmend");
        return d;
    }();
    return info;
}

std::string applicationName(const plist::Dictionary& info) {
    for (const char* key : {"CFBundleDisplayName", "CFBundleName"}) {
        const plist::Value* value = info.find(key);
        if (value != nullptr && value->asString() != nullptr)
            return *value->asString();
    }
    return "(null)";  // how the message's format prints a missing name
}

bool existsOnVolume(const std::string& volumePath) {
    struct stat st {};
    return ::stat(Volume::current().hostPath(volumePath).c_str(), &st) == 0;
}

// Grants are looked up by the URL that the chooser would hand back for the same folder.
FileURL canonical(const FileURL& url) {
    return url.URLByStandardizingPath().URLByResolvingSymlinksInPath();
}

}  // namespace

AppSandboxFileAccess& AppSandboxFileAccess::fileAccess() {
    static AppSandboxFileAccess shared(UserDefaults::standardUserDefaults(), mainBundleInfo());
    return shared;
}

void AppSandboxFileAccess::setMainBundleInfoDictionary(plist::Dictionary info) {
    mainBundleInfo() = std::move(info);
}

AppSandboxFileAccess::AppSandboxFileAccess(UserDefaults& defaults,
                                           const plist::Dictionary& infoDictionary)
    : defaults_(defaults),
      title_("Allow Access"),
      message_(applicationName(infoDictionary) +
               " needs to access this path to continue. Click Allow to continue."),
      prompt_("Allow") {}

std::string AppSandboxFileAccess::title() const {
    std::lock_guard lock(textMutex_);
    return title_;
}

void AppSandboxFileAccess::setTitle(std::string title) {
    std::lock_guard lock(textMutex_);
    title_ = std::move(title);
}

std::string AppSandboxFileAccess::message() const {
    std::lock_guard lock(textMutex_);
    return message_;
}

void AppSandboxFileAccess::setMessage(std::string message) {
    std::lock_guard lock(textMutex_);
    message_ = std::move(message);
}

std::string AppSandboxFileAccess::prompt() const {
    std::lock_guard lock(textMutex_);
    return prompt_;
}

void AppSandboxFileAccess::setPrompt(std::string prompt) {
    std::lock_guard lock(textMutex_);
    prompt_ = std::move(prompt);
}

std::optional<FileURL> AppSandboxFileAccess::askPermissionForUrl(const FileURL& url) {
    auto delegate = AppSandboxFileAccessOpenSavePanelDelegate::initWithFileURL(url);
    std::string start = url.path();
    while (start.size() >= 2 && !existsOnVolume(start))
        start = path::deletingLastPathComponent(start);
    PermissionPanel* panel = panel_.load();
    if (panel == nullptr)
        return std::nullopt;
    return panel->runPanel(
        {message(), prompt(), title(), FileURL::fileURLWithPath(start), delegate});
}

void AppSandboxFileAccess::persistPermissionPath(std::string_view volumePath) {
    persistPermissionURL(FileURL::fileURLWithPath(volumePath));
}

void AppSandboxFileAccess::persistPermissionURL(const FileURL& url) {
    if (auto data = bookmarkBackend().create(url))
        AppSandboxFileAccessPersist::setBookmarkData(*data, url, defaults_);
}

AppSandboxFileAccess::Grant AppSandboxFileAccess::grantFor(const FileURL& url) const {
    Grant grant;
    grant.data = AppSandboxFileAccessPersist::bookmarkDataForURL(url, defaults_);
    if (grant.data) {
        bool stale = false;
        grant.allowed = bookmarkBackend().resolve(*grant.data, &stale);
        if (stale)
            grant.data.reset();
    }
    return grant;
}

bool AppSandboxFileAccess::accessFilePath(std::string_view volumePath, const AccessBlock& block,
                                          bool persistPermission) {
    return accessFileURL(FileURL::fileURLWithPath(volumePath), block, persistPermission);
}

bool AppSandboxFileAccess::accessFileURL(const FileURL& url, const AccessBlock& block,
                                         bool persistPermission) {
    FileURL requested = canonical(url);
    Grant grant = grantFor(requested);
    if (!grant.allowed) {
        grant.allowed = askPermissionForUrl(requested);
        if (!grant.allowed)
            return false;
    }
    // Data that was found but did not resolve still counts as found here: the new choice is
    // then not saved, and the requested URL's own entry is removed.
    if (persistPermission && !grant.data) {
        persistPermissionURL(*grant.allowed);
    } else {
        AppSandboxFileAccessPersist::removeBookmarkData(requested, defaults_);
    }
    bookmarkBackend().startAccessing(*grant.allowed);
    block();
    return true;
}

bool AppSandboxFileAccess::startAceess(const FileURL& url, bool persistPermission) {
    Grant grant = grantFor(canonical(url));
    if (!grant.allowed)
        return false;
    // Resolved but without data means the data was stale.
    if (persistPermission && !grant.data)
        persistPermissionURL(*grant.allowed);
    bookmarkBackend().startAccessing(*grant.allowed);
    return true;
}

bool AppSandboxFileAccess::stopAccess(const FileURL& url) {
    if (auto allowed = grantFor(canonical(url)).allowed)
        bookmarkBackend().stopAccessing(*allowed);
    return true;
}

}  // namespace sysmend
