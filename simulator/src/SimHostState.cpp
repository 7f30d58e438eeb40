#include "SimHostState.h"

#include <cstdio>
#include <cstdlib>

#include "SimInternal.h"

namespace sim {
namespace {
thread_local uint64_t tServing = 0;
}  // namespace

uint64_t internal::ServingTransaction() { return tServing; }
void internal::SetServingTransaction(uint64_t transaction) { tServing = transaction; }

}  // namespace sim

namespace sim::hostimpl {

void NoteRead(const SimList* list) {
    if (list != nullptr && list->origin != 0) tServing = list->origin;
}

std::atomic<std::size_t> gLiveLists{0};
std::atomic<std::size_t> gLiveProperties{0};

HostState& State() {
    static HostState* state = new HostState();
    return *state;
}

bool Fails(HostState& s, HostFault fault) {
    auto it = s.faults.find(fault);
    if (it == s.faults.end() || it->second == 0) return false;
    if (it->second > 0) --it->second;
    return true;
}

std::string Text(vyrf_string s) {
    return s.data != nullptr ? std::string(s.data, s.length) : std::string();
}

// A live service for the handle, or null (counted as a call with a bad service). Under lock.
SimService* LiveService(HostState& s, vyrf_service_h handle) {
    for (auto& service : s.services) {
        if (service.get() == handle && service->alive) return service.get();
    }
    ++s.badServiceCalls;
    return nullptr;
}

// Using a list that does not exist (never made, or already destroyed) is a bug in the caller:
// stop loudly rather than corrupt memory.
SimList* CheckedList(vyrf_property_list_h handle, const char* function) {
    auto* list = static_cast<SimList*>(handle);
    if (list == nullptr) return nullptr;
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.lists.count(list) == 0) {
        std::fprintf(stderr, "vyrsim: %s called with a dead property list %p\n", function, handle);
        std::abort();
    }
    return list;
}

SimList* NewList() {
    auto* list = new SimList();
    auto& s = State();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.lists.insert(list);
    return list;
}

void DeleteList(SimList* list) {
    {
        auto& s = State();
        std::lock_guard<std::mutex> lock(s.mutex);
        s.lists.erase(list);
    }
    delete list;
}

}  // namespace sim::hostimpl
