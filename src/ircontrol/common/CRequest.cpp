#include "common/CRequest.h"

#include <utility>

#include "common/ServiceLog.h"
#include "util/IPropertyListHelper.h"

namespace ircontrol {

RequestSharedPtr CRequest::Create(RequestType type, std::shared_ptr<IPropertyListHelper> helper,
                                  ResponseCallback callback) {
    return std::make_shared<CRequest>(type, std::move(helper), std::move(callback));
}

CRequest::CRequest(RequestType type, std::shared_ptr<IPropertyListHelper> helper,
                   ResponseCallback callback)
    : type_(type), helper_(std::move(helper)), callback_(std::move(callback)) {
    IRC_ENTER();
    IRC_LEAVE();
}

CRequest::~CRequest() = default;

void CRequest::SendResponse(ResponseType result) {
    IRC_ENTER();
    const std::string errorCode = _GetErrorCodeString(result);
    const std::string description = _GetErrorDescriptionString(result);
    if (!callback_) throw std::bad_function_call();
    callback_(errorCode, description);
    IRC_LEAVE();
}

// The host side reads these texts as they stand.
std::string CRequest::_GetErrorCodeString(ResponseType result) {
    std::string code = "unknown";
    if (result == KeyEventError) {
        code = "key_error";
    } else if (result == DeviceEventError) {
        code = "device_error";
    } else if (result != Success) {
        code = "unknown";
    } else {
        code = "ok";
    }
    return code;
}

std::string CRequest::_GetErrorDescriptionString(ResponseType result) {
    std::string description = "unknown error occured";
    if (result == KeyEventError) {
        description = "a ir key event request got error";
    } else if (result == DeviceEventError) {
        description = "a device event request got error";
    } else if (result != Success) {
        description = "unknown error occured";
    } else {
        description = "a request has been processed successfully";
    }
    return description;
}

}  // namespace ircontrol
