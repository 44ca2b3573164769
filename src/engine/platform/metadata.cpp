#include "platform/metadata.h"

#include <utility>

namespace sysmend {
namespace {

MetadataProvider& installedProvider() {
    static MetadataProvider provider;
    return provider;
}

}  // namespace

std::optional<MetadataItem> metadataItemForPath(std::string_view volumePath) {
    const MetadataProvider& provider = installedProvider();
    if (!provider)
        return std::nullopt;
    return provider(volumePath);
}

MetadataProvider setMetadataProvider(MetadataProvider provider) {
    return std::exchange(installedProvider(), std::move(provider));
}

}  // namespace sysmend
