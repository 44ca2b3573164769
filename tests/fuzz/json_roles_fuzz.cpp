// Arbitrary bytes in the three roles a browser's JSON file plays: a manifest, a locale's
// messages and a Firefox extensions.json. The ordered parse must agree with nlohmann's own,
// the pure readers must keep their promises, and the record builders must read the same
// bytes from disk to the same records.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "adware/browser_extensions.h"
#include "platform/syslog.h"
#include "platform/volume.h"

namespace {

using namespace sysmend;
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

void check(bool condition) {
    if (!condition)
        std::abort();
}

// Nesting depth without recursion: the reference parse has no depth limit.
std::size_t depthOf(const Json& root) {
    std::size_t deepest = 0;
    std::vector<std::pair<const Json*, std::size_t>> work{{&root, 1}};
    while (!work.empty()) {
        auto [value, depth] = work.back();
        work.pop_back();
        if (!value->is_structured())
            continue;
        deepest = std::max(deepest, depth);
        for (const Json& child : *value)
            work.push_back({&child, depth + 1});
    }
    return deepest;
}

// A volume with one extension whose messages are the input, one whose manifest is the input,
// and a Firefox profile whose extensions.json is the input.
struct Scene {
    fs::path root =
        fs::temp_directory_path() / ("sysmend-json-roles-" + std::to_string(::getpid()));
    std::string extensions =
        "/Users/f/Library/Application Support/Google/Chrome/Default/Extensions";
    std::string registry =
        "/Users/f/Library/Application Support/Firefox/Profiles/p/extensions.json";
    ScopedVolume scope{Volume(root.string(), "/Users/f")};

    Scene() {
        write(extensions + "/a/1.0/manifest.json",
              R"({"name": "__MSG_extName__", "default_locale": "en", "icons": {"16": "i.png"}})");
    }
    ~Scene() {
        std::error_code ec;
        fs::remove_all(root, ec);
    }

    void write(const std::string& volumePath, std::string_view bytes) const {
        const fs::path host = Volume::current().hostPath(volumePath);
        fs::create_directories(host.parent_path());
        std::ofstream(host, std::ios::binary | std::ios::trunc)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Scene scene;
    LogCapture quiet;  // bare values log a line each
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    const std::optional<Json> ours = jsonFromBytes(text);
    const Json reference = Json::parse(text, nullptr, false);
    if (ours)
        check(*ours == reference);
    else
        check(reference.is_discarded() || depthOf(reference) > 512);

    const Json value = ours.value_or(Json());
    std::string resolved = localizedName("__MSG_extName__", value);
    if (resolved != "__MSG_extName__" && !resolved.empty()) {
        bool isSomeMessage = false;
        for (const auto& [key, entry] : value.items())
            isSomeMessage |=
                entry.is_object() && entry.contains("message") && entry["message"] == resolved;
        check(isSomeMessage);
    }
    const std::optional<ManifestFacts> facts = manifestFacts(value);
    check(!facts || value.contains("icons"));
    const std::vector<FirefoxAddon> addons = firefoxAddons(value);
    check(addons.empty() || addons.size() <= value.at("addons").size());

    scene.write(scene.extensions + "/a/1.0/_locales/en/messages.json", text);
    scene.write(scene.extensions + "/b/1.0/manifest.json", text);
    scene.write(scene.registry, text);
    const std::atomic<bool> stop{false};
    const TreatArray records = foundExtentsionWithExtentsionPaths(scene.extensions, true, stop);
    check(records.size() == 1 + (facts ? 1 : 0));
    check(records[0]->fileName() == resolved);
    check(foundExtentsionWithExtentsionPaths(scene.registry).size() == addons.size());
    return 0;
}
