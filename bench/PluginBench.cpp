// The loaded plugin inside the simulator, driven the way the host drives it.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "BenchPlatform.h"
#include "sim/Simulator.h"

namespace {

using Clock = std::chrono::steady_clock;
using sim::HostProperty;

// 1. How long the host's set callback takes while the queue's thread is inside a slow (100 ms)
//    transmission: each batch starts one slow send, then times refused requests (no
//    transmission) enqueued behind it.
void BM_CallbackReturn_BlasterBusy(benchmark::State& state) {
    irbench::StartPlugin();
    const auto slow = HostProperty::Json("setKeyEvent", irbench::FanPayload(10));
    const auto quick = HostProperty::Json("setKeyEvent", irbench::FanPayload(39));  // refused
    std::vector<double> samples;
    uint64_t expected = irbench::Answers();
    constexpr int kBatch = 500;
    int inBatch = kBatch;
    for (auto _ : state) {
        if (inBatch == kBatch) {
            state.PauseTiming();
            irbench::WaitForAnswers(expected);  // the previous batch has drained
            sim::IrBlaster::ClearJournal();
            sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(100));
            sim::Host::SendSet(irbench::kService, {slow});
            ++expected;
            // Timing starts once the worker is on air with the slow send.
            sim::IrBlaster::WaitForTransmissions(1, std::chrono::seconds(10));
            inBatch = 0;
            state.ResumeTiming();
        }
        const auto start = Clock::now();
        sim::Host::SendSet(irbench::kService, {quick});
        samples.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        ++expected;
        ++inBatch;
    }
    sim::IrBlaster::SetTransmitDelay(std::chrono::microseconds(0));
    irbench::WaitForAnswers(expected);
    std::sort(samples.begin(), samples.end());
    if (!samples.empty()) {
        state.counters["median_us"] = samples[samples.size() / 2];
        state.counters["p99_us"] = samples[std::min(samples.size() - 1, samples.size() * 99 / 100)];
    }
}
BENCHMARK(BM_CallbackReturn_BlasterBusy)->Iterations(5000);

// Sends one request at a time and waits for its answer. The benchmark's time is the round trip
// as a waiting thread sees it. Counters, per request: "to_host_us", until the plugin handed the
// answer to the host (before the waiting thread is woken); "cpu_us", the CPU time of the whole
// process; "worker_user_us" and "worker_kernel_us", of every thread but this one (the queue's
// worker; the others sleep). The worker's kernel time includes waking this thread.
void OneAtATime(benchmark::State& state, const HostProperty& property) {
    double toHostMicros = 0;
    const double cpuBefore = irbench::ProcessCpuMicros();
    const irbench::CpuTimes workerBefore = irbench::OtherThreadsCpuMicros();
    for (auto _ : state) {
        const auto start = Clock::now();
        irbench::SendAndWait(property);
        toHostMicros += std::chrono::duration<double, std::micro>(irbench::LastAnswerTime() - start).count();
    }
    const double requests = static_cast<double>(state.iterations());
    if (requests > 0) {
        state.counters["to_host_us"] = toHostMicros / requests;
        const irbench::CpuTimes worker = irbench::OtherThreadsCpuMicros();
        state.counters["cpu_us"] = (irbench::ProcessCpuMicros() - cpuBefore) / requests;
        state.counters["worker_user_us"] = (worker.user - workerBefore.user) / requests;
        state.counters["worker_kernel_us"] = (worker.kernel - workerBefore.kernel) / requests;
    }
    state.SetItemsProcessed(state.iterations());
}

// 2. From the set callback to the answer reaching the host, one request at a time.
void EndToEnd(benchmark::State& state, const std::string& payload) {
    irbench::StartPlugin();
    sim::IrBlaster::SetTransmitDelay(std::chrono::microseconds(0));
    OneAtATime(state, HostProperty::Json("setKeyEvent", payload));
}
void BM_EndToEnd_FanKey(benchmark::State& state) { EndToEnd(state, irbench::FanPayload()); }
void BM_EndToEnd_AcState(benchmark::State& state) { EndToEnd(state, irbench::AcPayload()); }
// Repeated, and summarised by the median: on a virtual machine the threads' placement flips
// a run between two modes (see docs/benchmarks.md).
BENCHMARK(BM_EndToEnd_FanKey)->UseRealTime()->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_EndToEnd_AcState)->UseRealTime()->Repetitions(5)->ReportAggregatesOnly(true);

// 4. The pairing list is read and parsed on every command: its length shows in the cost.
void BM_EndToEnd_PairingEntries(benchmark::State& state) {
    irbench::StartPlugin();
    const int entries = static_cast<int>(state.range(0));
    sim::Settings::SetString(irbench::kDevicesKey, irbench::PairingList(entries, "HFAN0001"));
    OneAtATime(state, HostProperty::Json("setKeyEvent", irbench::FanPayload()));
    sim::Settings::SetString(irbench::kDevicesKey, irbench::kDefaultDevices);
}
BENCHMARK(BM_EndToEnd_PairingEntries)
    ->Arg(1)->Arg(10)->Arg(100)->Arg(1000)
    ->UseRealTime()->Repetitions(5)->ReportAggregatesOnly(true);

// 5. Resident memory before and after 100,000 requests (after a warm-up).
void BM_Memory_100kRequests(benchmark::State& state) {
    irbench::StartPlugin();
    const auto fan = HostProperty::Json("setKeyEvent", irbench::FanPayload());
    const auto refused = HostProperty::Json("setKeyEvent", irbench::FanPayload(39));
    auto run = [&](int count) {
        for (int i = 0; i < count; ++i) irbench::SendAndWait(i % 10 == 0 ? refused : fan);
    };
    for (auto _ : state) {
        run(2000);
        const long before = irbench::ResidentKiB();
        run(100000);
        const long after = irbench::ResidentKiB();
        state.counters["rss_before_KiB"] = static_cast<double>(before);
        state.counters["rss_after_KiB"] = static_cast<double>(after);
        state.counters["growth_KiB"] = static_cast<double>(after - before);
    }
}
BENCHMARK(BM_Memory_100kRequests)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

}  // namespace
