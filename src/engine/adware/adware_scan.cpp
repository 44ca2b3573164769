#include "adware/adware_scan.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <utility>

#include "model/na_group_obj.h"
#include "platform/path.h"
#include "platform/syslog.h"
#include "platform/uti.h"
#include "platform/volume.h"
#include "platform/walker.h"
#include "tools/na_tools.h"

namespace sysmend {
namespace {

// Home-relative pieces are appended as path components, so "Library/Safari" and
// "/Library/Safari" give the same path.
std::string inHome(std::string_view piece) {
    return path::appending(Volume::current().home(), piece);
}

// A folder entry as isDirectory would type it, from its name and listed kind alone: the hot
// walk over the whole home folder makes no status call per entry. Links are not folders here
// (see method_0).
bool isFolderEntry(const DirEntry& entry) {
    if (entry.kind != EntryKind::Directory)
        return false;
    const std::string ext = path::pathExtension(entry.name);
    if (ext.empty())
        return true;
    // A folder with a declared directory type (a bundle or package) is typed by it; one with
    // any other extension is a plain folder.
    const std::string type = uti::preferredIdentifierForExtension(ext, uti::kDirectory);
    return !uti::conformsTo(type, uti::kDirectory) || uti::conformsTo(type, uti::kFolder);
}

bool fileExists(const std::string& volumePath) {
    struct stat st {};
    return !volumePath.empty() && ::stat(Volume::current().hostPath(volumePath).c_str(), &st) == 0;
}

// "Label" of a launchd job file, or nullopt when it cannot be read or is not a string.
std::optional<std::string> labelOf(const std::string& volumePath) {
    std::optional<plist::Value> job = plist::readFile(Volume::current().hostPath(volumePath));
    const plist::Value* label = job ? job->find("Label") : nullptr;
    const std::string* text = label ? label->asString() : nullptr;
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

const plist::Array* stringsOf(const plist::Dictionary& threat, std::string_view listKey) {
    const plist::Value* list = threat.find(listKey);
    return list ? list->asArray() : nullptr;
}

std::string nameOf(const plist::Dictionary& threat) {
    const plist::Value* name = threat.find("name");
    const std::string* text = name ? name->asString() : nullptr;
    return text ? *text : std::string();
}

std::vector<std::string> launchFolders() {
    return {inHome("Library/LaunchAgents"), "/Library/LaunchAgents",
            inHome("Library/LaunchDaemons"), "/Library/LaunchDaemons"};
}

std::shared_ptr<NATreatObj> treatWithSize(const std::string& volumePath) {
    return std::make_shared<NATreatObj>(volumePath, true);
}

}  // namespace

bool isDirectory(std::string_view volumePath) {
    std::optional<std::string> type = uti::typeOfFile(volumePath);
    return type && uti::conformsTo(*type, uti::kFolder);
}

bool isPlistFile(std::string_view path) {
    return uti::preferredIdentifierForExtension(path::pathExtension(path)) == uti::kPropertyList;
}

AdwareScan::AdwareScan(plist::Value adwares, std::weak_ptr<NACategoryObj> category)
    : adwares_(std::move(adwares)), category_(std::move(category)) {}

void AdwareScan::initargs() {
    scanedFiles_ = 0;
    threadFiles_ = 0;
    timeelapsed_ = "00:10:00";
    if (std::shared_ptr<NACategoryObj> category = category_.lock())
        category->groups().clear();
    treats_.clear();
    *stopFlag_ = false;
    scanningFile_ = Volume::current().home();
}

void AdwareScan::analysisAdware() {
    scanBrowserProfiles();
    scanLaunchNames();
    scanLaunchLabels();
    scanPaths();
    scanApplications();
    scanSafariExtensions();
    scanChromiumExtensions(true);
    scanChromiumExtensions(false);
    scanFirefoxExtensions();
    scanBrowserFolderItems();
    groupTreats();
    logLine("adware==" + std::to_string(treats_.size()));
}

void AdwareScan::scanningPath(const std::string& path, bool isAdware) {
    ++scanedFiles_;
    if (isAdware)
        ++threadFiles_;
    scanningFile_ = path;
    if (progress_)
        progress_(scanningFile_, scanedFiles_, threadFiles_);
}

bool AdwareScan::isAddedTreat(std::string_view path) const {
    for (const std::shared_ptr<NATreatObj>& treat : treats_) {
        if (treat->filePath() == path)
            return true;
    }
    return false;
}

void AdwareScan::method_0(const std::vector<std::string>& paths, const PathBlock& compare) {
    for (const std::string& given : paths) {
        if (!isDirectory(given))
            compare(given);
        else if (walkFolder0(given, compare))
            return;
    }
}

bool AdwareScan::walkFolder0(const std::string& folder, const PathBlock& compare) {
    for (const DirEntry& entry : contentsOfDirectory(folder)) {
        const std::string full = path::appending(folder, entry.name);
        // A stop inside ends that folder's walk only: the folder is still handed over, and
        // the stop is seen again right after it.
        if (isFolderEntry(entry))
            walkFolder0(full, compare);
        compare(full);
        if (*stopFlag_)
            return true;
    }
    return false;
}

void AdwareScan::method_1(const std::vector<std::string>& paths, const PathBlock& compare) {
    for (const std::string& given : paths) {
        if (isDirectory(given)) {
            if (walkFolder1(given, compare))
                return;
        } else if (isAppFile(given)) {
            compare(given);
        } else {
            scanningPath(given, false);
        }
    }
}

bool AdwareScan::walkFolder1(const std::string& folder, const PathBlock& compare) {
    for (const DirEntry& entry : contentsOfDirectory(folder)) {
        // Most entries of a home folder are plain files: they are told by name, without
        // building their path.
        if (isFolderEntry(entry)) {
            const std::string full = path::appending(folder, entry.name);
            walkFolder1(full, compare);
            scanningPath(full, false);
        } else if (isAppFile(entry.name)) {
            compare(path::appending(folder, entry.name));
        }
        if (*stopFlag_)
            return true;
    }
    return false;
}

bool AdwareScan::isAlias(std::string_view volumePath) {
    return isAliasFile(volumePath);
}

bool AdwareScan::isAppFile(std::string_view path) {
    return isApplicationBundleName(path);
}

std::string AdwareScan::timeFromInterval(double seconds) {
    const auto hours = static_cast<long>(std::floor(seconds / 3600));
    const auto minutes = static_cast<long>(std::floor(seconds / 60 - hours * 60));
    const auto rest = static_cast<long>(std::floor(seconds - minutes * 60 - hours * 3600));
    std::array<char, 96> text{};
    // The product's format is "%0.2ld"; printf ignores the 0 flag beside a precision, so
    // "%.2ld" prints the same and keeps the compiler's format check quiet.
    std::snprintf(text.data(), text.size(), "Time Elapsed: %.2ld:%.2ld:%.2ld", hours, minutes,
                  rest);
    return text.data();
}

bool AdwareScan::matchCandidate(std::string_view listKey, const std::string& findingPath,
                                const std::function<bool(const std::string&)>& matches,
                                const std::function<std::shared_ptr<NATreatObj>()>& make) {
    const plist::Array* threats = adwares_.asArray();
    if (!threats)
        return false;
    for (const plist::Value& value : *threats) {
        const plist::Dictionary* threat = value.asDictionary();
        const plist::Array* strings = threat ? stringsOf(*threat, listKey) : nullptr;
        if (!strings)
            continue;
        for (const plist::Value& element : *strings) {
            const std::string* text = element.asString();
            // A listed path is checked before the finding is made: its size may take a walk.
            if (text && matches(*text) && !isAddedTreat(findingPath)) {
                std::shared_ptr<NATreatObj> treat = make();
                treat->setTitle(nameOf(*threat));
                treats_.push_back(std::move(treat));
                return true;
            }
            if (*stopFlag_)
                return false;
        }
    }
    return false;
}

bool AdwareScan::matchExact(const std::string& listKey, const std::string& name,
                            const std::string& findingPath,
                            const std::function<std::shared_ptr<NATreatObj>()>& make,
                            bool withExtensionOnly) {
    const plist::Array* threats = adwares_.asArray();
    if (!threats)
        return false;
    const std::string indexKey = withExtensionOnly ? listKey + "+ext" : listKey;
    auto [slot, isNew] = exactIndex_.try_emplace(indexKey);
    std::unordered_map<std::string, std::size_t>& index = slot->second;
    if (isNew) {
        for (std::size_t i = 0; i < threats->size(); ++i) {
            const plist::Dictionary* threat = (*threats)[i].asDictionary();
            const plist::Array* strings = threat ? stringsOf(*threat, listKey) : nullptr;
            if (!strings)
                continue;
            for (const plist::Value& element : *strings) {
                const std::string* text = element.asString();
                if (text && (!withExtensionOnly || !path::pathExtension(*text).empty()))
                    index.try_emplace(*text, i);  // the first threat keeps the string
            }
        }
    }
    auto hit = index.find(name);
    if (hit == index.end() || isAddedTreat(findingPath))
        return false;
    std::shared_ptr<NATreatObj> treat = make();
    treat->setTitle(nameOf(*(*threats)[hit->second].asDictionary()));
    treats_.push_back(std::move(treat));
    return true;
}

// Pass 1: items of the browser profile folders named exactly as a "preferences" string.
void AdwareScan::scanBrowserProfiles() {
    method_0({inHome("/Library/Application Support/Google/Chrome/Default"),
              inHome("/Library/Application Support/Firefox/Profiles"), inHome("Library/Safari"),
              inHome("/Library/Application Support/com.operasoftware.Opera")},
             [this](const std::string& candidate) {
                 bool found = matchExact("preferences", path::lastPathComponent(candidate),
                                         candidate, [&] { return treatWithSize(candidate); });
                 scanningPath(candidate, found);
             });
}

// Pass 2: launch agents and daemons whose file name is a "launch" string.
void AdwareScan::scanLaunchNames() {
    method_0(launchFolders(), [this](const std::string& candidate) {
        bool found = matchExact("launch", path::lastPathComponent(candidate), candidate,
                                [&] { return treatWithSize(candidate); });
        scanningPath(candidate, found);
    });
}

// Pass 3: the same files again, by the "Label" inside, read once per file and only when a
// string needs it.
void AdwareScan::scanLaunchLabels() {
    method_0(launchFolders(), [this](const std::string& candidate) {
        std::optional<std::string> label;
        if (isPlistFile(candidate))
            label = labelOf(candidate);
        bool found = label && matchExact("launchContent", *label, candidate,
                                         [&] { return treatWithSize(candidate); });
        scanningPath(candidate, found);
    });
}

// Pass 4: no walk; every "path" string is tested for existence on its own, and reported by
// the threat's name so that the sheet shows the threat rather than the path. Missing paths
// are counted too.
void AdwareScan::scanPaths() {
    const plist::Array* threats = adwares_.asArray();
    if (!threats)
        return;
    for (const plist::Value& value : *threats) {
        const plist::Dictionary* threat = value.asDictionary();
        const plist::Array* strings = threat ? stringsOf(*threat, "path") : nullptr;
        if (!strings)
            continue;
        const std::string name = nameOf(*threat);
        for (const plist::Value& element : *strings) {
            const std::string* text = element.asString();
            bool found = false;
            if (text && fileExists(*text) && !isAddedTreat(*text)) {
                std::shared_ptr<NATreatObj> treat = treatWithSize(*text);
                treat->setTitle(name);
                treats_.push_back(std::move(treat));
                found = true;
            }
            scanningPath(name, found);
            if (*stopFlag_)
                return;
        }
    }
}

// Pass 5: application bundles anywhere in /Applications and the home folder whose full path
// contains an "app" string.
void AdwareScan::scanApplications() {
    method_1({"/Applications", Volume::current().home()}, [this](const std::string& candidate) {
        bool found = matchCandidate(
            "app", candidate, [&](const std::string& s) { return containsString(candidate, s); },
            [&] { return treatWithSize(candidate); });
        scanningPath(candidate, found);
    });
}

// Pass 6: Safari extensions, matched by the path of their extension item; every item of the
// walk is counted.
void AdwareScan::scanSafariExtensions() {
    analysisSafariExtentsions(*stopFlag_, [this](const std::string& candidate) {
        bool found = false;
        if (isSafarExtensions(candidate)) {
            const std::string extension = extensionPath(candidate);
            found = matchCandidate(
                "extensions", extension,
                [&](const std::string& s) { return containsString(extension, s); },
                [&] {
                    std::shared_ptr<NATreatObj> treat = treatWithSize(candidate);
                    treat->setFilePath(extension);
                    treat->setFileType(std::string(uti::kSafariExtension));
                    return treat;
                });
        }
        scanningPath(candidate, found);
    });
}

// Passes 7 to 9 share this: the records of one walker path become findings themselves, and
// the walker path is counted once, after them, as a finding when any record was one.
void AdwareScan::scanExtensionRecords(const TreatArray& records, const std::string& walkerPath) {
    bool found = false;
    for (const std::shared_ptr<NATreatObj>& record : records) {
        const std::string& name = record->fileName();
        if (matchCandidate(
                "extensions", record->filePath(),
                [&](const std::string& s) { return containsString(name, s); },
                [&] { return record; }))
            found = true;
    }
    scanningPath(walkerPath, found);
}

// Passes 7 (Chrome) and 8 (Opera): the extensions below each "Extensions" folder of the
// browser, by name.
void AdwareScan::scanChromiumExtensions(bool isChrome) {
    const PathBlock block = [this, isChrome](const std::string& candidate) {
        TreatArray records;
        if (path::lowercased(path::lastPathComponent(candidate)) == "extensions" &&
            isDir(candidate))
            records = foundExtentsionWithExtentsionPaths(candidate, isChrome, *stopFlag_);
        scanExtensionRecords(records, candidate);
    };
    if (isChrome)
        analysisChromeExtentsions(*stopFlag_, block);
    else
        analysisOperaExtentsions(*stopFlag_, block);
}

// Pass 9: the add-ons of each Firefox profile's extensions.json, by name.
void AdwareScan::scanFirefoxExtensions() {
    analysisFirefoxExtentsions(*stopFlag_, [this](const std::string& candidate) {
        scanExtensionRecords(foundExtentsionWithExtentsionPaths(candidate), candidate);
    });
}

// Pass 10: items of the browser folders named exactly as an "extensions" string that has a
// path extension (a packaged extension's file name).
void AdwareScan::scanBrowserFolderItems() {
    method_0({inHome("/Library/Application Support/Google/Chrome/"),
              inHome("/Library/Application Support/Firefox/"), inHome("Library/Safari"),
              inHome("/Library/Application Support/com.operasoftware.Opera")},
             [this](const std::string& candidate) {
                 bool found = matchExact(
                     "extensions", path::lastPathComponent(candidate), candidate,
                     [&] { return treatWithSize(candidate); }, /*withExtensionOnly=*/true);
                 scanningPath(candidate, found);
             });
}

void AdwareScan::groupTreats() {
    std::shared_ptr<NACategoryObj> category = category_.lock();
    if (!category)
        return;
    NAGroupObjArray& groups = category->groups();
    for (const std::shared_ptr<NATreatObj>& treat : treats_) {
        treat->setIsChecked(1);
        auto same = [&](const std::shared_ptr<NAGroupObj>& group) {
            return group->title() == treat->title();
        };
        if (auto it = std::find_if(groups.begin(), groups.end(), same); it != groups.end()) {
            (*it)->addFileObj(treat);
            continue;
        }
        auto group = std::make_shared<NAGroupObj>(treat->title(), ImageRef::named("malware_icon"));
        group->setCategoryObj(category);
        group->setIsChecked(1);
        group->addFileObj(treat);
        groups.push_back(std::move(group));
    }
}

}  // namespace sysmend
