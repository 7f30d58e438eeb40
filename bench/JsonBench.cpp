// The JSON work a key event cannot avoid, measured alone: the floor of the end-to-end cost.
#include <benchmark/benchmark.h>

#include "BenchPlatform.h"
#include "JsonValue.h"
#include "sim/Simulator.h"

namespace {

using common::json::JsonValue;

// What the handlers do with json-glib per fan key: parse the payload and read the device type;
// parse it again in the device and read the three members; parse the pairing list and walk it.
void KeyEventJsonWork(const std::string& payload, const std::string& pairing, const std::string& codeset) {
    const JsonValue first = JsonValue::Create(payload);
    benchmark::DoNotOptimize(first["x.com.korvan.deviceType"].asString());
    const JsonValue second = JsonValue::Create(payload);
    benchmark::DoNotOptimize(second["x.com.korvan.codesetName"].asString());
    benchmark::DoNotOptimize(second["x.com.korvan.codesetKey"].asInt());
    benchmark::DoNotOptimize(second["x.com.korvan.deviceType"].asString());
    const JsonValue devices = JsonValue::Create(pairing);
    const JsonValue& list = devices["dev_info"];
    for (unsigned i = 0; i < list.size(); ++i) {
        if (list[i]["codeset"].asString() == codeset) {
            benchmark::DoNotOptimize(list[i]["device_index"].asInt());
            break;
        }
    }
}

void BM_Floor_FanKeyJson(benchmark::State& state) {
    sim::Log::SetCapture(false);
    const std::string payload = irbench::FanPayload();
    const std::string pairing = irbench::kDefaultDevices;
    for (auto _ : state) KeyEventJsonWork(payload, pairing, "HFAN0001");
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Floor_FanKeyJson)->Repetitions(5)->ReportAggregatesOnly(true);

// The same work with a pairing list of 1 to 1,000 entries, the codeset matched last: the floor
// of the scaling measurement.
void BM_Floor_PairingEntries(benchmark::State& state) {
    sim::Log::SetCapture(false);
    const std::string payload = irbench::FanPayload();
    const std::string pairing = irbench::PairingList(static_cast<int>(state.range(0)), "HFAN0001");
    for (auto _ : state) KeyEventJsonWork(payload, pairing, "HFAN0001");
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Floor_PairingEntries)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);

void BM_Json_ParseDeviceInfo(benchmark::State& state) {
    const std::string payload = irbench::AcPayload();
    for (auto _ : state) {
        const JsonValue value = JsonValue::Create(payload);
        const JsonValue& ac = value["x.com.korvan.acState"];
        benchmark::DoNotOptimize(ac["x.com.korvan.coolingSetpoint"].asInt());
        benchmark::DoNotOptimize(ac["x.com.korvan.mode"].asString());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * payload.size()));
}
BENCHMARK(BM_Json_ParseDeviceInfo);

}  // namespace
