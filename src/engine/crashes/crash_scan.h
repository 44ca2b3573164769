// Crash reports of the current user, grouped by the installed application that crashed.
//
// Two folders of the home folder are listed once, flat (no recursion, hidden entries
// included, in the walker's sorted order; a missing folder lists nothing):
//   - the reports folder, "Library/Logs/DiagnosticReports": each report is attributed by its
//     content to the application its identifier line names; reports of applications that are
//     not installed, reports without an identifier line, files that are not UTF-8 text and
//     sub-folders are dropped;
//   - the reporter folder, "Library/Application Support/CrashReporter": each entry is added, by
//     name, to every group whose title its name contains, ignoring case and Unicode normal
//     form (unicode::caselessKey: "élan_1.plist" joins "Élan", NFD or NFC). This pass never
//     makes groups. When the folder has any entry at all, every group ends checked, matched or
//     not; when it is empty, groups and items keep the unchecked mark new ones start with.
//
// One group per application (NAGroupObj titled with the bundle's name less ".app", with the
// bundle's icon and the category set), holding one NAFileobj(path) per report, in listing
// order. Failures are silent.
//
// Threads: the scan runs on one pool thread and writes only the category it is given, without
// a lock; the result page must not read the groups before the scan has returned.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/na_category_obj.h"
#include "platform/app_index.h"

namespace sysmend {

// Bytes read from one report at most, so that a huge or endless file costs bounded time and
// memory. Reports are a few hundred KiB at most and their identifier line is near the top, so
// the rule below is exact for every real one; a longer file is judged by its first 8 MiB.
inline constexpr std::size_t kCrashReportReadLimit = std::size_t{8} << 20;

// The bundle identifier a report's text names: its first line that contains "Identifier"
// (case-sensitive, anywhere in the line), split at ":", the last piece, trimmed of blanks and
// tabs. Lines end at any newline character (LF, VT, FF, CR, NEL, U+2028, U+2029). nullopt when
// there is no such line or the bytes are not well-formed UTF-8, which makes the whole report
// unreadable as text. `truncated` says the bytes are the start of a longer file: a character
// cut at the end is then no fault.
std::optional<std::string> crashReportIdentifier(std::string_view bytes, bool truncated = false);

// Volume paths of the two folders in the current volume's home folder.
std::string crashReportsFolder();
std::string crashReporterFolder();

// Both passes over the current volume, into category->groups(). Groups already there take
// part (a report joins the first group with its title), so the caller empties them first: the
// page does so before it asks for access. The overload without an index builds one for this
// scan.
void scanCrashedApplications(const std::shared_ptr<NACategoryObj>& category);
void scanCrashedApplications(const std::shared_ptr<NACategoryObj>& category, const AppIndex& apps);

}  // namespace sysmend
