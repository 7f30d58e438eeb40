#include "core/CIRControl.h"

#include <exception>

#include "JsonValue.h"
#include "common/CException.h"
#include "common/Constants.h"
#include "common/ServiceLog.h"
#include "ir/CIRDeviceFactory.h"
#include "util/IPropertyListHelper.h"

namespace ircontrol {

CIRControl::~CIRControl() = default;

void CIRControl::Init() {
    IRC_ENTER();
    IRC_LEAVE();
}

void CIRControl::Deinit() {
    IRC_ENTER();
    IRC_LEAVE();
}

void CIRControl::HandleKeyEvent(std::shared_ptr<CRequest> request) {
    IRC_ENTER_DEBUG();
    std::shared_ptr<IPropertyListHelper> list = request->GetPropertyListHelper();
    try {
        if (!list) throw CException("property_list null!", 5);
        const std::string text = list->GetJsonString(kPropSetKeyEvent);
        if (text.empty()) throw CException("setKeyEvent property Empty!!", 5);
        IRC_LOGI("key event str: %s", text.c_str());

        const common::json::JsonValue payload = common::json::JsonValue::Create(text);
        if (payload.isNull()) throw CException("json obj null", 2);
        const common::json::JsonValue& deviceType = payload[kAttrDeviceType];
        if (deviceType.isNull()) {
            // Left unanswered on purpose: the sender learns nothing of a payload that does not
            // say what it is for.
            IRC_LOGE("there is no deviceType obj. wrong data");
            return;
        }
        std::shared_ptr<IIRDevice> device = CIRDeviceFactory::CreateDevice(deviceType.asString());
        device->BlastIR(text);  // the payload as received, parsed again by the device
        request->SendResponse(Success);
    } catch (const std::exception& e) {
        IRC_LOGE("error occured: %s", e.what());
        request->SendResponse(KeyEventError);
    }
    IRC_LEAVE_DEBUG();
}

void CIRControl::HandleDeviceEvent(std::shared_ptr<CRequest> request) {
    IRC_ENTER();
    std::shared_ptr<IPropertyListHelper> list = request->GetPropertyListHelper();
    try {
        if (!list) throw CException("property_list null!", 5);
        const std::string text = list->GetJsonString(kPropSetDeviceEvent);
        IRC_LOGI("device_event_json: %s", text.c_str());
        request->SendResponse(Success);
    } catch (const std::exception& e) {
        IRC_LOGE("error occured: %s", e.what());
        request->SendResponse(DeviceEventError);
    }
    IRC_LEAVE();
}

}  // namespace ircontrol
