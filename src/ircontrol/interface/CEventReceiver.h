// Dispatches a set request by the names of the properties it carries, each known name to its
// handler, which hands the request to the receive controller. Runs on host callback threads and
// takes no lock; catches nothing (an unnamed property's CException leaves HandleEvent).
#pragma once

#include <functional>
#include <unordered_map>

#include "common/Types.h"
#include "controller/CRecvController.h"

namespace ircontrol {

class CEventReceiver {
public:
    using Handler = std::function<void(RequestSharedPtr)>;

    CEventReceiver();
    virtual ~CEventReceiver();

    void Init();      // starts the receive controller (and with it the queue's worker)
    void Deinit();    // stops the receive controller; the handler map stays
    void HandleEvent(RequestSharedPtr request);

private:
    std::unordered_map<PropertyName, Handler> makeHandlerMap();
    Handler createSetKeyEventHandler();
    Handler createSetDeviceEventHandler();

    CRecvController recvController_;
    // Built once at construction and only read afterwards, so host threads that deliver
    // requests while the service starts never see it half-written.
    const std::unordered_map<PropertyName, Handler> handlerMap_;
};

}  // namespace ircontrol
