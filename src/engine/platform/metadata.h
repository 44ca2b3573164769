// File metadata as the system's search index keeps it (display name, size, creation date).
//
// An inspected volume folder has no such index, so on this platform every lookup answers
// nothing unless a provider has been installed; callers then take their own fallback (the
// name from the path, the size from walking the folder).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/values.h"

namespace sysmend {

// The attributes Sysmend reads from a metadata item; each may be missing on its own.
struct MetadataItem {
    std::optional<std::string> displayName;
    std::optional<std::string> path;  // volume path
    std::optional<std::int64_t> fsSize;
    std::optional<Date> contentCreationDate;
};

using MetadataProvider = std::function<std::optional<MetadataItem>(std::string_view volumePath)>;

// The metadata item for a volume path, or nullopt when there is none.
std::optional<MetadataItem> metadataItemForPath(std::string_view volumePath);

// Installs the source that metadataItemForPath asks (an empty function: none) and returns the
// previous one, so a caller can put it back. Install before any scan thread starts and
// never while one runs, as with Volume::setCurrent.
MetadataProvider setMetadataProvider(MetadataProvider provider);

}  // namespace sysmend
