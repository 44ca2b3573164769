#include "appviewer/app_information.h"

#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <utility>

#include "appviewer/code_signature.h"
#include "platform/metadata.h"
#include "platform/path.h"
#include "platform/plist.h"
#include "platform/volume.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

constexpr std::string_view kSandboxTitle = "Application Sandbox";
constexpr std::string_view kSandboxEnabled = "Enabled";
constexpr std::string_view kSandboxDisabled =
    "Disabled, application has full access to your user account";

struct EntitlementRow {
    std::string_view entitlement;
    std::string_view title;
    std::string_view description;
};

// Rows are added in this order; the texts are shown as they are, odd capitals included.
constexpr std::array<EntitlementRow, 21> kEntitlementRows{{
    {"com.apple.security.assets.movies.read-only", "Accesses your Movies",
     "Allowed to read your Movies"},
    {"com.apple.security.assets.movies.read-write", "Accesses your Movies",
     "Allowed to read and write to your Movies"},
    {"com.apple.security.assets.music.read-only", "Accesses your Music",
     "Allowed to read your Music"},
    {"com.apple.security.assets.music.read-write", "Accesses your Music",
     "Allowed to read and write to your Music"},
    {"com.apple.security.assets.pictures.read-only", "Accesses your Pictures",
     "Allowed to read your Pictures Library"},
    {"com.apple.security.assets.pictures.read-write", "Accesses your Pictures",
     "Allowed to read and write your Pictures Library"},
    {"com.apple.security.device.bluetooth", "Access Bluetooth devices",
     "Allowed to interact with Bluetooth devices"},
    {"com.apple.security.device.camera", "Camera Capture",
     "Allowed to capture movies and still images"},
    {"com.apple.security.device.firewire", "Access Firewire devices",
     "Application is allowed to interact with Firewire devices"},
    {"com.apple.security.device.microphone", "Access Microphone",
     "Application is allowed to record audio using your microphone"},
    {"com.apple.security.device.serial", "Access Serial Devices",
     "Application is allowed to interact with Serial Devices"},
    {"com.apple.security.device.usb", "USB Devices",
     "Application is allowed to interact with USB Devices"},
    {"com.apple.security.files.downloads.read-write", "Downloads Folder",
     "Application is allowed to read and write files"},
    {"com.apple.security.files.user-selected.read-only", "Read files",
     "Application is allowed to read files you have selected"},
    {"com.apple.security.files.user-selected.read-write", "Access files",
     "Full access to files you have selected"},
    {"com.apple.security.network.client", "Network Access",
     "Application is allowed to access the network"},
    {"com.apple.security.network.server", "Network Server",
     "Application is allowed to be accessed from the network"},
    {"com.apple.security.personal-information.addressbook", "Address Book",
     "Application is allowed to access and create contacts"},
    {"com.apple.security.personal-information.calendars", "Calendar",
     "Allowed to access your Calendar"},
    {"com.apple.security.personal-information.location", "Location",
     "Application is allowed to determine your computer's locationr"},
    {"com.apple.security.print", "Printers", "Application is allowed to print"},
}};

// Disk space in use, as every list in the application counts it.
constexpr int kAllocatedSize = 1;

bool isFolder(const std::string& hostPath) {
    struct stat st {};
    return ::lstat(hostPath.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// A value as a format's "%@" prints it. Info.plists written by hand sometimes hold numbers
// where strings belong (CFBundleVersion = 2).
std::string textOf(const plist::Value& value) {
    if (const std::string* s = value.asString())
        return *s;
    if (auto i = value.asInteger())
        return std::to_string(*i);
    if (auto b = value.asBool())
        return *b ? "1" : "0";
    if (auto r = value.asReal()) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%.15g", *r);
        return buf;
    }
    return plist::describe(value);
}

std::optional<std::string> textFor(const plist::Value& info, std::string_view key) {
    const plist::Value* value = info.find(key);
    if (value == nullptr)
        return std::nullopt;
    return textOf(*value);
}

std::int64_t bundleSize(const std::string& appPath) {
    std::optional<MetadataItem> item = metadataItemForPath(appPath);
    std::int64_t size = item ? item->fsSize.value_or(0) : 0;
    return size != 0 ? size : sizeAtPath(appPath, kAllocatedSize);
}

void addRow(NAGroupObj& group, std::string_view key, std::string_view value,
            std::int64_t size = 0) {
    auto row = NAAppSingleInformation::initWithKeyAndValue(std::string(key), std::string(value));
    row->setFileSize(size);
    group.addFileObj(row);
}

}  // namespace

NAAppSingleInformation::NAAppSingleInformation(std::string key, std::string value)
    : key_title_(std::move(key)), value_title_(std::move(value)) {}

std::shared_ptr<NAAppSingleInformation> NAAppSingleInformation::initWithKeyAndValue(
    std::string key, std::string value) {
    return std::make_shared<NAAppSingleInformation>(std::move(key), std::move(value));
}

void NAAppSingleInformation::print(std::ostream& out) const {
    out << key_title_ << ": " << value_title_;
}

NAAppInformation::NAAppInformation(std::string appPath) : appPath_(std::move(appPath)) {
    std::optional<std::string> bundle = Volume::current().resolvingLinks(appPath_);
    if (!bundle)
        return;
    bundlePath_ = std::move(*bundle);
    const std::string host = Volume::current().hostPath(bundlePath_);
    if (!isFolder(host))
        return;
    getInformationSuccess_ = true;

    const plist::Value info =
        plist::readFile(path::appending(host, "Contents/Info.plist")).value_or(plist::Value());
    app_copyright_ = textFor(info, "NSHumanReadableCopyright");
    app_version_ = "v" + textFor(info, "CFBundleVersion").value_or("1.0");
    app_requiresOs_ = "v" + textFor(info, "LSMinimumSystemVersion").value_or("10.8.0");

    const std::int64_t size = bundleSize(bundlePath_);
    app_size_ = recal_size(size);
    setFileSize(size);

    development_language_ = textFor(info, "CFBundleDevelopmentRegion");
    app_name_ = textFor(info, "CFBundleName");
    if (!app_name_)
        getInformationSuccess_ = false;
    // A guard the readers of this object have always had; the version has a text by now.
    if (!app_version_)
        app_version_ = "NULL";
}

std::shared_ptr<NAAppInformation> NAAppInformation::initWithAppPath(std::string appPath) {
    return std::make_shared<NAAppInformation>(std::move(appPath));
}

std::shared_ptr<NAGroupObj> NAAppInformation::convertToGroup(bool* failed) {
    auto group = std::make_shared<NAGroupObj>(app_name_.value_or(""), ImageRef::none());

    if (!getInformationSuccess_) {
        *failed = true;
    } else {
        if (app_name_)
            addRow(*group, *app_name_, *app_version_);
        if (app_size_)
            addRow(*group, "Application Size", *app_size_, fileSize());
        if (app_copyright_)
            addRow(*group, "Copyright", *app_copyright_);
        if (app_requiresOs_)
            addRow(*group, "Requires Mac OS", *app_requiresOs_);
        if (development_language_)
            addRow(*group, "Development Language", *development_language_);
    }

    // The entitlement rows come also for a bundle that failed: the group is complete even if
    // the listing drops it.
    const std::optional<plist::Value> signing = getSandboxDic(bundlePath_);
    const plist::Value* found = signing ? signing->find("entitlements-dict") : nullptr;
    // Entitlements that are no dictionary (a hostile signature) are as good as none.
    const plist::Dictionary* entitlements = found ? found->asDictionary() : nullptr;
    if (entitlements == nullptr) {
        addRow(*group, kSandboxTitle, kSandboxDisabled);
        return group;
    }

    if (const plist::Value* sandbox = entitlements->find("com.apple.security.app-sandbox"))
        app_enable_sandbox_ = sandbox->boolValue();
    addRow(*group, kSandboxTitle, app_enable_sandbox_ ? kSandboxEnabled : kSandboxDisabled);
    // Presence alone counts: an entitlement set to false still gets its row.
    for (const EntitlementRow& row : kEntitlementRows) {
        if (entitlements->contains(row.entitlement))
            addRow(*group, row.title, row.description);
    }
    return group;
}

}  // namespace sysmend
