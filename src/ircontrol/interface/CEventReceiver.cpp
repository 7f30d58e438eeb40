#include "interface/CEventReceiver.h"

#include <string>
#include <vector>

#include "common/CRequest.h"
#include "common/Constants.h"
#include "common/ServiceLog.h"
#include "util/IPropertyListHelper.h"

namespace ircontrol {

CEventReceiver::CEventReceiver() : handlerMap_(makeHandlerMap()) {}

CEventReceiver::~CEventReceiver() = default;

void CEventReceiver::Init() {
    IRC_ENTER();
    recvController_.Init();
    IRC_LEAVE();
}

void CEventReceiver::Deinit() {
    IRC_ENTER();
    recvController_.Deinit();
    IRC_LEAVE();
}

void CEventReceiver::HandleEvent(RequestSharedPtr request) {
    IRC_ENTER();
    IRC_LOGE("request_type: %d", static_cast<int>(request->GetRequestType()));
    const std::vector<std::string> names = request->GetPropertyListHelper()->GetPropertyNameList();
    for (const auto& name : names) {
        IRC_LOGI("property_name: %s", name.c_str());
        auto it = handlerMap_.find(name);
        if (it == handlerMap_.end()) {
            IRC_LOGE("%s not found in map", name.c_str());
            continue;
        }
        it->second(request);
    }
    IRC_LEAVE();
}

std::unordered_map<PropertyName, CEventReceiver::Handler> CEventReceiver::makeHandlerMap() {
    std::unordered_map<PropertyName, Handler> map;
    map[kPropSetKeyEvent] = createSetKeyEventHandler();
    map[kPropSetDeviceEvent] = createSetDeviceEventHandler();
    return map;
}

CEventReceiver::Handler CEventReceiver::createSetKeyEventHandler() {
    return [this](RequestSharedPtr request) {
        IRC_LOGI("recv_controller_ SET_KEY_EVENT");
        recvController_.HandleKeyEvent(std::move(request));
    };
}

CEventReceiver::Handler CEventReceiver::createSetDeviceEventHandler() {
    return [this](RequestSharedPtr request) {
        IRC_LOGI("recv_controller_ SET_DEVICE_EVENT");
        recvController_.HandleDeviceEvent(std::move(request));
    };
}

}  // namespace ircontrol
