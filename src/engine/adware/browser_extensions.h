// Finding the extensions of Safari, Chrome, Opera and Firefox in the home folder of the
// current volume, reading their names from the browsers' own files, and turning each into a
// record the adware scan can match and the result page can show and remove. Nothing here
// writes to a browser file.
//
// Paths are volume paths (platform/volume.h). Every file read here may have been written by
// adware, so unreadable, malformed or oddly typed content yields no record and no message
// (with the one log line of jsonToDictionary).
//
// Threads: everything runs on the scan's thread; the only shared state is the stop flag,
// which another thread may set at any time and which is read between items.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "model/na_fileobj.h"

namespace sysmend {

// Receives one volume path.
using PathBlock = std::function<void(const std::string& volumePath)>;
using TreatArray = std::vector<std::shared_ptr<NATreatObj>>;

// Walkers. Each enumerates one browser folder below the home folder depth first, in the order
// of DirectoryEnumerator (platform/walker.h), and hands items to the block; none of them
// yields or enters hidden files. A missing folder yields nothing. Each checks `stop` before
// every item and ends once it is set.
//
// ~/Library/Safari/Extensions: every item.
void analysisSafariExtentsions(const std::atomic<bool>& stop, const PathBlock& block);
// ~/Library/Application Support/Google/Chrome: every item; packages are not entered.
void analysisChromeExtentsions(const std::atomic<bool>& stop, const PathBlock& block);
// ~/Library/Application Support/com.operasoftware.Opera: every item; packages are not entered.
void analysisOperaExtentsions(const std::atomic<bool>& stop, const PathBlock& block);
// ~/Library/Application Support/Firefox/Profiles: only the items isfireFoxJsonFile accepts.
void analysisFirefoxExtentsions(const std::atomic<bool>& stop, const PathBlock& block);

// Records of the Chrome or Opera extensions below an "Extensions" folder: one per
// manifest.json (any case) found by a deep walk that skips hidden files and packages, ends
// once `stop` is set, and keeps the walk's order. A manifest gives a record only when it is a
// JSON object with an "icons" object and a string "name". Record: fileName = the name
// resolved through the default locale's messages (localizedName); filePath = extensionPath of
// the manifest (two versions of one extension give two records with the same filePath);
// fileIcon = the image file named by the last value of "icons", in the file's key order (the
// GUI shows nothing when it cannot be read); fileSize = the allocated size of filePath.
// `isChrome` does not change the result; Chrome and Opera callers pass it as they are.
TreatArray foundExtentsionWithExtentsionPaths(std::string_view folder, bool isChrome,
                                              const std::atomic<bool>& stop);

// Records of the Firefox add-ons listed in an extensions.json file (empty unless
// isfireFoxJsonFile accepts the path), in the file's order: see firefoxAddons. Record:
// filePath = "descriptor", fileName = the default locale's name, fileType "xpi", the generic
// "safariextz" icon for every add-on, fileSize = the allocated size of filePath.
TreatArray foundExtentsionWithExtentsionPaths(std::string_view extensionsJson);

// JSON text -> value, any top-level value allowed. Objects keep the key order of the text
// (the last value of a repeated key is kept at the key's first place). nullopt for invalid
// JSON (invalid UTF-8 included), trailing garbage, or nesting deeper than 512 levels. Parsing
// takes time linear in the size of the text, however many keys an object has.
std::optional<nlohmann::ordered_json> jsonFromBytes(std::string_view text);

// Reads a JSON file and gives its top-level object or array. nullopt silently when the file
// cannot be read (missing, not a regular file, larger than 32 MiB) or does not parse; nullopt
// and the log line "An error happened while deserializing the JSON data." when the top level
// is anything else (a string, number, boolean or null).
std::optional<nlohmann::ordered_json> jsonToDictionary(std::string_view volumePath);

// What a manifest says about its record, read without the disk.
struct ManifestFacts {
    std::string name;                          // "name", not yet localised
    std::optional<std::string> defaultLocale;  // "default_locale" when it is a string
    std::optional<std::string> iconFile;       // last value of "icons" when it is a string
    bool operator==(const ManifestFacts&) const = default;
};

// nullopt when the manifest gives no record: not an object, no "icons" object, or no string
// "name".
std::optional<ManifestFacts> manifestFacts(const nlohmann::ordered_json& manifest);

// Resolves an extension name through a locale's messages object. The keys are taken in the
// file's order: when the current name, lower-cased, contains the key, lower-cased, the key's
// entry decides: its string "message" becomes the current name, and the search goes on with
// the next keys against the new name; an entry without one (or not an object) ends the search
// with no name, which comes out as "". So "__MSG_extName__" becomes extName's message. An empty
// key is contained in nothing. Messages that are not an object leave the name as it is.
//
// "" (no name) makes a record that no signature string can match, as the string test says an
// empty name contains nothing; the result page shows it with an empty name.
std::string localizedName(std::string name, const nlohmann::ordered_json& messages);

// One add-on of a Firefox extensions.json.
struct FirefoxAddon {
    std::string descriptor;
    std::string name;
    bool operator==(const FirefoxAddon&) const = default;
};

// The add-ons of a parsed extensions.json, in order: its "addons" must be an array; an
// add-on counts when it is an object with a string "descriptor" and a "defaultLocale" object
// holding a string "name". Anything else is skipped.
std::vector<FirefoxAddon> firefoxAddons(const nlohmann::ordered_json& registry);

// Whether `part` occurs in `text`, case-sensitive; as with the platform's string search, an
// empty part occurs in nothing. Names and paths are matched with it here and in the scan.
bool containsString(std::string_view text, std::string_view part);

// The last path component is "extensions.json" (case-sensitive).
bool isfireFoxJsonFile(std::string_view path);
// The last path component, lower-cased, is "manifest.json".
bool isMainJsonFile(std::string_view path);
// Something is at the volume path and it is a folder, links followed.
bool isDir(std::string_view volumePath);
// The type for the path's extension conforms to "com.apple.safari.extension" (by name only).
bool isSafarExtensions(std::string_view path);

// The extension folder a path belongs to: climbs towards the root until the parent's last
// component is "Extensions" (case-sensitive) and returns the path reached, or the last one
// left when there is no such parent ("/" for an absolute path). Text only.
// ".../Extensions/abcdef/1.0_0/manifest.json" -> ".../Extensions/abcdef".
std::string extensionPath(std::string_view path);

}  // namespace sysmend
