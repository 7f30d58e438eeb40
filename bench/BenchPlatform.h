// Shared set-up of the benchmarks: the plugin loaded once into the simulator the way the host
// loads it, quiet logs, answers counted as they arrive, and the payloads of the measurements.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include "ServiceContract.h"

namespace sim {
struct HostProperty;
}  // namespace sim

namespace irbench {

constexpr const char* kService = ircontrol::contract::kServiceName;
constexpr const char* kDevicesKey = ircontrol::contract::kDevicesKey;
// The pairing list the plugin starts with: one fan and one air conditioner.
constexpr char kDefaultDevices[] =
    R"({"dev_info":[{"codeset":"HFAN0001","device_index":1},{"codeset":"ZAC00005","device_index":5}]})";

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
// Sends one set request carrying `property` and blocks until its answer has arrived.
void SendAndWait(const sim::HostProperty& property);
// When the latest answer reached the host (stamped inside the host's answer call, on the
// plugin's worker thread, before any waiting thread is woken).
std::chrono::steady_clock::time_point LastAnswerTime();

// CPU time of the whole process (every thread, kernel time included), in microseconds.
double ProcessCpuMicros();

// User and kernel CPU time of every thread but the calling one, in microseconds, from
// /proc/self/task (clock-tick resolution: sum over many requests).
struct CpuTimes {
    double user = 0;
    double kernel = 0;
};
CpuTimes OtherThreadsCpuMicros();

// Resident set size of this process, in KiB.
long ResidentKiB();

}  // namespace irbench
