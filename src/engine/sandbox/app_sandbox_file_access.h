// Folder grants: access to a folder outside the sandbox, asked of the user once and kept as a
// security-scoped bookmark in the user defaults (AppSandboxFileAccessPersist).
//
// A grant for a folder covers everything below it. Pages first try startAceess, which never
// asks; the asking path (accessFileURL, askPermissionForUrl) shows a folder chooser through
// the PermissionPanel the GUI installs. Without a panel (the CLI, tests) asking is refused as
// if the user had cancelled. Access, once started, stays open until stopAccess is called for
// the same folder.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_url.h"
#include "platform/plist.h"
#include "platform/values.h"
#include "sandbox/open_save_panel_delegate.h"
#include "settings/user_defaults.h"

namespace sysmend {

// What the folder chooser shows when the user is asked for access.
struct PermissionRequest {
    std::string message;
    std::string prompt;  // the default button's label
    std::string title;
    FileURL directory;  // where the chooser starts: the requested folder's nearest existing one
    const AppSandboxFileAccessOpenSavePanelDelegate& delegate;  // decides what is enabled
};

// The folder chooser, implemented by the GUI.
class PermissionPanel {
  public:
    virtual ~PermissionPanel() = default;

    // Brings the application to the front and runs a modal chooser for one folder: folders
    // only, no new folders, hidden files not shown, extensions not hidden, only what the
    // request's delegate enables selectable. Returns the chosen folder, or nullopt when the
    // user cancelled.
    //
    // May be called from any thread and must return only after the chooser has closed: the
    // implementation runs it on the GUI thread, inline when called there, otherwise by
    // blocking the caller until the GUI thread has run it.
    virtual std::optional<FileURL> runPanel(const PermissionRequest& request) = 0;
};

class AppSandboxFileAccess {
  public:
    using AccessBlock = std::function<void()>;

    // The shared helper, made on first use over the standard user defaults and the main
    // bundle's Info dictionary; later calls return the same object. First call on the main
    // thread, before any other thread may use it.
    static AppSandboxFileAccess& fileAccess();

    // The Info dictionary the shared helper takes the application's name from. Sysmend has no
    // bundle on Linux, so it is {CFBundleName = Sysmend} unless set; set it before the first
    // fileAccess() call.
    static void setMainBundleInfoDictionary(plist::Dictionary info);

    // A helper with its own grant store (tests). The message names the application by the
    // info's "CFBundleDisplayName", else its "CFBundleName", else "(null)".
    AppSandboxFileAccess(UserDefaults& defaults, const plist::Dictionary& infoDictionary);
    AppSandboxFileAccess(const AppSandboxFileAccess&) = delete;
    AppSandboxFileAccess& operator=(const AppSandboxFileAccess&) = delete;

    // The chooser's texts; readable and settable from any thread.
    std::string title() const;
    void setTitle(std::string title);
    std::string message() const;
    void setMessage(std::string message);
    std::string prompt() const;
    void setPrompt(std::string prompt);

    // The chooser (not owned; nullptr removes it). Set on the main thread before any asking.
    void setPermissionPanel(PermissionPanel* panel) { panel_.store(panel); }

    // Asks the user for access to url: the chooser starts at url's nearest existing ancestor
    // and enables only url's folder and its ancestors. Returns the chosen folder, nullopt when
    // cancelled or when no panel is installed. Blocks until the chooser closes.
    std::optional<FileURL> askPermissionForUrl(const FileURL& url);

    // Saves a grant for the folder; nothing is saved, silently, when no bookmark can be made.
    void persistPermissionPath(std::string_view volumePath);
    void persistPermissionURL(const FileURL& url);

    // Runs block with access to url: through a saved grant, else by asking the user. Returns
    // false, without running block or changing any grant, when there is no grant and the
    // user does not give one. With persistPermission a new or stale grant is saved;
    // otherwise, and also when a fresh grant was found, the entry saved under url's own key
    // is removed, so a grant saved for exactly url is used once more and then asked for
    // again. Exceptions from block pass through. Access is left open.
    bool accessFilePath(std::string_view volumePath, const AccessBlock& block,
                        bool persistPermission);
    bool accessFileURL(const FileURL& url, const AccessBlock& block, bool persistPermission);

    // Starts access to url through a saved grant, never asking the user; false when no grant
    // covers url or it cannot be resolved. A stale grant is still used, and saved again only
    // with persistPermission.
    bool startAceess(const FileURL& url, bool persistPermission);

    // Stops the access that the grant covering url gives, if any. Always true.
    bool stopAccess(const FileURL& url);

  private:
    // A saved grant covering a URL: its data (dropped when stale) and what it resolves to.
    struct Grant {
        std::optional<Data> data;
        std::optional<FileURL> allowed;
    };
    Grant grantFor(const FileURL& url) const;

    UserDefaults& defaults_;
    mutable std::mutex textMutex_;
    std::string title_;
    std::string message_;
    std::string prompt_;
    std::atomic<PermissionPanel*> panel_{nullptr};
};

}  // namespace sysmend
