// The host tool's `devices` listing with a pairing list and a catalogue of N entries each: loading
// both files and printing every appliance with its key map. The fitted complexity shows it grows
// linearly (one key-map lookup per appliance, not a scan of the catalogue).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "CPlatformSetup.h"
#include "CPrinter.h"

namespace {

void BM_HostTool_Devices(benchmark::State& state) {
    const auto n = static_cast<int>(state.range(0));
    const std::string devices = "/tmp/ircontrol-bench-devices.json", catalogue = "/tmp/ircontrol-bench-catalogue.json";
    {
        std::ofstream pairing(devices), maps(catalogue);
        pairing << "{\"dev_info\":[";
        maps << "{";
        for (int i = 0; i < n; ++i) {
            const std::string codeset = "C" + std::to_string(i);
            pairing << (i ? "," : "") << "{\"codeset\":\"" << codeset << "\",\"device_index\":" << i
                    << ",\"type\":\"oic.d.fan\"}";
            maps << (i ? "," : "") << "\"" << codeset << "\":{\"power\":10,\"speed_up\":11}";
        }
        pairing << "]}";
        maps << "}";
    }
    ircontrol::host::PlatformOptions options;
    options.devicesFile = devices;
    options.catalogueFile = catalogue;
    for (auto _ : state) {
        ircontrol::host::CPlatformSetup setup;
        std::string error;
        if (!setup.Load(options, error)) state.SkipWithError(error.c_str());
        std::ostringstream out;
        ircontrol::host::CPrinter::Make(out, false)->Devices(setup, ircontrol::host::Request());
        benchmark::DoNotOptimize(out.str().size());
    }
    state.SetComplexityN(n);
    std::remove(devices.c_str());
    std::remove(catalogue.c_str());
}
BENCHMARK(BM_HostTool_Devices)->Arg(2000)->Arg(8000)->Arg(32000)->Unit(benchmark::kMillisecond)->Complexity();

}  // namespace
