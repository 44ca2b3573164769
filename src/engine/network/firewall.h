// Whether the system's application firewall is on, from its preference file.
//
// The rule leans to "on": the firewall counts as off only when the preference file was read as
// a dictionary and its "globalstate" reads as 0. A missing, unreadable or malformed file, a
// file that is not a dictionary, or a missing key all count as on, so a page that cannot read
// the file says "Firewall is on"; that is the product's rule and is kept.
//
// "globalstate" is read as integerValue reads it: numbers and booleans convert, a string gives
// its leading integer ("0" and "abc" both give 0). Values that have no integer reading at all
// (dates, data, arrays, dictionaries) count as unread, hence on.
#pragma once

#include <optional>
#include <string_view>

#include "platform/plist.h"

namespace sysmend {

// Volume path of the firewall's preference file.
inline constexpr std::string_view kFirewallPreferencesPath =
    "/Library/Preferences/com.apple.alf.plist";

// The rule above on a property list already read; nullopt stands for a file that could not be
// read. True = on.
bool getFirewallStatus(const std::optional<plist::Value>& preferences);

// Reads the file of Volume::current() and applies the rule. Safe from any thread; it reads the
// file anew on every call (the page polls it).
bool getFirewallStatus();

// "Firewall is on" or "Firewall is off".
std::string_view firewallStatusText(bool on);

}  // namespace sysmend
