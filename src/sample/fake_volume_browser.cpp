// Browser profiles and extensions for FakeVolume.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/path.h"
#include "sample/fake_volume.h"

namespace sysmend::sample {
namespace fs = std::filesystem;

std::string FakeVolume::chromeExtensionsFolder() const {
    return home_ + "/Library/Application Support/Google/Chrome/Default/Extensions";
}

std::string FakeVolume::operaExtensionsFolder() const {
    return home_ + "/Library/Application Support/com.operasoftware.Opera/Extensions";
}

std::string FakeVolume::addBrowserExtension(
    std::string_view extensionsFolder, std::string_view id, std::string_view version,
    std::string_view manifest, const std::vector<std::pair<std::string, std::string>>& messages) {
    const std::string folder = path::appending(path::appending(extensionsFolder, id), version);
    for (const auto& [locale, text] : messages)
        write(folder + "/_locales/" + locale + "/messages.json", text);
    return write(folder + "/manifest.json", manifest);
}

std::string FakeVolume::addFirefoxRegistry(std::string_view profile, std::string_view json) {
    return write(path::appending(home_ + "/Library/Application Support/Firefox/Profiles",
                                 std::string(profile) + "/extensions.json"),
                 json);
}

std::string FakeVolume::copyIn(const std::string& hostFolder, std::string_view volumeFolder) {
    for (const auto& entry : fs::recursive_directory_iterator(hostFolder)) {
        if (!entry.is_regular_file())
            continue;
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string content((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
        write(path::appending(volumeFolder, fs::relative(entry.path(), hostFolder).string()),
              content);
    }
    return std::string(volumeFolder);
}

}  // namespace sysmend::sample
