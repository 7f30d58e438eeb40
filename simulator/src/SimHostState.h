// The host framework's state, shared by the service side (SimHost.cpp) and the property lists
// (SimPropertyList.cpp). Internal to the simulator; every access to HostState goes under its mutex.
#pragma once

#include <vyrf.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "sim/Simulator.h"

namespace sim::hostimpl {

extern std::atomic<std::size_t> gLiveLists;
extern std::atomic<std::size_t> gLiveProperties;

struct SimProperty {
    std::string name;
    bool named = true;
    HostProperty::Kind kind = HostProperty::Kind::String;
    std::string text;
    int intValue = 0;
    bool boolValue = false;

    SimProperty() { ++gLiveProperties; }
    SimProperty(const SimProperty& other)
        : name(other.name), named(other.named), kind(other.kind), text(other.text),
          intValue(other.intValue), boolValue(other.boolValue) {
        ++gLiveProperties;
    }
    ~SimProperty() { --gLiveProperties; }
};

struct SimList {
    std::deque<std::unique_ptr<SimProperty>> items;
    uint64_t origin = 0;  // the transaction whose request this list is (or is a copy of); 0 none
    SimList() { ++gLiveLists; }
    ~SimList() { --gLiveLists; }
};

struct SimService {
    std::string name;
    std::string description;
    vyrf_protocol_status_cb onProtocolStatus;
    vyrf_get_request_cb onGet;
    vyrf_set_request_cb onSet;
    vyrf_cancel_request_cb onCancel;
    void* userData;
    std::vector<RegisteredProperty> properties;
    bool alive = true;
};

struct HostState {
    std::mutex mutex;
    std::condition_variable resultArrived;
    // Services are never freed, so a handle used after destruction is recognised as such.
    std::vector<std::unique_ptr<SimService>> services;
    std::set<const SimList*> lists;
    std::vector<SetResult> results;
    bool keepResults = true;
    std::function<void(const SetResult&)> listener;
    std::map<HostFault, int> faults;
    uint64_t nextTransaction = 1;
    std::size_t badServiceCalls = 0;
};

HostState& State();  // never destroyed: plugin threads may answer late
// Consumes one injected failure of that kind, if any. Under lock.
bool Fails(HostState& s, HostFault fault);
std::string Text(vyrf_string s);
// A live service for the handle, or null (counted as a call with a bad service). Under lock.
SimService* LiveService(HostState& s, vyrf_service_h handle);
// The list behind a handle; aborts on a list that does not exist. Takes the lock.
SimList* CheckedList(vyrf_property_list_h handle, const char* function);
SimList* NewList();
// The calling thread reads `list`: a list of a request makes the thread serve that request.
void NoteRead(const SimList* list);
void DeleteList(SimList* list);

}  // namespace sim::hostimpl
