// ircontrol-home-bench: how long an MQTT command takes through the home service, against a bare
// publish-subscribe round trip through the same broker. A mosquitto broker is started on a
// loopback port; the MQTT door, the plugin and the session run in this process as in
// `ircontrol-host service`; a second client plays Home Assistant.
//
//   BM_Home_BareRoundTrip    publish -> broker -> echo client -> broker -> back: two hops, no work
//   BM_Home_CommandToResult  a key command published -> broker -> door -> plugin -> IR call ->
//                            answer -> result topic -> broker -> back; counters: to_ir_us (from
//                            publish to the IR call), to_result_us (to the result received)
//
// The broker runs with mosquitto's defaults; IRC_BENCH_BROKER_NODELAY=1 adds set_tcp_nodelay
// true, which stops the broker's own Nagle delay on what it forwards.
#include <benchmark/benchmark.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <memory>
#include <mutex>

#include "BrokerProcess.h"
#include "CJobRunner.h"
#include "CMosquittoClient.h"
#include "CMqttDoor.h"
#include "CPluginLibrary.h"
#include "sim/Simulator.h"

namespace {

using namespace ircontrol::host;
using Clock = std::chrono::steady_clock;

// Counts the messages a client receives and when the last one came.
struct Inbox {
    std::mutex mutex;
    std::condition_variable arrived;
    uint64_t count = 0;
    Clock::time_point last;

    void Take() {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            ++count;
            last = Clock::now();
        }
        arrived.notify_all();
    }
    // Waits for the message after `seen`; false after `limit`.
    bool Wait(uint64_t seen, Clock::time_point& when, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
        std::unique_lock<std::mutex> lock(mutex);
        const bool ok = arrived.wait_for(lock, limit, [&] { return count > seen; });
        when = last;
        return ok;
    }
};

std::string BrokerExtra() {
    const char* nodelay = std::getenv("IRC_BENCH_BROKER_NODELAY");
    return nodelay != nullptr && std::string(nodelay) == "1" ? "set_tcp_nodelay true\n" : "";
}

class Rig {
public:
    Rig() : broker_(IRC_MOSQUITTO, irctest::CBrokerProcess::FreePort(), BrokerExtra()) {
        broker_.Start();
        sim::ResetAll();
        sim::IrBlaster::SetJournalLimit(1000);
        setup_.Apply();
        std::string error;
        if (!plugin_.Load(IRC_PLUGIN_PATH, error)) throw std::runtime_error(error);
        plugin_.Create();
        config_.clientId = "irbench";
        door_ = std::make_unique<CMqttDoor>(
            config_, service_, [this](std::function<void()> job) { return runner_.Post(std::move(job)); }, session_,
            setup_, nullptr, [](const std::string&) {});
        door_->Attach();
        Connect(service_, "irbench");
        home_.SetHandlers([this] { Subscribe(home_, {"ircontrol/result", "bench/pong"}); },
                          [this](const std::string& topic, const std::string&) {
                              (topic == "bench/pong" ? pongs_ : results_).Take();
                          },
                          nullptr);
        Connect(home_, "irbench-home");
        echo_.SetHandlers([this] { Subscribe(echo_, {"bench/ping"}); },
                          [this](const std::string&, const std::string& payload) {
                              echo_.Publish("bench/pong", payload, false);
                          },
                          nullptr);
        Connect(echo_, "irbench-echo");
        std::this_thread::sleep_for(std::chrono::milliseconds(500));  // the subscriptions settle
        // Until both ways answer (the clients connect and subscribe in the background), then a
        // few more: the first messages of a connection are slower.
        int answered = 0;
        for (int attempt = 0; attempt < 100 && answered < 5; ++attempt) {
            Clock::time_point back;
            const uint64_t pongs = pongs_.count, results = results_.count;
            home_.Publish("bench/ping", "warm", false);
            home_.Publish("ircontrol/HFAN0001/key", "power", false);
            const std::chrono::milliseconds wait(300);
            const bool both = pongs_.Wait(pongs, back, wait) && results_.Wait(results, back, wait);
            answered = both ? answered + 1 : 0;
        }
        if (answered < 5) throw std::runtime_error("the broker does not answer");
    }
    ~Rig() {
        home_.Stop();
        echo_.Stop();
        service_.Stop();
        runner_.Stop();
        plugin_.Destroy();
    }

    CMosquittoClient home_;
    CMosquittoClient echo_;
    Inbox results_;
    Inbox pongs_;

private:
    void Connect(CMosquittoClient& client, const std::string& id) {
        MqttSettings settings;
        settings.broker = BrokerAddress{"127.0.0.1", broker_.Port(), false};
        settings.clientId = id;
        std::string error;
        if (!client.Start(settings, error)) throw std::runtime_error(error);
    }
    static void Subscribe(CMosquittoClient& client, const std::vector<std::string>& topics) {
        for (const auto& topic : topics) client.Subscribe(topic);
    }

    irctest::CBrokerProcess broker_;
    HomeConfig config_;
    CPlatformSetup setup_;
    CPluginLibrary plugin_;
    CSession session_{2000};
    CJobRunner runner_{4096};
    CMosquittoClient service_;
    std::unique_ptr<CMqttDoor> door_;
};

// The rig, made on first use; null (and the reason said) when it cannot be made.
Rig* TheRig() {
    static std::unique_ptr<Rig> rig = [] {
        try {
            return std::make_unique<Rig>();
        } catch (const std::exception& e) {
            std::fprintf(stderr, "ircontrol-home-bench: %s\n", e.what());
            return std::unique_ptr<Rig>();
        }
    }();
    return rig.get();
}

// The newest IR call the plugin made: when it reached the simulated blaster.
Clock::time_point LastIrCall() {
    const auto journal = sim::IrBlaster::Journal();
    for (auto it = journal.rbegin(); it != journal.rend(); ++it) {
        if (it->function == sim::IrCall::Function::SendH) return it->time;
    }
    return {};
}

void BM_Home_BareRoundTrip(benchmark::State& state) {
    Rig* found = TheRig();
    if (found == nullptr) return state.SkipWithError("no broker rig");
    Rig& rig = *found;
    for (auto _ : state) {
        const uint64_t seen = rig.pongs_.count;
        const auto start = Clock::now();
        rig.home_.Publish("bench/ping", "power", false);
        Clock::time_point back;
        if (!rig.pongs_.Wait(seen, back)) return state.SkipWithError("no echo within 10 s");
        state.SetIterationTime(std::chrono::duration<double>(back - start).count());
    }
}
BENCHMARK(BM_Home_BareRoundTrip)->UseManualTime()->Unit(benchmark::kMicrosecond);

void BM_Home_CommandToResult(benchmark::State& state) {
    Rig* found = TheRig();
    if (found == nullptr) return state.SkipWithError("no broker rig");
    Rig& rig = *found;
    double toIr = 0, toResult = 0;
    for (auto _ : state) {
        const uint64_t seen = rig.results_.count;
        const auto start = Clock::now();
        rig.home_.Publish("ircontrol/HFAN0001/key", "power", false);
        Clock::time_point back;
        if (!rig.results_.Wait(seen, back)) return state.SkipWithError("no result within 10 s");
        const double total = std::chrono::duration<double>(back - start).count();
        state.SetIterationTime(total);
        toResult += total;
        toIr += std::chrono::duration<double>(LastIrCall() - start).count();
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["to_ir_us"] = benchmark::Counter(toIr / n * 1e6);
    state.counters["to_result_us"] = benchmark::Counter(toResult / n * 1e6);
}
BENCHMARK(BM_Home_CommandToResult)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
