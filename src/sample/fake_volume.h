// Builds small macOS volumes in a temporary folder: homes, application bundles, launchd jobs,
// crash reports, the firewall file. Engine tests use it, and `sysmend-cli sample-volume` makes
// the sample volume with it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/plist.h"
#include "platform/volume.h"

namespace sysmend::sample {

struct AppSpec {
    std::string folder = "/Applications";      // volume folder the bundle goes in
    std::string name;                          // "Foo" makes Foo.app
    std::string bundleId;                      // CFBundleIdentifier; empty leaves it out
    std::optional<std::string> bundleName;     // CFBundleName when it differs from name
    bool omitBundleName = false;               // leave CFBundleName out altogether
    std::optional<std::string> version;        // CFBundleVersion
    std::optional<std::string> minimumSystem;  // LSMinimumSystemVersion
    std::optional<std::string> copyright;      // NSHumanReadableCopyright
    std::optional<std::string> developmentRegion;
    plist::Format infoFormat = plist::Format::Xml;
    std::size_t payloadBytes = 0;  // size of an extra resource file, to give the bundle weight
};

class FakeVolume {
  public:
    // A new volume in a fresh temporary folder, with the home folder /Users/<user>; removed
    // with everything in it when the object goes.
    explicit FakeVolume(std::string user = "alice");
    // A volume in an existing (or new) host folder that is kept afterwards.
    FakeVolume(std::string hostRoot, std::string user);
    ~FakeVolume();
    FakeVolume(const FakeVolume&) = delete;
    FakeVolume& operator=(const FakeVolume&) = delete;

    const std::string& root() const { return root_; }
    const std::string& home() const { return home_; }
    Volume volume() const { return Volume(root_, home_); }
    std::string host(std::string_view volumePath) const;

    // Files and folders; parent folders are made as needed. Return the volume path.
    std::string mkdir(std::string_view volumePath);
    std::string write(std::string_view volumePath, std::string_view content);
    std::string writePlist(std::string_view volumePath, const plist::Value& value,
                           plist::Format format = plist::Format::Xml);
    std::string symlink(std::string_view volumePath, std::string_view target);

    // Browser profiles and extensions (defined in fake_volume_browser.cpp).
    // The "Extensions" folders of Chrome's default profile and of Opera in the home folder.
    std::string chromeExtensionsFolder() const;
    std::string operaExtensionsFolder() const;
    // An installed Chrome-style extension, <extensionsFolder>/<id>/<version>/manifest.json
    // holding `manifest`, with a _locales/<locale>/messages.json for each (locale, text) of
    // `messages`. Returns the manifest's volume path.
    std::string addBrowserExtension(
        std::string_view extensionsFolder, std::string_view id, std::string_view version,
        std::string_view manifest,
        const std::vector<std::pair<std::string, std::string>>& messages = {});
    // ~/Library/Application Support/Firefox/Profiles/<profile>/extensions.json.
    std::string addFirefoxRegistry(std::string_view profile, std::string_view json);
    // A copy of a host folder's files (sample files of the test data) under a volume folder.
    std::string copyIn(const std::string& hostFolder, std::string_view volumeFolder);

    // An application bundle with its Info.plist; returns the bundle's volume path.
    std::string addApp(const AppSpec& app);
    // A launchd job file holding {"Label": label, "ProgramArguments": [...]}.
    std::string addLaunchJob(std::string_view folder, std::string_view fileName,
                             std::string_view label);
    // A crash report in ~/Library/Logs/DiagnosticReports with an "Identifier:" line.
    std::string addCrashReport(std::string_view fileName, std::string_view bundleId);
    // /Library/Preferences/com.apple.alf.plist with the given "globalstate".
    std::string setFirewall(std::int64_t globalstate);

    // Startup items, crash reports and firewall: content beyond the basic builders above.
    // addApp with just a folder, a name and a CFBundleIdentifier.
    std::string addAppBundle(std::string_view folder, std::string_view name,
                             std::string_view bundleId);
    // A crash report in ~/Library/Logs/DiagnosticReports whose identifier line is given whole
    // (say "Identifier:\t a:b.c "), between the usual lines of a report.
    std::string addCrashReportWithLine(std::string_view fileName, std::string_view identifierLine);
    // An entry of ~/Library/Application Support/CrashReporter.
    std::string addCrashReporterEntry(std::string_view fileName, std::string_view content = "");
    // /Library/Preferences/com.apple.alf.plist holding any value, in either format.
    std::string setFirewallPreferences(const plist::Value& value,
                                       plist::Format format = plist::Format::Xml);

  private:
    std::string root_;
    std::string home_;
    bool keep_ = false;
};

}  // namespace sysmend::sample
