// The entitlements of a signed Mach-O executable, read from its embedded code signature
// (LC_CODE_SIGNATURE -> SuperBlob -> entitlements blob). The signature is not verified: this
// answers what the application claims, which is all the App Viewer shows.
//
// Every executable may have been written by the adware Sysmend looks for, so the reader
// validates each count, offset and length against the bytes it has before using it; a
// malformed file gives nullopt, never a partial answer.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/plist.h"

namespace sysmend {

// The entitlements dictionary of a thin or fat (universal) Mach-O file, 32- or 64-bit, of
// either byte order. The XML property-list blob is preferred; the DER blob is the fallback
// when there is no XML blob or it does not hold a dictionary. A fat file answers with the
// first slice, in the order of its header, that has entitlements (the slices of one
// application are signed with the same entitlements). nullopt when the bytes are not Mach-O,
// are unsigned, or carry no entitlements blob.
std::optional<plist::Value> entitlementsFromMachO(std::span<const std::uint8_t> bytes);

// The same for a file by host path. Only the headers, the load commands and the parts of the
// signature needed are read, so a multi-hundred-megabyte executable costs a few small reads.
// A symbolic link is not followed (nullopt): on a volume that is not the live system its
// target would be resolved on the host.
std::optional<plist::Value> entitlementsFromFile(const std::string& hostPath);

// The code-signing information of the application bundle at a volume path: a dictionary
// {"entitlements-dict": <entitlements>} for the main executable named by "CFBundleExecutable"
// in Contents/Info.plist, or, where the Info.plist or that key is missing, by the bundle's
// name less its extension, as the system finds it; looked for in Contents/MacOS. nullopt when
// the key is no usable name, the executable is missing or unreadable, or it has no
// entitlements.
std::optional<plist::Value> getSandboxDic(std::string_view bundleVolumePath);

}  // namespace sysmend
