#include "crashes/crash_scan.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <utility>
#include <vector>

#include "model/na_fileobj.h"
#include "model/na_group_obj.h"
#include "platform/file_url.h"
#include "platform/path.h"
#include "platform/unicode.h"
#include "platform/volume.h"
#include "platform/walker.h"

namespace sysmend {
namespace {

using Byte = unsigned char;

// Well-formed UTF-8 as the text decoder accepts it: no overlong forms, no surrogates, nothing
// above U+10FFFF.
bool isWellFormedUtf8(std::string_view text, bool truncated) {
    const Byte* p = reinterpret_cast<const Byte*>(text.data());
    const Byte* const end = p + text.size();
    while (p != end) {
        // Reports are nearly all ASCII: skip it eight bytes at a time.
        std::uint64_t word = 0;
        while (end - p >= 8 && (std::memcpy(&word, p, 8), (word & 0x8080808080808080u) == 0))
            p += 8;
        if (p == end)
            break;
        const Byte lead = *p++;
        if (lead < 0x80)
            continue;
        int follow = 0;
        Byte low = 0x80;
        Byte high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            follow = 1;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            follow = 2;
            low = lead == 0xE0 ? 0xA0 : 0x80;   // overlong
            high = lead == 0xED ? 0x9F : 0xBF;  // surrogates
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            follow = 3;
            low = lead == 0xF0 ? 0x90 : 0x80;   // overlong
            high = lead == 0xF4 ? 0x8F : 0xBF;  // above U+10FFFF
        } else {
            return false;
        }
        for (int i = 0; i < follow; ++i, ++p) {
            if (p == end)
                return truncated;
            if (*p < low || *p > high)
                return false;
            low = 0x80;
            high = 0xBF;
        }
    }
    return true;
}

// Whether a newline character (LF, VT, FF, CR, NEL, LINE or PARAGRAPH SEPARATOR) starts at i
// or ends just before i. In well-formed UTF-8 the lead bytes make the multi-byte ones
// unambiguous; in other text the answer does not matter, as such text has no identifier.
bool newlineStartsAt(std::string_view s, std::size_t i) {
    const auto at = [&](std::size_t k) { return k < s.size() ? Byte(s[k]) : Byte(0); };
    const Byte c = at(i);
    return (c >= 0x0A && c <= 0x0D) || (c == 0xC2 && at(i + 1) == 0x85) ||
           (c == 0xE2 && at(i + 1) == 0x80 && (at(i + 2) == 0xA8 || at(i + 2) == 0xA9));
}

bool newlineEndsBefore(std::string_view s, std::size_t i) {
    const auto before = [&](std::size_t k) { return k <= i ? Byte(s[i - k]) : Byte(0); };
    const Byte c = before(1);
    return (c >= 0x0A && c <= 0x0D) || (c == 0x85 && before(2) == 0xC2) ||
           ((c == 0xA8 || c == 0xA9) && before(2) == 0x80 && before(3) == 0xE2);
}

// Reads reports into one buffer that is kept from file to file.
class ReportReader {
  public:
    // The file's bytes, at most kCrashReportReadLimit of them; nullopt for anything but a
    // readable regular file (a folder has no text, and a FIFO must not block the scan).
    std::optional<std::string_view> read(const std::string& hostPath, bool& truncated) {
        const int fd = ::open(hostPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (fd < 0)
            return std::nullopt;
        struct stat st {};
        if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
            ::close(fd);
            return std::nullopt;
        }
        // One byte beyond the limit tells a longer file; a file that grows while it is read
        // gets more room, up to that byte.
        const std::size_t limit = kCrashReportReadLimit + 1;
        buffer_.resize(std::min(static_cast<std::size_t>(st.st_size) + 1, limit));
        std::size_t got = 0;
        for (;;) {
            if (got == buffer_.size()) {
                if (got == limit)
                    break;
                buffer_.resize(std::min(got * 2, limit));
            }
            const ssize_t n = ::read(fd, buffer_.data() + got, buffer_.size() - got);
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0) {
                ::close(fd);
                return std::nullopt;
            }
            if (n == 0)
                break;
            got += static_cast<std::size_t>(n);
        }
        ::close(fd);
        truncated = got > kCrashReportReadLimit;
        return std::string_view(buffer_.data(), std::min(got, kCrashReportReadLimit));
    }

  private:
    std::string buffer_;
};

// A link's target is a volume path; the host would resolve an absolute one against its own
// root.
std::string hostPathOf(const std::string& volumePath, EntryKind kind) {
    if (kind != EntryKind::Symlink)
        return Volume::current().hostPath(volumePath);
    const FileURL target =
        FileURL::fileURLWithPath(volumePath, false).URLByResolvingSymlinksInPath();
    return Volume::current().hostPath(target.path());
}

bool fileExists(const std::string& volumePath) {
    struct stat st {};
    return ::stat(Volume::current().hostPath(volumePath).c_str(), &st) == 0;
}

// Pass 1: every report whose identifier names an installed application joins the first group
// with that application's title, or a new group appended for it.
void attributeReports(const std::shared_ptr<NACategoryObj>& category, const AppIndex& apps) {
    NAGroupObjArray& groups = category->groups();
    std::unordered_map<std::string, std::shared_ptr<NAGroupObj>> byTitle;
    for (const std::shared_ptr<NAGroupObj>& group : groups)
        byTitle.try_emplace(group->title(), group);

    const std::string folder = crashReportsFolder();
    ReportReader reader;
    for (const DirEntry& entry : contentsOfDirectory(folder)) {
        const std::string report = path::appending(folder, entry.name);
        bool truncated = false;
        std::optional<std::string_view> bytes =
            reader.read(hostPathOf(report, entry.kind), truncated);
        if (!bytes)
            continue;
        std::optional<std::string> id = crashReportIdentifier(*bytes, truncated);
        if (!id)
            continue;
        std::optional<std::string> app = apps.absolutePathForAppBundleWithIdentifier(*id);
        if (!app || !fileExists(*app))
            continue;

        const std::string title = path::deletingPathExtension(path::lastPathComponent(*app));
        std::shared_ptr<NAGroupObj>& group = byTitle[title];
        if (!group) {
            group = std::make_shared<NAGroupObj>();
            group->setTitle(title);
            group->setAttachImage(ImageRef::fileIcon(*app));
            groups.push_back(group);
            group->setCategoryObj(category);
        }
        group->addFileObj(std::make_shared<NAFileobj>(report));
    }
}

// Pass 2: reporter entries join every group whose title their name contains, compared without
// case and normal form ("élan_ABCD.plist" and a decomposed "Élan" are one name).
void attributeReporterEntries(NACategoryObj& category) {
    const std::string folder = crashReporterFolder();
    const std::vector<DirEntry> entries = contentsOfDirectory(folder);
    std::vector<std::string> titles;
    for (const std::shared_ptr<NAGroupObj>& group : category.groups())
        titles.push_back(unicode::caselessKey(group->title()));

    for (const DirEntry& entry : entries) {
        const std::string name = unicode::caselessKey(entry.name);
        for (std::size_t i = 0; i < titles.size(); ++i) {
            // An empty title is found nowhere, as an empty range is no match.
            if (!titles[i].empty() && name.find(titles[i]) != std::string::npos) {
                category.groups()[i]->addFileObj(
                    std::make_shared<NAFileobj>(path::appending(folder, entry.name)));
            }
        }
    }
    // Every group is checked once per entry, after that entry's item is added, so after the
    // last entry every group and every item of it is checked: checking each group once at the
    // end comes to the same and does not walk the items once per entry.
    if (entries.empty())
        return;
    for (const std::shared_ptr<NAGroupObj>& group : category.groups())
        group->setIsChecked(1);
}

}  // namespace

std::optional<std::string> crashReportIdentifier(std::string_view bytes, bool truncated) {
    const std::size_t found = bytes.find("Identifier");
    if (found == std::string_view::npos || !isWellFormedUtf8(bytes, truncated))
        return std::nullopt;
    std::size_t begin = found;
    while (begin > 0 && !newlineEndsBefore(bytes, begin))
        --begin;
    std::size_t end = found;
    while (end < bytes.size() && !newlineStartsAt(bytes, end))
        ++end;
    std::string_view line = bytes.substr(begin, end - begin);
    // Without a colon the whole line is the last piece (rfind's npos + 1 wraps to 0).
    return path::trimmedWhitespace(line.substr(line.rfind(':') + 1));
}

std::string crashReportsFolder() {
    return path::appending(Volume::current().home(), "Library/Logs/DiagnosticReports");
}

std::string crashReporterFolder() {
    return path::appending(Volume::current().home(), "Library/Application Support/CrashReporter");
}

void scanCrashedApplications(const std::shared_ptr<NACategoryObj>& category) {
    scanCrashedApplications(category, AppIndex::build());
}

void scanCrashedApplications(const std::shared_ptr<NACategoryObj>& category, const AppIndex& apps) {
    attributeReports(category, apps);
    attributeReporterEntries(*category);
}

}  // namespace sysmend
