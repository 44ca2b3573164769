// sample-volume DIR: writes a small, made-up Mac volume to try Sysmend on: a user with a few
// applications, launch agents and daemons, crash reports and the firewall preferences.
#include <ostream>

#include "cli.h"
#include "support/fake_volume.h"

namespace sysmend::cli {
namespace {

void populate(testing::FakeVolume& v) {
    const std::string& home = v.home();
    using testing::AppSpec;
    auto app = [](std::string folder, std::string name, std::string bundleId) {
        AppSpec spec;
        spec.folder = std::move(folder);
        spec.name = std::move(name);
        spec.bundleId = std::move(bundleId);
        return spec;
    };
    AppSpec notes = app("/Applications", "Inkwell Notes", "net.example.inkwell");
    notes.version = "412";
    notes.minimumSystem = "10.13";
    notes.copyright = "Copyright © 2024 Example Software. All rights reserved.";
    notes.developmentRegion = "en";
    notes.payloadBytes = 2'400'000;
    v.addApp(notes);

    AppSpec sync = app("/Applications", "CloudSync", "com.example.cloudsync");
    sync.version = "3.2.1";
    sync.payloadBytes = 8'700'000;
    v.addApp(sync);

    AppSpec player = app("/Applications/Media Tools", "Tune Player", "org.example.tuneplayer");
    player.developmentRegion = "de";
    player.payloadBytes = 650'000;
    v.addApp(player);

    AppSpec helper = app("/Applications", "Menu Weather", "io.example.menuweather");
    helper.infoFormat = plist::Format::Binary;
    helper.payloadBytes = 120'000;
    v.addApp(helper);

    v.addLaunchJob(home + "/Library/LaunchAgents", "com.example.cloudsync.plist",
                   "com.example.cloudsync");
    v.addLaunchJob(home + "/Library/LaunchAgents", "io.example.menuweather.plist",
                   "  io.example.menuweather\t");
    v.addLaunchJob("/Library/LaunchAgents", "com.example.cloudsync.helper.plist",
                   "com.example.cloudsync");
    v.addLaunchJob("/Library/LaunchDaemons", "org.example.backupd.plist", "org.example.backupd");
    v.addLaunchJob("/System/Library/LaunchAgents", "com.apple.sample.plist", "com.apple.sample");

    v.addCrashReport("CloudSync_2026-11-02-101512_Mac.crash", "com.example.cloudsync");
    v.addCrashReport("CloudSync_2026-11-09-083001_Mac.crash", "com.example.cloudsync");
    v.addCrashReport("Tune Player_2026-10-30-211455_Mac.crash", "org.example.tuneplayer");
    v.addCrashReport("OldGame_2025-01-01-120000_Mac.crash", "com.example.oldgame");
    v.write(home + "/Library/Application Support/CrashReporter/CloudSync_3F2A.plist",
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict/></plist>\n");

    v.setFirewall(1);
}

int runSampleVolume(Invocation& inv) {
    rejectUnknownOptions(inv.args);
    if (inv.args.size() != 1)
        throw UsageError("sample-volume needs one DIR");
    std::string user = inv.options.home.empty() ? "alice" : inv.options.home;
    if (auto slash = user.rfind('/'); slash != std::string::npos)
        user = user.substr(slash + 1);
    testing::FakeVolume volume(inv.args.front(), user);
    populate(volume);
    inv.out << "sample volume written to " << volume.root() << " (home " << volume.home() << ")\n";
    return 0;
}

const CommandRegistrar kSampleVolume({"sample-volume",
                                      "sample-volume DIR  write a made-up Mac volume to DIR",
                                      &runSampleVolume});

}  // namespace
}  // namespace sysmend::cli
