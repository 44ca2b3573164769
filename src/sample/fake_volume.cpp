#include "sample/fake_volume.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "platform/path.h"

namespace sysmend::sample {
namespace fs = std::filesystem;

namespace {

std::string makeTempRoot() {
    std::string templ = (fs::temp_directory_path() / "sysmend-vol-XXXXXX").string();
    if (::mkdtemp(templ.data()) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    return templ;
}

}  // namespace

FakeVolume::FakeVolume(std::string user) : root_(makeTempRoot()), home_("/Users/" + user) {
    mkdir(home_);
}

FakeVolume::FakeVolume(std::string hostRoot, std::string user)
    : root_(std::move(hostRoot)), home_("/Users/" + user), keep_(true) {
    fs::create_directories(root_);
    root_ = fs::canonical(root_).string();
    mkdir(home_);
}

FakeVolume::~FakeVolume() {
    if (keep_)
        return;
    std::error_code ec;
    fs::remove_all(root_, ec);
}

std::string FakeVolume::host(std::string_view volumePath) const {
    return volume().hostPath(volumePath);
}

std::string FakeVolume::mkdir(std::string_view volumePath) {
    fs::create_directories(host(volumePath));
    return std::string(volumePath);
}

std::string FakeVolume::write(std::string_view volumePath, std::string_view content) {
    mkdir(path::deletingLastPathComponent(volumePath));
    std::ofstream out(host(volumePath), std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out)
        throw std::runtime_error("cannot write " + std::string(volumePath));
    return std::string(volumePath);
}

std::string FakeVolume::writePlist(std::string_view volumePath, const plist::Value& value,
                                   plist::Format format) {
    Data bytes = plist::serialize(value, format);
    return write(volumePath,
                 std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

std::string FakeVolume::symlink(std::string_view volumePath, std::string_view target) {
    mkdir(path::deletingLastPathComponent(volumePath));
    fs::create_symlink(std::string(target), host(volumePath));
    return std::string(volumePath);
}

std::string FakeVolume::addApp(const AppSpec& app) {
    std::string bundle = path::appending(app.folder, app.name + ".app");
    plist::Dictionary info;
    if (!app.bundleId.empty())
        info.set("CFBundleIdentifier", app.bundleId);
    if (!app.omitBundleName)
        info.set("CFBundleName", app.bundleName.value_or(app.name));
    info.set("CFBundleExecutable", app.name);
    info.set("CFBundlePackageType", "APPL");
    if (app.version)
        info.set("CFBundleVersion", *app.version);
    if (app.minimumSystem)
        info.set("LSMinimumSystemVersion", *app.minimumSystem);
    if (app.copyright)
        info.set("NSHumanReadableCopyright", *app.copyright);
    if (app.developmentRegion)
        info.set("CFBundleDevelopmentRegion", *app.developmentRegion);
    writePlist(bundle + "/Contents/Info.plist", plist::Value(std::move(info)), app.infoFormat);
    if (app.payloadBytes > 0) {
        write(bundle + "/Contents/Resources/payload.bin", std::string(app.payloadBytes, 'x'));
    }
    return bundle;
}

std::string FakeVolume::addLaunchJob(std::string_view folder, std::string_view fileName,
                                     std::string_view label) {
    plist::Dictionary job;
    job.set("Label", std::string(label));
    job.set("ProgramArguments", plist::Array{plist::Value("/usr/bin/true")});
    job.set("RunAtLoad", true);
    return writePlist(path::appending(folder, fileName), plist::Value(std::move(job)));
}

std::string FakeVolume::addCrashReport(std::string_view fileName, std::string_view bundleId) {
    std::string text =
        "Process:               Sample [512]\n"
        "Path:                  /Applications/Sample.app/Contents/MacOS/Sample\n"
        "Identifier:            " +
        std::string(bundleId) +
        "\n"
        "Version:               1.0 (1)\n"
        "Exception Type:        EXC_BAD_ACCESS (SIGSEGV)\n";
    return write(path::appending(home_ + "/Library/Logs/DiagnosticReports", fileName), text);
}

std::string FakeVolume::setFirewall(std::int64_t globalstate) {
    plist::Dictionary alf;
    alf.set("globalstate", globalstate);
    alf.set("stealthenabled", std::int64_t{0});
    return writePlist("/Library/Preferences/com.apple.alf.plist", plist::Value(std::move(alf)));
}

// Startup items, crash reports and firewall: content beyond the basic builders.

std::string FakeVolume::addAppBundle(std::string_view folder, std::string_view name,
                                     std::string_view bundleId) {
    AppSpec app;
    app.folder = folder;
    app.name = name;
    app.bundleId = bundleId;
    return addApp(app);
}

std::string FakeVolume::addCrashReportWithLine(std::string_view fileName,
                                               std::string_view identifierLine) {
    std::string text =
        "Process:               Sample [512]\n"
        "Path:                  /Applications/Sample.app/Contents/MacOS/Sample\n" +
        std::string(identifierLine) +
        "\n"
        "Version:               1.0 (1)\n"
        "Exception Type:        EXC_BAD_ACCESS (SIGSEGV)\n";
    return write(path::appending(home_ + "/Library/Logs/DiagnosticReports", fileName), text);
}

std::string FakeVolume::addCrashReporterEntry(std::string_view fileName, std::string_view content) {
    return write(path::appending(home_ + "/Library/Application Support/CrashReporter", fileName),
                 content);
}

std::string FakeVolume::setFirewallPreferences(const plist::Value& value, plist::Format format) {
    return writePlist("/Library/Preferences/com.apple.alf.plist", value, format);
}

}  // namespace sysmend::sample
