// Shared set-up of the benchmarks: the plugin loaded once into the simulator the way the host
// loads it, quiet logs, answers counted as they arrive, and the payloads of the measurements.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

namespace irbench {

constexpr char kService[] = "ircontrol";
constexpr char kDevicesKey[] = "db/tavrell/irplugin/devices";

std::string FanPayload(int key = 10, const std::string& codeset = "HFAN0001");
std::string AcPayload();
// A pairing list of `entries` elements whose last one holds `codeset`.
std::string PairingList(int entries, const std::string& codeset = "HFAN0001");

// Starts the plugin (once per process) and routes answers to WaitForAnswers.
void StartPlugin();
void StopPlugin();

// Answers received since start.
uint64_t Answers();
// Blocks until at least `count` answers have arrived.
void WaitForAnswers(uint64_t count);

// Resident set size of this process, in KiB.
long ResidentKiB();

}  // namespace irbench
