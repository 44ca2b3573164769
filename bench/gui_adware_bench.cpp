// A Vexbane scan through the window against the same scan without it, in the same run, on the
// sample volume (written by `sysmend-cli sample-volume` into a temporary folder) with the
// shipped signature database, on the offscreen platform:
//   - BM_engineScan: AdwareScan's initargs and analysisAdware on the calling thread;
//   - BM_buttonToResultPage: a click on the page's start button (access to the home folder
//     already granted) to the result page shown: the scan sheet, the scan on its pool
//     thread, the visits shown on the sheet, the sheet's end and the hand-over.
// The counter to_sheet_end_ms is the part up to the sheet's end, before the result page is
// built; the last lines give the window's overhead, whole and up to the sheet's end. That the
// window keeps drawing while the scan runs shows in sheet_paints (paints of the scan sheet per
// scan) and max_gui_gap_ms (the longest wait of a 10 ms timer on the GUI thread, in the whole
// run: how long the window could not have answered).
// --files=N adds N small files in 100 folders of Chrome's profile cache, each visited twice
// (the profile pass and the browser-folder pass), to see the overhead on a long scan with
// many visits to show.
//
//   gui_adware_bench [--files=0] [benchmark flags]

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "adware/adware_scan.h"
#include "adware/na_adware_removal_pvc.h"
#include "adware/signature_loader.h"
#include "app/app_delegate.h"
#include "bench_support.h"
#include "gui_test_support.h"
#include "platform/volume.h"
#include "recording_reporter.h"
#include "sample/fake_volume.h"
#include "sandbox/app_sandbox_file_access.h"
#include "ui/named_image.h"

namespace {

using namespace sysmend;

constexpr std::size_t kVexbaneRow = 7;

AppDelegate* gDelegate = nullptr;
// Milliseconds from the click to the sheet's end in the window's last run.
double gToSheetEndMs = 0;

NACategoryObj& vexbane() {
    return *gDelegate->categorys().at(kVexbaneRow);
}

void BM_engineScan(benchmark::State& state) {
    auto category = std::make_shared<NACategoryObj>();
    AdwareScan scan(loadSignatureDatabase(), category);
    for (auto _ : state) {
        scan.initargs();
        scan.analysisAdware();
    }
    state.counters["visits"] = static_cast<double>(scan.scanedFiles());
    state.counters["findings"] = static_cast<double>(scan.treats().size());
}

// Clicks the start button and returns once the result page has been shown; then goes back
// to the start page, as starting over does.
void scanThroughTheWindow(NAAdwareRemovalPVC& page, benchmark::State* state) {
    NACategoryObj& category = vexbane();
    page.startButton()->click();
    while (category.displayState() != 1)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (state)
        state->PauseTiming();
    category.setDisplayState(0);
    gDelegate->displayViewController(category);
    QCoreApplication::processEvents();
    if (state)
        state->ResumeTiming();
}

void BM_buttonToResultPage(benchmark::State& state) {
    auto* page = qobject_cast<NAAdwareRemovalPVC*>(gDelegate->PVC(vexbane()));
    if (!page || !page->startButton())
        throw std::runtime_error("the Vexbane start page is missing");
    // One scan first makes the sheet, whose end is then timed as well: the part before it is
    // the start page's, the part after it the result page's.
    scanThroughTheWindow(*page, nullptr);
    using Clock = std::chrono::steady_clock;
    Clock::time_point clicked;
    Clock::duration toSheetEnd{};
    const QMetaObject::Connection ended =
        QObject::connect(page->progressPanel2vc(), &QDialog::finished,
                         [&] { toSheetEnd += Clock::now() - clicked; });
    test::EventCounter<QEvent::Paint> paints;
    page->progressPanel2vc()->installEventFilter(&paints);
    QElapsedTimer sinceTick;
    qint64 longestGap = 0;
    QTimer ticker;
    ticker.setInterval(10);
    QObject::connect(&ticker, &QTimer::timeout,
                     [&] { longestGap = std::max(longestGap, sinceTick.restart()); });
    sinceTick.start();
    ticker.start();
    for (auto _ : state) {
        clicked = Clock::now();
        scanThroughTheWindow(*page, &state);
    }
    ticker.stop();
    page->progressPanel2vc()->removeEventFilter(&paints);
    QObject::disconnect(ended);
    state.counters["sheet_paints"] =
        static_cast<double>(paints.count) / static_cast<double>(state.iterations());
    state.counters["max_gui_gap_ms"] = static_cast<double>(longestGap);
    state.counters["visits"] = static_cast<double>(page->scanedFiles());
    state.counters["findings"] = static_cast<double>(page->treats().size());
    gToSheetEndMs = std::chrono::duration<double, std::milli>(toSheetEnd).count() /
                    static_cast<double>(state.iterations());
    state.counters["to_sheet_end_ms"] = gToSheetEndMs;
}

BENCHMARK(BM_engineScan)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_buttonToResultPage)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);

void addFiles(sample::FakeVolume& volume, long files) {
    const std::string content(100, 'x');
    for (long i = 0; i < files; ++i)
        volume.write(volume.home() + "/Library/Application Support/Google/Chrome/Default/Cache/f" +
                         std::to_string(i % 100) + "/" + std::to_string(i),
                     content);
}

}  // namespace

int main(int argc, char** argv) {
    long files = 0;
    bench::takeFlags(argc, argv,
                     [&](std::string_view arg) { return bench::takeFlag(arg, "--files=", files); });
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir config;
    QTemporaryDir root;
    qputenv("SYSMEND_CONFIG_DIR", config.path().toLocal8Bit());
    const std::string command = std::string("'") + SYSMEND_CLI + "' sample-volume '" +
                                root.path().toStdString() + "' > /dev/null";
    if (std::system(command.c_str()) != 0) {
        std::fprintf(stderr, "could not write the sample volume\n");
        return 1;
    }
    sample::FakeVolume volume(root.path().toStdString(), "alice");
    addFiles(volume, files);
    Volume::setCurrent(volume.volume());

    QApplication app(argc, argv);
    initGuiResources();
    AppSandboxFileAccess::fileAccess().persistPermissionPath(volume.home());
    AppDelegate delegate;
    gDelegate = &delegate;
    delegate.applicationDidFinishLaunching();
    delegate.window()->show();
    delegate.displayViewController(vexbane());
    QCoreApplication::processEvents();

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    const auto engine = reporter.times.find("BM_engineScan");
    const auto window = reporter.times.find("BM_buttonToResultPage");
    if (engine == reporter.times.end() || window == reporter.times.end() ||
        engine->second.wall <= 0)
        return 0;
    const double scan = engine->second.wall;
    std::printf("window / engine: wall %.2f (%.2f ms against %.2f ms), overhead %+.1f%%\n",
                window->second.wall / scan, window->second.wall, scan,
                (window->second.wall / scan - 1.0) * 100.0);
    std::printf(
        "up to the sheet's end: %.2f ms, overhead %+.1f%%; the result page after it: "
        "%.2f ms\n",
        gToSheetEndMs, (gToSheetEndMs / scan - 1.0) * 100.0, window->second.wall - gToSheetEndMs);
    return 0;
}
