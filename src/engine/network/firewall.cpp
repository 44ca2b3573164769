#include "network/firewall.h"

#include <string>

#include "platform/file_url.h"
#include "platform/volume.h"

namespace sysmend {

bool getFirewallStatus(const std::optional<plist::Value>& preferences) {
    if (!preferences || preferences->asDictionary() == nullptr)
        return true;
    const plist::Value* state = preferences->find("globalstate");
    if (state == nullptr)
        return true;
    switch (state->type()) {
        case plist::Type::Boolean:
        case plist::Type::Integer:
        case plist::Type::Real:
        case plist::Type::String:
            return state->integerValue() != 0;
        default:
            return true;
    }
}

bool getFirewallStatus() {
    // Resolved inside the volume: an absolute link target is a path on the volume, not the
    // host's.
    const std::string file = FileURL::fileURLWithPath(kFirewallPreferencesPath, false)
                                 .URLByResolvingSymlinksInPath()
                                 .path();
    return getFirewallStatus(plist::readFile(Volume::current().hostPath(file)));
}

std::string_view firewallStatusText(bool on) {
    return on ? "Firewall is on" : "Firewall is off";
}

}  // namespace sysmend
