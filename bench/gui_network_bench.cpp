// What the Firewall page and the leftovers sheet cost the GUI thread, on the offscreen
// platform: one polling tick of the Firewall page (read the preference file, show the status),
// which runs every 4 seconds while the page is open; and handing a list of failed items to the
// leftovers sheet and drawing it, for lists of 10 to 100,000 items.
//
//   QT_QPA_PLATFORM=offscreen gui_network_bench [benchmark flags]
//
// The user defaults and the volume live in temporary folders removed afterwards.

#include <benchmark/benchmark.h>

#include <QTemporaryDir>
#include <memory>
#include <string>

#include "appviewer/na_show_left_over_sheet.h"
#include "gui_bench_support.h"
#include "network/na_firewall_pvc.h"
#include "platform/volume.h"
#include "sample/fake_volume.h"
#include "sandbox/app_sandbox_file_access.h"

namespace {

using namespace sysmend;

sample::FakeVolume* gVolume = nullptr;

using bench::settle;

void BM_FirewallPollTick(benchmark::State& state) {
    gVolume->setFirewall(1);
    AppSandboxFileAccess::fileAccess().persistPermissionPath("/Library/Preferences");
    NAFirewallPVC page;
    page.loadView();
    page.resize(720, 540);
    page.show();
    settle();
    if (!page.isAccessed()) {
        state.SkipWithError("no access to /Library/Preferences");
        return;
    }
    for (auto _ : state) {
        page.checkFirewallStatus();
        settle();
    }
    if (page.status_text->text() != QStringLiteral("Firewall is on"))
        state.SkipWithError("the status is not shown");
}
BENCHMARK(BM_FirewallPollTick)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_LeftoversSheetReload(benchmark::State& state) {
    NAFileobjArray failed;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        auto item = std::make_shared<NAFileobj>();
        item->setFilePath("/Users/alice/Library/Caches/com.example.helper/item-" +
                          std::to_string(i) + ".cache");
        failed.push_back(item);
    }
    NAShowLeftOverSheet sheet;
    sheet.loadWindow();
    sheet.show();
    settle();
    for (auto _ : state) {
        sheet.setLeftOverFiles(&failed);
        settle();
        state.PauseTiming();
        sheet.setLeftOverFiles(nullptr);
        settle();
        state.ResumeTiming();
    }
    sheet.setLeftOverFiles(&failed);
    settle();
    if (sheet.table()->rowCount() != state.range(0))
        state.SkipWithError("the list is not shown");
}
BENCHMARK(BM_LeftoversSheetReload)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    QTemporaryDir config;
    qputenv("SYSMEND_CONFIG_DIR", config.path().toLocal8Bit());
    sample::FakeVolume volume;
    gVolume = &volume;
    Volume::setCurrent(volume.volume());

    return sysmend::bench::runGuiBenchmarks(argc, argv);
}
