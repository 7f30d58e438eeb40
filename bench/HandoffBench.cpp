// The two thread hand-offs every request makes (host thread to the queue's worker, and the
// answer back), measured alone with nothing else on them: the part of the end-to-end time that
// belongs to the machine's scheduler rather than to the service.
#include <benchmark/benchmark.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

void BM_Floor_ThreadRoundTrip(benchmark::State& state) {
    std::mutex mutex;
    std::condition_variable toWorker;
    std::condition_variable toCaller;
    uint64_t sent = 0;
    uint64_t done = 0;
    bool stop = false;
    std::thread worker([&] {
        std::unique_lock<std::mutex> lock(mutex);
        while (true) {
            toWorker.wait(lock, [&] { return stop || sent > done; });
            if (stop) return;
            done = sent;
            toCaller.notify_one();
        }
    });
    for (auto _ : state) {
        std::unique_lock<std::mutex> lock(mutex);
        ++sent;
        toWorker.notify_one();
        toCaller.wait(lock, [&] { return done == sent; });
    }
    {
        std::lock_guard<std::mutex> lock(mutex);
        stop = true;
    }
    toWorker.notify_one();
    worker.join();
}
BENCHMARK(BM_Floor_ThreadRoundTrip)->UseRealTime()->Repetitions(5)->ReportAggregatesOnly(true);

}  // namespace
