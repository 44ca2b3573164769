// What the App Viewer shows about one application bundle: its Info.plist facts, its size and
// the sandbox entitlements of its main executable, as one group of read-only key/value rows.
//
// An NAAppInformation is made once per listed bundle, turned into its group at once and then
// dropped; the result page keeps only the group. Objects are not thread-safe, but separate
// objects may be built on separate threads at the same time.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "model/na_fileobj.h"
#include "model/na_group_obj.h"

namespace sysmend {

// One row of an application's information: the fact's name or an entitlement's title on the
// left, the fact or the entitlement's description on the right. Of the inherited file fields
// only the size is set, on the size row.
class NAAppSingleInformation : public NAFileobj {
  public:
    NAAppSingleInformation(std::string key, std::string value);
    static std::shared_ptr<NAAppSingleInformation> initWithKeyAndValue(std::string key,
                                                                       std::string value);

    const std::string& key_title() const { return key_title_; }
    void setKey_title(std::string key) { key_title_ = std::move(key); }
    const std::string& value_title() const { return value_title_; }
    void setValue_title(std::string value) { value_title_ = std::move(value); }

    // "key: value".
    void print(std::ostream& out) const override;

  private:
    std::string key_title_;
    std::string value_title_;
};

// The information of the bundle at a volume path. The inherited fileSize holds the bundle's
// size in bytes. Text fields are nullopt where the Info.plist lacks their key; a value that is
// not a string is shown as its text (a number as its digits).
class NAAppInformation : public NAFileobj {
  public:
    // Reads everything at once. A symbolic link is opened as the bundle it leads to, its
    // target resolved inside the volume (Volume::resolvingLinks), never on the host; appPath
    // stays the path given. A path that does not lead to an existing folder (a dangling or
    // looping link included) has no bundle: only appPath is set. The Info dictionary comes from
    // Contents/Info.plist (XML or binary); a missing or unreadable one reads as empty, which
    // leaves the bundle without a name. The size is the metadata index's when it has a
    // non-zero one, else the allocated size of everything in the bundle (a walk: the
    // expensive part, and the reason the metadata comes first).
    explicit NAAppInformation(std::string appPath);
    static std::shared_ptr<NAAppInformation> initWithAppPath(std::string appPath);

    const std::string& appPath() const { return appPath_; }
    // True when the bundle exists and its Info.plist names it (CFBundleName).
    bool getInformationSuccess() const { return getInformationSuccess_; }
    // The sandbox entitlement's value, known once convertToGroup has run.
    bool app_enable_sandbox() const { return app_enable_sandbox_; }

    // "v" and CFBundleVersion, "v1.0" without one; nullopt only when there is no bundle.
    const std::optional<std::string>& app_version() const { return app_version_; }
    const std::optional<std::string>& app_name() const { return app_name_; }
    // The size as the lists print it (decimal units).
    const std::optional<std::string>& app_size() const { return app_size_; }
    const std::optional<std::string>& app_copyright() const { return app_copyright_; }
    // "v" and LSMinimumSystemVersion, "v10.8.0" without one.
    const std::optional<std::string>& app_requiresOs() const { return app_requiresOs_; }
    const std::optional<std::string>& development_language() const { return development_language_; }

    // Per-entitlement flags the class has always declared. Nothing sets them, so they stay
    // false: the entitlement rows are made from the entitlements themselves.
    struct AccessFlags {
        bool app_assces_movies = false;
        bool app_assces_music = false;
        bool app_assces_picture = false;
        bool app_assces_bluetooth = false;
        bool app_assces_firewire = false;
        bool app_assces_microphone = false;
        bool app_assces_serial_devices = false;
        bool app_assces_usb_devices = false;
        bool app_assces_address_book = false;
        bool app_assces_Calendar = false;
        bool app_assces_printers = false;
        bool app_assces_select_folder_read = false;
        bool app_assces_select_folder_readwrite = false;
        bool app_assces_total_folder = false;
    };
    const AccessFlags& accessFlags() const { return accessFlags_; }

    // A new group titled with the name (empty without one), without an image, holding rows in
    // this order: name/version, "Application Size" (the row's fileSize = the bundle's bytes,
    // so the group's size is the bundle's), "Copyright", "Requires Mac OS", "Development
    // Language" (each only when its field is set); then the sandbox row ("Enabled" only when
    // the main executable's "com.apple.security.app-sandbox" entitlement is true) and one row
    // per entitlement present, in a fixed order, whatever its value. Unsigned executables and
    // unreadable signatures give the disabled sandbox row alone.
    //
    // Without getInformationSuccess, sets *failed to true (it is never set to false: callers
    // clear it first) and the group holds the entitlement rows only. Reads the executable's
    // signature on every call.
    std::shared_ptr<NAGroupObj> convertToGroup(bool* failed);

  private:
    std::string appPath_;
    // Where the bundle's files are read: appPath with its links resolved.
    std::string bundlePath_;
    bool getInformationSuccess_ = false;
    bool app_enable_sandbox_ = false;
    AccessFlags accessFlags_;
    std::optional<std::string> app_version_;
    std::optional<std::string> app_name_;
    std::optional<std::string> app_size_;
    std::optional<std::string> app_copyright_;
    std::optional<std::string> app_requiresOs_;
    std::optional<std::string> development_language_;
};

}  // namespace sysmend
