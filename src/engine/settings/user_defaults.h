// The application's user defaults: one property-list file per application id.
//
// Defaults belong to the machine running Sysmend, not to the inspected volume. The file lives
// in the platform's config folder ($SYSMEND_CONFIG_DIR, else $XDG_CONFIG_HOME/sysmend, else
// ~/.config/sysmend; ~/Library/Preferences on macOS) as "<application id>.plist". Every change
// is written at once through a temporary file and rename(2), so a crash never leaves half a
// file; keys this version does not know are kept as they were. A file that cannot be read is
// treated as empty; at the next write it is moved aside to "<file>.corrupt" rather than
// overwritten. A folder that cannot be written only makes synchronize() report false: the
// values stay in memory for this run and start-up goes on.
//
// Thread-safe: the folder-grant helper may read and write from any thread.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/plist.h"

namespace sysmend {

class UserDefaults {
  public:
    // The defaults stored in the given file (host path); the file need not exist yet.
    explicit UserDefaults(std::string filePath);

    // The application's standard defaults (the file named after kApplicationId in the
    // platform's config folder). Created on first use.
    static UserDefaults& standardUserDefaults();

    // The config folder described above, as a host path.
    static std::string defaultFolder();

    const std::string& filePath() const { return filePath_; }

    std::optional<plist::Value> objectForKey(std::string_view key) const;
    // Foundation's readings: absent keys give false / 0 / nullopt.
    bool boolForKey(std::string_view key) const;
    std::int64_t integerForKey(std::string_view key) const;
    std::optional<Data> dataForKey(std::string_view key) const;

    void setObject(plist::Value value, std::string_view key);
    void setBool(bool value, std::string_view key) { setObject(plist::Value(value), key); }
    void removeObjectForKey(std::string_view key);

    // Every key, in stored order (dictionaryRepresentation's keys).
    std::vector<std::string> keys() const;

    // Writes are immediate; this only reports whether the last write succeeded.
    bool synchronize() const;

  private:
    void writeLocked();

    std::string filePath_;
    mutable std::mutex mutex_;
    plist::Dictionary values_;
    bool lastWriteOk_ = true;
    bool unreadableFileOnDisk_ = false;
};

// The application id under which the defaults are kept.
inline constexpr std::string_view kApplicationId = "net.qvarlo.Sysmend";

}  // namespace sysmend
