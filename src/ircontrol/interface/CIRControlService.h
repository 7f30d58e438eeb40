// Binds the service to the host framework: creates the "ircontrol" host service, registers its
// properties, receives the host's callbacks and sends each request's answer back as a list of
// two string properties, "errorCode" then "description".
// Init/Deinit are called only by the core (serialised there); the callbacks run on any host
// thread and never let an exception reach the host; answers are sent from the queue's thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include <vyrf.h>

#include "common/Types.h"
#include "interface/CEventReceiver.h"

namespace ircontrol {

class CIRControlService {
public:
    CIRControlService();
    ~CIRControlService();
    CIRControlService(const CIRControlService&) = delete;
    CIRControlService& operator=(const CIRControlService&) = delete;

    // Starts: host service, property registrations, event receiver. A refused service creation
    // is only logged; any exception is logged and rethrown to the core.
    void Init();
    // Stops in reverse order; safe on a half-started service.
    void Deinit();

    // Host callbacks; user_data is the CIRControlService.
    static void setRequestCallback(vyrf_service_h service, vyrf_transaction_h transaction,
                                   vyrf_property_list_h list, void* user_data);
    static void getRequestCallback(void* service, void* transaction, void* list, void* user_data);
    static void cancelRequestCallback(void* service, void* transaction, void* user_data);
    static void protocolStatusCallback(void* service, vyrf_string protocol,
                                       vyrf_protocol_status status, void* user_data);

private:
    vyrf_service_h createService();
    void destroyService();
    void registerProperty(vyrf_service_h service);
    void unregisterProperty();
    void handleRequest(std::shared_ptr<CRequest> request);
    void onSetRequest(vyrf_service_h service, vyrf_transaction_h transaction,
                      vyrf_property_list_h list);
    void sendResponse(uint64_t start, vyrf_service_h service, vyrf_transaction_h transaction,
                      const std::string& errorCode, const std::string& description);

    vyrf_service_h serviceHandle_ = nullptr;
    std::recursive_mutex mutex_;
    CEventReceiver eventReceiver_;

    // An answer goes out only while the start that took its request in is the live one: each
    // start that gets a host service gets a new number, a stop sets 0. Read without a lock, so
    // no lock of the service is ever held while the host runs (see sendResponse).
    std::atomic<uint64_t> liveStart_{0};
    uint64_t starts_ = 0;  // under mutex_
};

}  // namespace ircontrol
