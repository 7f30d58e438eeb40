// The host framework: services with their registered properties and callbacks, transactions and
// the results the plugin sends back. The property lists themselves are in SimPropertyList.cpp.
#include <algorithm>
#include <stdexcept>

#include "SimHostState.h"
#include "SimInternal.h"

namespace sim {
namespace {

using namespace hostimpl;

SimList* BuildList(const std::vector<HostProperty>& properties) {
    SimList* list = NewList();
    for (const auto& p : properties) {
        auto item = std::make_unique<SimProperty>();
        item->name = p.name;
        item->named = !p.name.empty();
        item->kind = p.kind;
        item->text = p.text;
        item->intValue = p.intValue;
        item->boolValue = p.boolValue;
        list->items.push_back(std::move(item));
    }
    return list;
}

HostProperty ToHostProperty(const SimProperty& p) {
    HostProperty out;
    out.name = p.name;
    out.kind = p.kind;
    out.text = p.text;
    out.intValue = p.intValue;
    out.boolValue = p.boolValue;
    return out;
}

// Finds a live service by name and copies what a call into it needs. Throws if there is none.
SimService FindByName(const std::string& name) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    for (auto& service : s.services) {
        if (service->alive && service->name == name) return *service;
    }
    throw std::runtime_error("no live host service named '" + name + "'");
}

void* HandleOf(const std::string& name) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    for (auto& service : s.services) {
        if (service->alive && service->name == name) return service.get();
    }
    return nullptr;
}

}  // namespace

HostProperty HostProperty::String(const std::string& name, const std::string& value) {
    HostProperty p;
    p.name = name;
    p.kind = Kind::String;
    p.text = value;
    return p;
}

HostProperty HostProperty::Int(const std::string& name, int value) {
    HostProperty p;
    p.name = name;
    p.kind = Kind::Int;
    p.intValue = value;
    return p;
}

HostProperty HostProperty::Bool(const std::string& name, bool value) {
    HostProperty p;
    p.name = name;
    p.kind = Kind::Bool;
    p.boolValue = value;
    return p;
}

HostProperty HostProperty::Json(const std::string& name, const std::string& text) {
    HostProperty p;
    p.name = name;
    p.kind = Kind::Json;
    p.text = text;
    return p;
}

std::vector<ServiceInfo> Host::Services() {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    std::vector<ServiceInfo> out;
    for (auto& service : s.services) {
        if (service->alive) {
            out.push_back({service.get(), service->name, service->description, service->properties});
        }
    }
    return out;
}

std::optional<ServiceInfo> Host::FindService(const std::string& name) {
    for (auto& info : Services()) {
        if (info.name == name) return info;
    }
    return std::nullopt;
}

namespace {
// What a host-side call into a service needs, looked up under the lock and used without it.
struct Target {
    SimService service;
    void* handle;
    uint64_t transaction;
};

Target Prepare(const std::string& name) {
    Target target{FindByName(name), HandleOf(name), 0};
    std::lock_guard<std::mutex> lock(State().mutex);
    target.transaction = State().nextTransaction++;
    return target;
}
}  // namespace

uint64_t Host::SendSet(const std::string& service, const std::vector<HostProperty>& properties) {
    Target t = Prepare(service);
    SimList* list = BuildList(properties);
    list->origin = t.transaction;
    // The calling thread serves the request for as long as the callback runs.
    const uint64_t outer = internal::ServingTransaction();
    internal::SetServingTransaction(t.transaction);
    if (t.service.onSet != nullptr) {
        t.service.onSet(t.handle, reinterpret_cast<vyrf_transaction_h>(t.transaction), list,
                        t.service.userData);
    }
    internal::SetServingTransaction(outer);
    DeleteList(list);  // the host's list lives only for the callback
    return t.transaction;
}

void Host::SendGet(const std::string& service, const std::vector<HostProperty>& properties) {
    Target t = Prepare(service);
    SimList* list = BuildList(properties);
    if (t.service.onGet != nullptr) {
        t.service.onGet(t.handle, reinterpret_cast<vyrf_transaction_h>(t.transaction), list,
                        t.service.userData);
    }
    DeleteList(list);
}

void Host::SendCancel(const std::string& service) {
    Target t = Prepare(service);
    if (t.service.onCancel != nullptr) {
        t.service.onCancel(t.handle, reinterpret_cast<vyrf_transaction_h>(t.transaction), t.service.userData);
    }
}

void Host::SendProtocolStatus(const std::string& service, const std::string& protocol, int status) {
    Target t = Prepare(service);
    if (t.service.onProtocolStatus != nullptr) {
        t.service.onProtocolStatus(t.handle, vyrf_string{protocol.data(), protocol.size()}, status,
                                   t.service.userData);
    }
}

std::optional<SetResult> Host::WaitResult(uint64_t transaction, std::chrono::milliseconds timeout) {
    auto& s = State();
    std::unique_lock<std::mutex> lock(s.mutex);
    std::optional<SetResult> found;
    s.resultArrived.wait_for(lock, timeout, [&] {
        for (const auto& r : s.results) {
            if (r.transaction == transaction) {
                found = r;
                return true;
            }
        }
        return false;
    });
    return found;
}

std::vector<SetResult> Host::Results() {
    std::lock_guard<std::mutex> lock(State().mutex);
    return State().results;
}

std::vector<SetResult> Host::ResultsFor(uint64_t transaction) {
    std::vector<SetResult> out;
    for (auto& r : Results()) {
        if (r.transaction == transaction) out.push_back(r);
    }
    return out;
}

void Host::SetKeepResults(bool on) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().keepResults = on;
}

void Host::SetResultListener(std::function<void(const SetResult&)> listener) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().listener = std::move(listener);
}

void Host::InjectFault(HostFault fault, int times) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().faults[fault] = times;
}

void Host::ClearFaults() {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().faults.clear();
}

uint64_t Host::ServingTransaction() { return internal::ServingTransaction(); }

std::size_t Host::LiveLists() { return gLiveLists.load(); }
std::size_t Host::LiveProperties() { return gLiveProperties.load(); }

std::size_t Host::CallsWithBadService() {
    std::lock_guard<std::mutex> lock(State().mutex);
    return State().badServiceCalls;
}

void internal::ResetHost() {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    for (auto& service : s.services) service->alive = false;
    s.results.clear();
    s.keepResults = true;
    s.listener = nullptr;
    s.faults.clear();
    s.badServiceCalls = 0;
}

}  // namespace sim

using sim::HostFault;
using namespace sim::hostimpl;

extern "C" vyrf_error vyrf_string_new(vyrf_string* out, const char* data, size_t length) {
    if (out == nullptr) return -1;
    out->data = data;
    out->length = data != nullptr ? length : 0;
    return 0;
}

extern "C" vyrf_service_h vyrf_service_create(vyrf_string name, vyrf_string description,
                                              vyrf_protocol_status_cb on_protocol_status,
                                              vyrf_get_request_cb on_get, vyrf_set_request_cb on_set,
                                              vyrf_cancel_request_cb on_cancel, void* user_data) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (Fails(s, HostFault::ServiceCreate)) return nullptr;
    auto service = std::make_unique<SimService>();
    service->name = Text(name);
    service->description = Text(description);
    service->onProtocolStatus = on_protocol_status;
    service->onGet = on_get;
    service->onSet = on_set;
    service->onCancel = on_cancel;
    service->userData = user_data;
    s.services.push_back(std::move(service));
    return s.services.back().get();
}

extern "C" vyrf_error vyrf_service_destroy(vyrf_service_h service) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    SimService* target = LiveService(s, service);
    if (target == nullptr) return -1;
    target->alive = false;
    return 0;
}

extern "C" vyrf_error vyrf_service_register_property(vyrf_service_h service, vyrf_string name,
                                                     int type, int64_t first, int64_t second,
                                                     vyrf_string description) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    SimService* target = LiveService(s, service);
    if (target == nullptr) return -1;
    if (Fails(s, HostFault::RegisterProperty)) return -2;
    target->properties.push_back({Text(name), type, first, second, Text(description)});
    return 0;
}

extern "C" vyrf_error vyrf_service_unregister_property(vyrf_service_h service, vyrf_string name) {
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    SimService* target = LiveService(s, service);
    if (target == nullptr) return -1;
    auto& props = target->properties;
    const std::string key = Text(name);
    auto it = std::find_if(props.begin(), props.end(), [&](const auto& p) { return p.name == key; });
    if (it == props.end()) return -2;
    props.erase(it);
    return 0;
}

extern "C" vyrf_error vyrf_service_send_set_property_result(vyrf_service_h service,
                                                            vyrf_transaction_h transaction,
                                                            vyrf_property_list_h list,
                                                            vyrf_error error) {
    SimList* taken = CheckedList(list, __func__);
    sim::SetResult result;
    result.transaction = reinterpret_cast<uint64_t>(transaction);
    result.time = std::chrono::steady_clock::now();
    result.service = service;
    result.error = error;
    if (taken != nullptr) {
        for (const auto& item : taken->items) result.properties.push_back(sim::ToHostProperty(*item));
        DeleteList(taken);
    }
    std::function<void(const sim::SetResult&)> listener;
    bool failed;
    {
        auto& s = State();
        std::lock_guard<std::mutex> lock(s.mutex);
        result.serviceAlive = LiveService(s, service) != nullptr;
        failed = Fails(s, HostFault::SendResult);
        if (s.keepResults) s.results.push_back(result);
        listener = s.listener;
    }
    State().resultArrived.notify_all();
    // Answering ends the thread's service of that request; what it logs next is not the request's.
    if (sim::internal::ServingTransaction() == result.transaction) sim::internal::SetServingTransaction(0);
    if (listener) listener(result);
    return (!result.serviceAlive || failed || taken == nullptr) ? -1 : 0;
}
