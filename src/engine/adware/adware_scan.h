// The adware scan: ten passes over launch items, applications, browser profile folders and
// browser extensions of the current volume, each candidate compared with the signature
// database; matches become findings, grouped by threat into the adware category's groups.
//
// Database: an array of dictionaries, each one threat: "name" (string) and the optional lists
// of strings "preferences", "launch", "launchContent", "path", "app", "extensions". A missing
// list matches nothing; anything that is not an array of dictionaries counts as no threat.
//
// Threads and hand-over. A scan runs on one pool thread: initargs, then analysisAdware. Only
// that thread writes treats, the counters, scanningFile and the category's groups while the
// scan runs; the GUI thread looks at them only after analysisAdware has returned (the GUI
// ends the progress sheet from the scan's completion, and shows the result page from the
// sheet's end), and in between only through the copies the progress callback hands over.
// The stop flag is the one thing another thread may touch during a scan: the scan's own, or
// one it was given with useStopFlag (the start page's, raised by the sheet's Stop button).
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "adware/browser_extensions.h"
#include "app/na_category_obj.h"
#include "model/na_fileobj.h"
#include "platform/plist.h"

namespace sysmend {

class AdwareScan {
  public:
    // Called once per visited candidate, on the scanning thread, with the candidate (or, in
    // the pass over "path" strings, the threat's name) and the counters after the visit. The
    // GUI posts it to its own thread; it may call setStop.
    using Progress =
        std::function<void(const std::string& path, std::int64_t scanned, std::int64_t threats)>;

    // `category` receives the groups; it is kept weakly (the GUI owns it for the whole run),
    // and without it the findings stay in treats only.
    AdwareScan(plist::Value adwares, std::weak_ptr<NACategoryObj> category);

    void setProgress(Progress progress) { progress_ = std::move(progress); }

    // Makes the scan test `flag` instead of a flag of its own, so that whoever owns `flag`
    // stops the scan by raising it, without going through this object. stop, setStop and
    // initargs then act on `flag`, which must outlive every later use of this object.
    void useStopFlag(std::atomic<bool>& flag) { stopFlag_ = &flag; }

    // Before each scan: counters 0, timeelapsed "00:10:00" (what the sheet shows before its
    // first tick), the category's groups and treats emptied, stop cleared, scanningFile the
    // home folder.
    void initargs();

    // The ten passes, in order; then every finding is checked and put in the group of the
    // category whose title is the finding's title (a new group titled so, with the image
    // "malware_icon", checked, appended in the order of the threats' first findings); then
    // the log line "adware==<number of findings>". Returns when done or stopped: a stop ends
    // the pass that runs at its next test, the later passes at their first, and the grouping
    // still happens.
    void analysisAdware();

    // One visited candidate: scanedFiles + 1, threadFiles + 1 when isAdware, scanningFile =
    // path, then the progress callback. A candidate seen in several passes counts once per
    // pass.
    void scanningPath(const std::string& path, bool isAdware);

    // Some finding already has exactly this filePath.
    bool isAddedTreat(std::string_view path) const;

    // Walk handing everything below each given path to `compare`: a given path that is not a
    // folder (isDirectory) is handed over itself; a folder's entries are taken in the
    // walker's sorted order, hidden ones included, folders after their contents; the given
    // folders themselves are not handed over. Packages are files here and never entered.
    // Symbolic links are never entered either, whatever they point to: a link loop planted in
    // the home folder would make the walk endless, and a link could lead it off the volume.
    // `stop` is tested after each entry: when set, the walk ends, but the folders above the
    // entry are still handed over on the way out. Given paths that are not folders are
    // handed over without a test.
    void method_0(const std::vector<std::string>& paths, const PathBlock& compare);

    // The same walk for applications: only application bundles (isAppFile) go to `compare`;
    // a folder is walked and then only counted (scanningPath with false), as is a given path
    // that is neither a folder nor a bundle; other files are skipped uncounted.
    void method_1(const std::vector<std::string>& paths, const PathBlock& compare);

    // A symbolic link or a Finder alias file (what the platform's alias-file flag reports).
    // Without Finder flags on a copied volume an alias file is told by its content: its data
    // is a bookmark, which starts with "book". False for a missing path or "".
    static bool isAlias(std::string_view volumePath);
    // The type for the path's extension is an application bundle (by name only).
    static bool isAppFile(std::string_view path);

    // "Time Elapsed: hh:mm:ss", each part cut, never rounded: 3725.9 -> "Time Elapsed: 01:02:05".
    static std::string timeFromInterval(double seconds);

    const plist::Value& adwares() const { return adwares_; }
    // The findings of the last scan in order of discovery (see the header comment for when
    // they may be read).
    const TreatArray& treats() const { return treats_; }
    std::int64_t scanedFiles() const { return scanedFiles_; }
    std::int64_t threadFiles() const { return threadFiles_; }
    const std::string& scanningFile() const { return scanningFile_; }
    // The elapsed-time text; only the GUI thread sets it, from its one-second timer.
    const std::string& timeelapsed() const { return timeelapsed_; }
    void setTimeelapsed(std::string text) { timeelapsed_ = std::move(text); }

    bool stop() const { return *stopFlag_; }
    // Any thread, at any time; the scan notices it at its next test.
    void setStop(bool stop) { *stopFlag_ = stop; }

  private:
    // Walk the entries of one folder; true when it ended because stop was set.
    bool walkFolder0(const std::string& folder, const PathBlock& compare);
    bool walkFolder1(const std::string& folder, const PathBlock& compare);

    // Walks the database for one candidate whose finding would have the path `findingPath`:
    // at the first string of list `listKey` that `matches` accepts, `make` makes the finding,
    // which gets the threat's name as title and is appended unless its path is already
    // listed (the walk then goes on). `stop` is tested after each string. True when a
    // finding was appended.
    bool matchCandidate(std::string_view listKey, const std::string& findingPath,
                        const std::function<bool(const std::string&)>& matches,
                        const std::function<std::shared_ptr<NATreatObj>()>& make);

    // The same walk for the lists whose strings must equal the candidate's name (or label):
    // every match of one candidate makes a finding with the same path, so the outcome is the
    // first threat in database order that lists `name`, unless that path is already listed.
    // An index per list makes that one look-up instead of a pass over every string.
    // `withExtensionOnly` keeps only strings that have a path extension.
    bool matchExact(const std::string& listKey, const std::string& name,
                    const std::string& findingPath,
                    const std::function<std::shared_ptr<NATreatObj>()>& make,
                    bool withExtensionOnly = false);

    void scanBrowserProfiles();
    void scanLaunchNames();
    void scanLaunchLabels();
    void scanPaths();
    void scanApplications();
    void scanSafariExtensions();
    void scanExtensionRecords(const TreatArray& records, const std::string& walkerPath);
    void scanChromiumExtensions(bool isChrome);
    void scanFirefoxExtensions();
    void scanBrowserFolderItems();
    void groupTreats();

    plist::Value adwares_;
    // List key (with "+ext" for the extension-only variant) -> string -> first threat index;
    // built on first use from adwares_, which never changes.
    std::unordered_map<std::string, std::unordered_map<std::string, std::size_t>> exactIndex_;
    std::weak_ptr<NACategoryObj> category_;
    Progress progress_;
    TreatArray treats_;
    std::int64_t scanedFiles_ = 0;
    std::int64_t threadFiles_ = 0;
    std::string scanningFile_;
    std::string timeelapsed_;
    std::atomic<bool> ownStop_{false};
    std::atomic<bool>* stopFlag_ = &ownStop_;
};

// The file viewer's type for the item is a plain folder: not a package or bundle, which the
// walks treat as files. Links are followed; false for a missing path.
bool isDirectory(std::string_view volumePath);
// The type for the path's extension is exactly "com.apple.property-list" (by name only).
bool isPlistFile(std::string_view path);

}  // namespace sysmend
