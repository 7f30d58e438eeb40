// Runs every benchmark, then prints the ratio of the end-to-end fan key to its JSON floor and
// the memory growth, from the measured results.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "BenchPlatform.h"

namespace {

// The console table as usual, keeping each run's time and counters for the summary lines.
class RecordingReporter : public benchmark::ConsoleReporter {
public:
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
    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    irbench::StopPlugin();

    auto find = [&](const std::map<std::string, double>& map, const std::string& prefix) {
        for (const auto& [name, value] : map) {
            if (name.rfind(prefix, 0) == 0) return value;
        }
        return -1.0;
    };
    const double endToEnd = find(reporter.times, "BM_EndToEnd_FanKey");
    const double floor = find(reporter.times, "BM_Floor_FanKeyJson");
    if (endToEnd > 0 && floor > 0) std::printf("end-to-end/floor ratio: %.2f\n", endToEnd / floor);
    const double handoff = find(reporter.times, "BM_Floor_ThreadRoundTrip");
    if (endToEnd > 0 && floor > 0 && handoff > 0) {
        std::printf("end-to-end less floor: %.1f us; a bare thread round trip: %.1f us\n",
                    (endToEnd - floor) / 1e3, handoff / 1e3);
    }
    const double growth = find(reporter.counters, "BM_Memory_100kRequests");
    const double growthKiB = reporter.counters.count("BM_Memory_100kRequests/iterations:1/real_time/growth_KiB")
                                 ? reporter.counters["BM_Memory_100kRequests/iterations:1/real_time/growth_KiB"]
                                 : growth;
    if (growthKiB > -1) std::printf("resident memory growth over 100,000 requests: %.0f KiB\n", growthKiB);
    benchmark::Shutdown();
    return 0;
}
