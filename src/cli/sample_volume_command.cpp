// sample-volume DIR: writes a small, made-up Mac volume to try Sysmend on: a user with a few
// applications (signed, with entitlements), launch agents and daemons, crash reports, browser
// profiles with extensions, the firewall preferences, and a handful of leftovers of known
// adware families so that Vexbane has something to find. Nothing in it is executable.
#include <ostream>

#include "cli.h"
#include "sample/fake_volume.h"
#include "sample/macho_builder.h"

namespace sysmend::cli {
namespace {

using sample::AppSpec;
using sample::FakeVolume;

AppSpec appAt(std::string folder, std::string name, std::string bundleId) {
    AppSpec app;
    app.folder = std::move(folder);
    app.name = std::move(name);
    app.bundleId = std::move(bundleId);
    return app;
}

// A bundle whose main executable carries the given entitlements in its code signature.
void addSignedApp(FakeVolume& v, const AppSpec& app, plist::Dictionary entitlements,
                  std::vector<sample::Arch> arches = {sample::Arch::X86_64}) {
    std::string bundle = v.addApp(app);
    sample::MachOSpec binary;
    binary.architectures = std::move(arches);
    binary.entitlements = plist::Value(std::move(entitlements));
    sample::writeBundleExecutable(v.host(bundle), app.name, sample::buildMachO(binary));
}

void addApplications(FakeVolume& v) {
    AppSpec notes = appAt("/Applications", "Inkwell Notes", "net.example.inkwell");
    notes.version = "412";
    notes.minimumSystem = "10.13";
    notes.copyright = "Copyright © 2024 Example Software. All rights reserved.";
    notes.developmentRegion = "en";
    notes.payloadBytes = 2'400'000;
    plist::Dictionary sandboxed;
    sandboxed.set("com.apple.security.app-sandbox", true);
    sandboxed.set("com.apple.security.files.user-selected.read-write", true);
    sandboxed.set("com.apple.security.network.client", true);
    sandboxed.set("com.apple.security.print", true);
    addSignedApp(v, notes, sandboxed, {sample::Arch::X86_64, sample::Arch::Arm64});

    AppSpec sync = appAt("/Applications", "CloudSync", "com.example.cloudsync");
    sync.version = "3.2.1";
    sync.copyright = "© 2025 CloudSync Ltd.";
    sync.payloadBytes = 8'700'000;
    plist::Dictionary unsandboxed;
    unsandboxed.set("com.apple.security.network.client", true);
    unsandboxed.set("com.apple.security.network.server", true);
    addSignedApp(v, sync, unsandboxed);

    AppSpec player = appAt("/Applications/Media Tools", "Tune Player", "org.example.tuneplayer");
    player.developmentRegion = "de";
    player.payloadBytes = 650'000;
    plist::Dictionary media;
    media.set("com.apple.security.app-sandbox", true);
    media.set("com.apple.security.assets.music.read-only", true);
    media.set("com.apple.security.assets.movies.read-write", true);
    media.set("com.apple.security.device.microphone", false);
    addSignedApp(v, player, media, {sample::Arch::Arm64});

    AppSpec weather = appAt("/Applications", "Menu Weather", "io.example.menuweather");
    weather.infoFormat = plist::Format::Binary;
    weather.payloadBytes = 120'000;
    v.addApp(weather);  // unsigned

    AppSpec broken = appAt("/Applications", "Half Installed", "com.example.half");
    broken.omitBundleName = true;  // App Viewer leaves it out
    v.addApp(broken);
    v.mkdir("/Applications/Tools.app");  // named like an application, but no bundle
}

void addStartupItems(FakeVolume& v) {
    const std::string agents = v.home() + "/Library/LaunchAgents";
    v.addLaunchJob(agents, "com.example.cloudsync.plist", "com.example.cloudsync");
    v.addLaunchJob(agents, "io.example.menuweather.plist", "  io.example.menuweather\t");
    v.addLaunchJob(agents + "/Sync", "com.example.cloudsync.login.plist", "com.example.cloudsync");
    v.addLaunchJob("/Library/LaunchAgents", "com.example.cloudsync.helper.plist",
                   "com.example.cloudsync");
    v.addLaunchJob("/Library/LaunchDaemons", "org.example.backupd.plist", "org.example.backupd");
    v.addLaunchJob("/System/Library/LaunchAgents", "com.apple.sample.plist", "com.apple.sample");
    v.writePlist("/Library/LaunchAgents/com.example.list.plist",
                 plist::Value(plist::Array{plist::Value("not a job")}));
}

void addCrashReports(FakeVolume& v) {
    v.addCrashReport("CloudSync_2026-11-02-101512_Mac.crash", "com.example.cloudsync");
    v.addCrashReport("CloudSync_2026-11-09-083001_Mac.crash", "com.example.cloudsync");
    v.addCrashReport("Tune Player_2026-10-30-211455_Mac.crash", "org.example.tuneplayer");
    v.addCrashReportWithLine("Inkwell Notes_2026-11-12-090000_Mac.crash",
                             "Identifier:      helper:net.example.inkwell");
    v.addCrashReport("OldGame_2025-01-01-120000_Mac.crash", "com.example.oldgame");
    v.mkdir(v.home() + "/Library/Logs/DiagnosticReports/Retired");
    v.addCrashReporterEntry("CloudSync_3F2A.plist");
    v.addCrashReporterEntry("tune player_7C1D.plist");
}

// Leftovers of known adware families, named as the shipped signature database knows them.
void addAdware(FakeVolume& v) {
    const std::string& home = v.home();
    v.addLaunchJob(home + "/Library/LaunchAgents", "com.genieo.engine.plist", "com.genieo.engine");
    v.addLaunchJob("/Library/LaunchDaemons", "com.vsearch.daemon.plist", "com.v.daemon");
    v.addLaunchJob("/Library/LaunchAgents", "com.updater.plist", "com.v.agent");
    v.addApp(appAt("/Applications", "Genieo", "com.genieo.app"));
    v.addApp(appAt(home + "/Downloads", "SearchProtect", "com.conduit.searchprotect"));
    v.write("/Library/Frameworks/GenieoExtra.framework/GenieoExtra", std::string(4096, 'g'));

    v.addBrowserExtension(v.chromeExtensionsFolder(), "aoiabcdeffghijklmnopqrstuvwxyzab", "2.1.0_0",
                          R"({"name": "__MSG_appName__", "default_locale": "en",
                              "version": "2.1.0", "icons": {"48": "icon48.png"}})",
                          {{"en", R"({"appName": {"message": "Amazon Shopping Assistant"}})"}});
    v.addBrowserExtension(v.chromeExtensionsFolder(), "cjpalhdlnbpafiamejdnhcphjbkeiagm",
                          "1.60.0_0",
                          R"({"name": "Privacy Guard", "version": "1.60.0",
                              "icons": {"16": "img/16.png", "128": "img/128.png"}})");
    v.addBrowserExtension(v.operaExtensionsFolder(), "opnyontoolayers", "3.0_0",
                          R"({"name": "Yontoo", "icons": {"32": "y.png"}})");

    const std::string profile = "q1w2e3r4.default-release";
    const std::string profileFolder =
        home + "/Library/Application Support/Firefox/Profiles/" + profile;
    v.write(profileFolder + "/extensions/walletbee@example.xpi", std::string(2048, 'w'));
    v.write(profileFolder + "/extensions/reader@example.org.xpi", std::string(1024, 'r'));
    v.addFirefoxRegistry(profile, R"({"schemaVersion": 16, "addons": [
        {"id": "walletbee@example", "descriptor": ")" +
                                      profileFolder + R"(/extensions/walletbee@example.xpi",
         "defaultLocale": {"name": "WalletBee"}},
        {"id": "reader@example.org", "descriptor": ")" +
                                      profileFolder + R"(/extensions/reader@example.org.xpi",
         "defaultLocale": {"name": "Quiet Reader"}}]})");

    const std::string safari = home + "/Library/Safari/Extensions";
    v.write(safari + "/Omnibar.safariextz", std::string(3000, 's'));
    v.write(safari + "/Reading List Plus.safariextz", std::string(1500, 's'));
    plist::Dictionary installed;
    installed.set("Installed Extensions",
                  plist::Array{plist::Value("Omnibar.safariextz"),
                               plist::Value("Reading List Plus.safariextz")});
    v.writePlist(safari + "/Extensions.plist", plist::Value(std::move(installed)));
    v.write(home + "/Library/Safari/my-homepage.xml", "<homepage/>");
}

int runSampleVolume(Invocation& inv) {
    rejectUnknownOptions(inv.args);
    if (inv.args.size() != 1)
        throw UsageError("sample-volume needs one DIR");
    std::string user = inv.options.home.empty() ? "alice" : inv.options.home;
    if (auto slash = user.rfind('/'); slash != std::string::npos)
        user = user.substr(slash + 1);
    FakeVolume volume(inv.args.front(), user);
    addApplications(volume);
    addStartupItems(volume);
    addCrashReports(volume);
    addAdware(volume);
    volume.setFirewallPreferences(plist::Value([] {
                                      plist::Dictionary alf;
                                      alf.set("globalstate", 1);
                                      alf.set("stealthenabled", 0);
                                      return alf;
                                  }()),
                                  plist::Format::Binary);
    inv.out << "sample volume written to " << volume.root() << " (home " << volume.home() << ")\n";
    return 0;
}

const CommandRegistrar kSampleVolume({"sample-volume",
                                      "sample-volume DIR  write a made-up Mac volume to DIR",
                                      &runSampleVolume});

}  // namespace
}  // namespace sysmend::cli
