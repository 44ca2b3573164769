// Builds small Mach-O executables whose code signature carries entitlements, as signing tools
// lay them out: header, load commands, then a SuperBlob with a placeholder code directory, an
// empty requirements set and the entitlements blobs. There is no code and nothing is hashed;
// the result is only good for readers of the signature's structure.
#pragma once

#include <string>
#include <vector>

#include "platform/plist.h"
#include "platform/values.h"

namespace sysmend::sample {

// i386 and PowerPC make 32-bit slices (PowerPC big-endian); x86_64 and arm64 64-bit ones.
enum class Arch { I386, X86_64, Arm64, PowerPC };

enum class EntitlementsBlobs { None, Xml, Der, Both };

struct MachOSpec {
    std::vector<Arch> architectures{Arch::X86_64};  // more than one makes a fat file
    bool codeSignature = true;                      // false: no LC_CODE_SIGNATURE at all
    EntitlementsBlobs blobs = EntitlementsBlobs::Xml;
    plist::Value entitlements = plist::Dictionary{};  // a dictionary
};

// The file's bytes; every slice carries the same signature.
Data buildMachO(const MachOSpec& options);

// The DER entitlements encoding of a dictionary of booleans, integers, strings, arrays and
// dictionaries (keys sorted, as signing tools write them). Throws std::invalid_argument for
// any other type.
Data encodeDerEntitlements(const plist::Value& entitlements);

// Writes <bundleHostPath>/Contents/MacOS/<name> (folders made as needed) and returns its host
// path. Throws std::runtime_error when the file cannot be written.
std::string writeBundleExecutable(const std::string& bundleHostPath, const std::string& name,
                                  const Data& bytes);

}  // namespace sysmend::sample
