// A console reporter that also keeps each benchmark's wall and processor milliseconds per run
// (the median when there are repetitions), so a benchmark program can print how it compares
// with the command-line tools it was measured against in the same run. A benchmark that runs
// child processes reports their processor seconds in the counter "child_cpu".
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

class RecordingReporter : public benchmark::ConsoleReporter {
  public:
    struct Times {
        double wall = 0;
        double cpu = 0;
    };

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median")
                continue;
            Times& t = times[run.run_name.function_name];
            t.wall = run.GetAdjustedRealTime();
            auto child = run.counters.find("child_cpu");
            t.cpu =
                child != run.counters.end() ? child->second.value * 1e3 : run.GetAdjustedCPUTime();
        }
        ConsoleReporter::ReportRuns(runs);
    }

    std::map<std::string, Times> times;
};
