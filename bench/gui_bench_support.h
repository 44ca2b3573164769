// What the GUI benchmarks share: letting the event loop finish a step, and a main that runs
// the benchmarks inside a QApplication on the offscreen platform unless another is asked for.
#pragma once

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCoreApplication>
#include <QEvent>

#include "ui/named_image.h"

namespace sysmend::bench {

// Runs what the last step posted (drawing included) and deletes the widgets it let go.
inline void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

inline int runGuiBenchmarks(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    initGuiResources();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

}  // namespace sysmend::bench
