// Runs every benchmark, then prints the ratio of the end-to-end fan key to its JSON floor and
// the memory growth, from the measured results.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "BenchPlatform.h"

namespace {

// The console table as usual, keeping each run's time and counters for the summary lines.
class RecordingReporter : public benchmark::ConsoleReporter {
public:
    // A reporter given to the library keeps whatever colour it was built with (the library applies
    // --benchmark_color only to its own): colour only on a terminal, so logs and pipes stay clean.
    explicit RecordingReporter(bool colour) : ConsoleReporter(colour ? OO_ColorTabular : OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs) {
            // Single runs, and the median of repeated ones; means and spreads only go to the table.
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median") continue;
            times[run.benchmark_name()] = run.GetAdjustedRealTime();
            for (const auto& [name, counter] : run.counters) counters[run.benchmark_name() + "/" + name] = counter.value;
        }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> times;
    std::map<std::string, double> counters;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    const char* term = std::getenv("TERM");
    RecordingReporter reporter(isatty(STDOUT_FILENO) != 0 && (term == nullptr || std::strcmp(term, "dumb") != 0));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    irbench::StopPlugin();

    // The first recorded value whose name starts with `prefix` (and ends with `suffix`).
    auto find = [&](const std::map<std::string, double>& map, const std::string& prefix,
                    const std::string& suffix = "") {
        for (const auto& [name, value] : map) {
            if (name.rfind(prefix, 0) == 0 && name.size() >= suffix.size() &&
                name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0) {
                return value;
            }
        }
        return -1.0;
    };
    const double floor = find(reporter.times, "BM_Floor_FanKeyJson") / 1e3;
    const double toHost = find(reporter.counters, "BM_EndToEnd_FanKey", "/to_host_us");
    const double roundTrip = find(reporter.times, "BM_EndToEnd_FanKey") / 1e3;
    const double handoff = find(reporter.times, "BM_Floor_ThreadRoundTrip") / 1e3;
    // End to end is the set callback until the answer reaches the host, i.e. the host's answer
    // call; the waiting benchmark thread's own wake-up comes after that.
    if (toHost > 0 && floor > 0) {
        std::printf("end-to-end/floor ratio: %.2f\n", toHost / floor);
        std::printf("fan key: callback to answer at the host %.1f us, to the waiting thread %.1f us; "
                    "JSON floor %.1f us",
                    toHost, roundTrip, floor);
        if (handoff > 0) std::printf("; a bare thread round trip %.1f us", handoff);
        std::printf("\n");
    }
    const double cpu = find(reporter.counters, "BM_EndToEnd_FanKey", "/cpu_us");
    const double user = find(reporter.counters, "BM_EndToEnd_FanKey", "/worker_user_us");
    const double kernel = find(reporter.counters, "BM_EndToEnd_FanKey", "/worker_kernel_us");
    if (cpu > 0 && user > -1 && kernel > -1) {
        std::printf("CPU per fan key: %.1f us in the whole process; the queue's worker %.1f us user, "
                    "%.1f us kernel\n", cpu, user, kernel);
    }
    const double growth = find(reporter.counters, "BM_Memory_100kRequests", "/growth_KiB");
    if (growth > -1) std::printf("resident memory growth over 100,000 requests: %.0f KiB\n", growth);
    benchmark::Shutdown();
    return 0;
}
