#include "settings/user_defaults.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/path.h"

namespace sysmend {
namespace {

const char* env(const char* name) {
    const char* v = std::getenv(name);
    return (v != nullptr && *v != '\0') ? v : nullptr;
}

// mkdir -p for the config folder; failures surface later as a failed write.
void makeFolders(const std::string& folder) {
    std::string partial;
    for (const std::string& part : path::components(folder)) {
        partial = partial.empty() ? part : path::appending(partial, part);
        if (partial == "/")
            continue;
        if (::mkdir(partial.c_str(), 0700) != 0 && errno != EEXIST)
            return;
    }
}

}  // namespace

UserDefaults::UserDefaults(std::string filePath) : filePath_(std::move(filePath)) {
    if (auto value = plist::readFile(filePath_); value && value->asDictionary() != nullptr) {
        values_ = *value->asDictionary();
    } else {
        struct stat st {};
        unreadableFileOnDisk_ = ::lstat(filePath_.c_str(), &st) == 0;
    }
}

std::string UserDefaults::defaultFolder() {
    if (const char* dir = env("SYSMEND_CONFIG_DIR"))
        return dir;
#ifdef __APPLE__
    if (const char* home = env("HOME"))
        return path::appending(home, "Library/Preferences");
#else
    if (const char* xdg = env("XDG_CONFIG_HOME"))
        return path::appending(xdg, "sysmend");
    if (const char* home = env("HOME"))
        return path::appending(home, ".config/sysmend");
#endif
    struct passwd* pw = ::getpwuid(::getuid());
    std::string home = (pw != nullptr && pw->pw_dir != nullptr) ? pw->pw_dir : "/tmp";
    return path::appending(home, ".config/sysmend");
}

UserDefaults& UserDefaults::standardUserDefaults() {
    static UserDefaults defaults(
        path::appending(defaultFolder(), std::string(kApplicationId) + ".plist"));
    return defaults;
}

std::optional<plist::Value> UserDefaults::objectForKey(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const plist::Value* v = values_.find(key);
    if (v == nullptr)
        return std::nullopt;
    return *v;
}

bool UserDefaults::boolForKey(std::string_view key) const {
    auto v = objectForKey(key);
    return v && v->boolValue();
}

std::int64_t UserDefaults::integerForKey(std::string_view key) const {
    auto v = objectForKey(key);
    return v ? v->integerValue() : 0;
}

std::optional<Data> UserDefaults::dataForKey(std::string_view key) const {
    auto v = objectForKey(key);
    if (!v || v->asData() == nullptr)
        return std::nullopt;
    return *v->asData();
}

void UserDefaults::setObject(plist::Value value, std::string_view key) {
    std::lock_guard lock(mutex_);
    values_.set(std::string(key), std::move(value));
    writeLocked();
}

void UserDefaults::removeObjectForKey(std::string_view key) {
    std::lock_guard lock(mutex_);
    if (values_.erase(key))
        writeLocked();
}

std::vector<std::string> UserDefaults::keys() const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> out;
    out.reserve(values_.size());
    for (const auto& [key, value] : values_)
        out.push_back(key);
    return out;
}

bool UserDefaults::synchronize() const {
    std::lock_guard lock(mutex_);
    return lastWriteOk_;
}

void UserDefaults::writeLocked() {
    makeFolders(path::deletingLastPathComponent(filePath_));
    if (unreadableFileOnDisk_) {
        // Whatever the unreadable file held may still be worth recovering by hand: keep it
        // beside the new one instead of writing over it.
        ::rename(filePath_.c_str(), (filePath_ + ".corrupt").c_str());
        unreadableFileOnDisk_ = false;
    }
    lastWriteOk_ = plist::writeFileAtomically(filePath_, plist::Value(values_), plist::Format::Xml);
}

}  // namespace sysmend
