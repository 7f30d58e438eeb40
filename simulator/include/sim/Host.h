// The simulated host framework, driven from the host side: services, set/get/cancel requests,
// the answers the plugin sends back, failure injection.
// One piece of the simulator's control API (see sim/Simulator.h); every function is thread-safe.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace sim {

struct HostProperty {
    enum class Kind { String, Int, Bool, Json };
    std::string name;    // an empty name makes an unnamed property (get_name fails on it)
    Kind kind = Kind::String;
    std::string text;    // String and Json
    int intValue = 0;
    bool boolValue = false;

    static HostProperty String(const std::string& name, const std::string& value);
    static HostProperty Int(const std::string& name, int value);
    static HostProperty Bool(const std::string& name, bool value);
    static HostProperty Json(const std::string& name, const std::string& text);
};

struct RegisteredProperty {
    std::string name;
    int type;
    int64_t first;
    int64_t second;
    std::string description;
};

struct ServiceInfo {
    void* handle;
    std::string name;
    std::string description;
    std::vector<RegisteredProperty> properties;   // registration order
};

struct SetResult {
    uint64_t transaction;
    void* service;
    int error;                                    // the error argument of the send call
    std::vector<HostProperty> properties;         // list contents, in list order
    bool serviceAlive;                            // false if sent for a destroyed/unknown service
    std::chrono::steady_clock::time_point time{};  // when the plugin sent it
};

enum class HostFault {
    ServiceCreate,      // vyrf_service_create returns NULL
    RegisterProperty,   // vyrf_service_register_property returns non-zero
    ListCreate,         // vyrf_property_list_create returns NULL
    ListCopy,           // vyrf_property_list_copy returns NULL
    SendResult,         // vyrf_service_send_set_property_result returns non-zero (list still taken)
};

class Host {
public:
    static std::vector<ServiceInfo> Services();   // live services, creation order
    static std::optional<ServiceInfo> FindService(const std::string& name);

    // Builds a property list from `properties`, calls the named service's set callback on the
    // calling thread, destroys the list when the callback returns and gives the transaction id
    // (> 0). Throws std::runtime_error if no live service has that name.
    static uint64_t SendSet(const std::string& service, const std::vector<HostProperty>& properties);
    static void SendGet(const std::string& service, const std::vector<HostProperty>& properties);
    static void SendCancel(const std::string& service);
    static void SendProtocolStatus(const std::string& service, const std::string& protocol, int status);

    // The first result sent for `transaction`, waiting until the deadline.
    static std::optional<SetResult> WaitResult(uint64_t transaction, std::chrono::milliseconds timeout);
    static std::vector<SetResult> Results();      // every result, arrival order
    static std::vector<SetResult> ResultsFor(uint64_t transaction);
    // Keep results (default on); a listener sees each result as it arrives, on the sender's thread.
    static void SetKeepResults(bool on);
    static void SetResultListener(std::function<void(const SetResult&)> listener);

    // The next `times` calls of that kind fail (-1: every call until cleared).
    static void InjectFault(HostFault fault, int times = 1);
    static void ClearFaults();

    // The transaction the calling thread serves, 0 if none. A thread serves a request while the
    // host's set callback for it runs, and from reading a property list of that request (the
    // host's or a copy of it) until it answers that request or reads a list of another one.
    // IR calls and log lines carry the transaction their thread served (IrCall, LogLine).
    static uint64_t ServingTransaction();

    // Counters for leak checks: lists and properties currently alive in the simulator.
    static std::size_t LiveLists();
    static std::size_t LiveProperties();
    // Host calls made with a NULL or unknown service handle (register, unregister, destroy, send).
    static std::size_t CallsWithBadService();
};

}  // namespace sim
