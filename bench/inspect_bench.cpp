// Cost of the startup-item scan over the five launchd folders, and of the crash scan compared
// with `cat` of the same reports to /dev/null in the same run (warm cache: every benchmark
// runs several times over the same files).
//
//   startup: 2,000 job files, 200 applications; half the labels name one of them.
//   crashes: 10,000 reports of 40 KiB over 50 applications; `cat` reads the same bytes.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "app/na_category_obj.h"
#include "crashes/crash_scan.h"
#include "platform/volume.h"
#include "sample/fake_volume.h"
#include "startup/startup_scan.h"

namespace {

using sysmend::sample::FakeVolume;

constexpr int kJobFiles = 2000;
constexpr int kApps = 200;
constexpr int kReports = 10000;
constexpr std::size_t kReportBytes = 40 * 1024;
constexpr int kCrashingApps = 50;

std::string appId(int i) {
    return "com.example.app" + std::to_string(i);
}

FakeVolume& startupVolume() {
    static const std::unique_ptr<FakeVolume> vol = [] {
        auto made = std::make_unique<FakeVolume>();
        FakeVolume& v = *made;
        for (int i = 0; i < kApps; ++i)
            v.addAppBundle("/Applications", "App" + std::to_string(i), appId(i));
        const std::string folders[] = {v.home() + "/Library/LaunchAgents", "/Library/LaunchAgents",
                                       "/System/Library/LaunchAgents", "/Library/LaunchDaemons",
                                       v.home() + "/Library/LaunchDaemons"};
        for (int i = 0; i < kJobFiles; ++i) {
            const std::string label =
                i % 2 == 0 ? appId(i % kApps) : "org.example.tool" + std::to_string(i);
            v.addLaunchJob(folders[i % 5], "job" + std::to_string(i) + ".plist", label);
        }
        return made;
    }();
    return *vol;
}

FakeVolume& crashVolume() {
    static const std::unique_ptr<FakeVolume> vol = [] {
        auto made = std::make_unique<FakeVolume>();
        FakeVolume& v = *made;
        for (int i = 0; i < kCrashingApps; ++i)
            v.addAppBundle("/Applications", "App" + std::to_string(i), appId(i));
        std::string filler;
        while (filler.size() < kReportBytes)
            filler += "0   libsystem_kernel.dylib   0x00007fff2036e92e __pthread_kill + 10\n";
        for (int i = 0; i < kReports; ++i) {
            std::string report = "Process: App [512]\nIdentifier:  " + appId(i % kCrashingApps) +
                                 "\nVersion: 1.0 (1)\n" + filler;
            report.resize(kReportBytes);
            v.write(v.home() + "/Library/Logs/DiagnosticReports/r" + std::to_string(i) + ".crash",
                    report);
        }
        v.addCrashReporterEntry("App7_3F2A.plist");
        return made;
    }();
    return *vol;
}

void BM_StartupScan(benchmark::State& state) {
    sysmend::ScopedVolume scope(startupVolume().volume());
    for (auto _ : state) {
        sysmend::NACategoryObj category;
        sysmend::NAStartupItemsScan().loadStartusItems(category);
        benchmark::DoNotOptimize(category.groups().data());
        if (category.groups().size() != kJobFiles / 2)
            state.SkipWithError("unexpected number of groups");
    }
}
BENCHMARK(BM_StartupScan)->Unit(benchmark::kMillisecond);

void BM_CrashScan(benchmark::State& state) {
    sysmend::ScopedVolume scope(crashVolume().volume());
    for (auto _ : state) {
        auto category = std::make_shared<sysmend::NACategoryObj>();
        sysmend::scanCrashedApplications(category);
        if (category->groups().size() != kCrashingApps)
            state.SkipWithError("unexpected number of groups");
    }
    state.SetBytesProcessed(state.iterations() * kReports * static_cast<int64_t>(kReportBytes));
}
BENCHMARK(BM_CrashScan)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CatReports(benchmark::State& state) {
    const FakeVolume& vol = crashVolume();
    const std::string command = "cd '" + vol.host(vol.home() + "/Library/Logs/DiagnosticReports") +
                                "' && cat -- * > /dev/null";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("cat failed");
    }
    state.SetBytesProcessed(state.iterations() * kReports * static_cast<int64_t>(kReportBytes));
}
BENCHMARK(BM_CatReports)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
