#include "adware/browser_extensions.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <unordered_map>
#include <utility>

#include "platform/path.h"
#include "platform/syslog.h"
#include "platform/uti.h"
#include "platform/volume.h"
#include "platform/walker.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

using Json = nlohmann::ordered_json;

// The walks' enumeration options, as the browsers' folders have always been walked.
constexpr unsigned kSkipsHidden = DirectoryEnumerator::SkipsHiddenFiles;
constexpr unsigned kSkipsHiddenAndPackages =
    DirectoryEnumerator::SkipsHiddenFiles | DirectoryEnumerator::SkipsPackageDescendants;

constexpr std::size_t kMaxJsonBytes = 32 * 1024 * 1024;
constexpr std::size_t kMaxJsonDepth = 512;

// Disk space in use, as every finding reports it.
constexpr int kAllocatedSize = 1;

// Builds an ordered_json from parser events. nlohmann's own ordered parse looks every key up
// in a list, which takes quadratic time: a 0.5 MB object of 50,000 keys took 11 s, so a
// hostile manifest could stall the scan for hours. Here each open object has a hash index.
class OrderedJsonBuilder {
  public:
    Json result;

    bool null() { return put(nullptr); }
    bool boolean(bool value) { return put(value); }
    bool number_integer(Json::number_integer_t value) { return put(value); }
    bool number_unsigned(Json::number_unsigned_t value) { return put(value); }
    bool number_float(Json::number_float_t value, const Json::string_t&) { return put(value); }
    bool string(Json::string_t& value) { return put(std::move(value)); }
    bool binary(Json::binary_t&) { return false; }  // JSON text has no binary values

    bool start_object(std::size_t) { return open(Json::object()); }
    bool start_array(std::size_t) { return open(Json::array()); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }

    bool key(Json::string_t& name) {
        Open& top = stack_.back();
        auto& entries = top.value->get_ref<Json::object_t&>();
        auto [it, added] = top.index.try_emplace(name, entries.size());
        if (added)
            entries.emplace_back(std::move(name), nullptr);
        // ordered_map hides the vector's index operator behind its key look-up.
        slot_ = &(entries.begin() + static_cast<std::ptrdiff_t>(it->second))->second;
        return true;
    }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) {
        return false;
    }

  private:
    struct Open {
        Json* value;
        std::unordered_map<std::string, std::size_t> index;  // key -> place, objects only
    };

    // Places a value where the parser is: the root, the end of the open array, or the slot
    // of the last key. Open containers are not moved while they are open, so the pointers
    // on the stack stay valid.
    Json* place(Json value) {
        if (stack_.empty()) {
            result = std::move(value);
            return &result;
        }
        Json* container = stack_.back().value;
        if (container->is_array()) {
            auto& elements = container->get_ref<Json::array_t&>();
            elements.push_back(std::move(value));
            return &elements.back();
        }
        *slot_ = std::move(value);
        return slot_;
    }

    bool put(Json value) {
        place(std::move(value));
        return true;
    }

    bool open(Json container) {
        if (stack_.size() == kMaxJsonDepth)
            return false;
        stack_.push_back({place(std::move(container)), {}});
        return true;
    }

    bool close() {
        stack_.pop_back();
        return true;
    }

    std::vector<Open> stack_;
    Json* slot_ = nullptr;
};

// Whole file by volume path, links followed; nullopt for anything but a regular file within
// the size cap (a FIFO would block the scan).
std::optional<std::string> readSmallFile(std::string_view volumePath) {
    const std::string host = Volume::current().hostPath(volumePath);
    const int fd = ::open(host.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return std::nullopt;
    std::optional<std::string> content;
    struct stat st {};
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) &&
        static_cast<std::size_t>(st.st_size) <= kMaxJsonBytes) {
        std::string bytes(static_cast<std::size_t>(st.st_size), '\0');
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
            if (n <= 0)
                break;
            done += static_cast<std::size_t>(n);
        }
        bytes.resize(done);  // a file that shrank while being read is taken as it was read
        content = std::move(bytes);
    }
    ::close(fd);
    return content;
}

const Json* member(const Json& object, std::string_view key) {
    if (!object.is_object())
        return nullptr;
    auto it = object.find(key);
    return it == object.end() ? nullptr : &*it;
}

const std::string* stringMember(const Json& object, std::string_view key) {
    const Json* value = member(object, key);
    return value && value->is_string() ? &value->get_ref<const std::string&>() : nullptr;
}

void walkBrowserFolder(std::string_view relative, unsigned options, const std::atomic<bool>& stop,
                       const PathBlock& block) {
    const std::string folder =
        path::appending(path::appending(Volume::current().home(), "/Library"), relative);
    DirectoryEnumerator walker(folder, options);
    while (!stop) {
        std::optional<DirectoryEnumerator::Entry> entry = walker.next();
        if (!entry)
            return;
        block(entry->path);
    }
}

}  // namespace

void analysisSafariExtentsions(const std::atomic<bool>& stop, const PathBlock& block) {
    walkBrowserFolder("/Safari/Extensions/", kSkipsHidden, stop, block);
}

void analysisChromeExtentsions(const std::atomic<bool>& stop, const PathBlock& block) {
    walkBrowserFolder("/Application Support/Google/Chrome", kSkipsHiddenAndPackages, stop, block);
}

void analysisOperaExtentsions(const std::atomic<bool>& stop, const PathBlock& block) {
    walkBrowserFolder("/Application Support/com.operasoftware.Opera", kSkipsHiddenAndPackages, stop,
                      block);
}

void analysisFirefoxExtentsions(const std::atomic<bool>& stop, const PathBlock& block) {
    walkBrowserFolder("/Application Support/Firefox/Profiles/", kSkipsHidden, stop,
                      [&block](const std::string& path) {
                          if (isfireFoxJsonFile(path))
                              block(path);
                      });
}

TreatArray foundExtentsionWithExtentsionPaths(std::string_view folder,
                                              [[maybe_unused]] bool isChrome,
                                              const std::atomic<bool>& stop) {
    TreatArray records;
    DirectoryEnumerator walker(folder, kSkipsHiddenAndPackages);
    while (!stop) {
        std::optional<DirectoryEnumerator::Entry> entry = walker.next();
        if (!entry)
            break;
        if (!isMainJsonFile(entry->path))
            continue;
        std::optional<Json> manifest = jsonToDictionary(entry->path);
        if (!manifest)
            continue;
        std::optional<ManifestFacts> facts = manifestFacts(*manifest);
        if (!facts)
            continue;

        const std::string manifestFolder = path::deletingLastPathComponent(entry->path);
        std::string name = std::move(facts->name);
        // A locale is a language tag; one with a slash would lead the read out of the
        // extension (and, on a volume inspected from another system, out of the volume).
        if (facts->defaultLocale && facts->defaultLocale->find('/') == std::string::npos) {
            std::optional<Json> messages = jsonToDictionary(path::appending(
                manifestFolder, "_locales/" + *facts->defaultLocale + "/messages.json"));
            if (messages)
                name = localizedName(std::move(name), *messages);
        }

        auto record = std::make_shared<NATreatObj>();
        if (facts->iconFile)
            record->setFileIcon(
                ImageRef::imageFile(path::appending(manifestFolder, *facts->iconFile)));
        record->setFilePath(extensionPath(entry->path));
        record->setFileName(std::move(name));
        record->setFileSize(sizeAtPath(record->filePath(), kAllocatedSize));
        records.push_back(std::move(record));
    }
    return records;
}

TreatArray foundExtentsionWithExtentsionPaths(std::string_view extensionsJson) {
    TreatArray records;
    if (!isfireFoxJsonFile(extensionsJson))
        return records;
    std::optional<Json> registry = jsonToDictionary(extensionsJson);
    if (!registry)
        return records;
    for (FirefoxAddon& addon : firefoxAddons(*registry)) {
        auto record = std::make_shared<NATreatObj>();
        // The same generic icon for every add-on, as the list has always shown them.
        record->setFileIcon(ImageRef::fileTypeIcon("safariextz"));
        record->setFilePath(std::move(addon.descriptor));
        record->setFileName(std::move(addon.name));
        record->setFileType("xpi");
        record->setFileSize(sizeAtPath(record->filePath(), kAllocatedSize));
        records.push_back(std::move(record));
    }
    return records;
}

std::optional<Json> jsonFromBytes(std::string_view text) {
    OrderedJsonBuilder builder;
    if (!Json::sax_parse(text, &builder))
        return std::nullopt;
    return std::move(builder.result);
}

std::optional<Json> jsonToDictionary(std::string_view volumePath) {
    std::optional<std::string> text = readSmallFile(volumePath);
    if (!text)
        return std::nullopt;
    std::optional<Json> value = jsonFromBytes(*text);
    if (!value)
        return std::nullopt;
    if (!value->is_object() && !value->is_array()) {
        logLine("An error happened while deserializing the JSON data.");
        return std::nullopt;
    }
    return value;
}

std::optional<ManifestFacts> manifestFacts(const Json& manifest) {
    const Json* icons = member(manifest, "icons");
    const std::string* name = stringMember(manifest, "name");
    if (!icons || !icons->is_object() || !name)
        return std::nullopt;
    ManifestFacts facts{*name, std::nullopt, std::nullopt};
    if (const std::string* locale = stringMember(manifest, "default_locale"))
        facts.defaultLocale = *locale;
    // The last value in the file's order, not the largest size, as it has always been chosen.
    if (!icons->empty() && icons->back().is_string())
        facts.iconFile = icons->back().get<std::string>();
    return facts;
}

std::string localizedName(std::string name, const Json& messages) {
    if (!messages.is_object())
        return name;
    std::string lowered = path::lowercased(name);
    for (const auto& [key, entry] : messages.items()) {
        if (!containsString(lowered, path::lowercased(key)))
            continue;
        const std::string* message = stringMember(entry, "message");
        if (!message)
            return {};
        name = *message;
        lowered = path::lowercased(name);
    }
    return name;
}

std::vector<FirefoxAddon> firefoxAddons(const Json& registry) {
    std::vector<FirefoxAddon> addons;
    const Json* list = member(registry, "addons");
    if (!list || !list->is_array())
        return addons;
    for (const Json& addon : *list) {
        const std::string* descriptor = stringMember(addon, "descriptor");
        const Json* locale = member(addon, "defaultLocale");
        const std::string* name = locale ? stringMember(*locale, "name") : nullptr;
        if (descriptor && name)
            addons.push_back({*descriptor, *name});
    }
    return addons;
}

bool containsString(std::string_view text, std::string_view part) {
    return !part.empty() && text.find(part) != std::string_view::npos;
}

bool isfireFoxJsonFile(std::string_view path) {
    return path::lastPathComponent(path) == "extensions.json";
}

bool isMainJsonFile(std::string_view path) {
    return path::lowercased(path::lastPathComponent(path)) == "manifest.json";
}

bool isDir(std::string_view volumePath) {
    if (volumePath.empty())
        return false;
    struct stat st {};
    return ::stat(Volume::current().hostPath(volumePath).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool isSafarExtensions(std::string_view path) {
    return uti::conformsTo(uti::preferredIdentifierForExtension(path::pathExtension(path)),
                           uti::kSafariExtension);
}

std::string extensionPath(std::string_view path) {
    std::string reached(path);
    while (path::components(reached).size() > 1) {
        std::string parent = path::deletingLastPathComponent(reached);
        if (path::lastPathComponent(parent) == "Extensions")
            break;
        reached = std::move(parent);
    }
    return reached;
}

}  // namespace sysmend
