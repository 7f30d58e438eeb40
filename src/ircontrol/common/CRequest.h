// One set-property request from the host: its kind, its property list and the callback that
// answers it. Travels by shared ownership from a host thread to the queue's worker thread; only
// one thread uses it at a time. Destroying a request never answers it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "common/CNoncopyable.h"
#include "common/Types.h"

namespace ircontrol {

class IPropertyListHelper;

enum class RequestType : int32_t {
    Set = 2,  // a set-property request, the only kind the host delivers to this service
};

enum ResponseType : int32_t {
    Success = 0,
    KeyEventError = 1,
    DeviceEventError = 2,
};

class CRequest : private CNoncopyable {
public:
    // (error code text, description text)
    using ResponseCallback = std::function<void(const std::string&, const std::string&)>;

    static RequestSharedPtr Create(RequestType type, std::shared_ptr<IPropertyListHelper> helper,
                                   ResponseCallback callback);

    CRequest(RequestType type, std::shared_ptr<IPropertyListHelper> helper,
             ResponseCallback callback);
    virtual ~CRequest();

    // Answers on the calling thread: maps the result to its two texts and calls the callback.
    // Throws std::bad_function_call for an empty callback; the callback's exceptions pass.
    // Nothing prevents a second answer: answering once is the caller's duty.
    void SendResponse(ResponseType result);

    RequestType GetRequestType() const { return type_; }
    const std::shared_ptr<IPropertyListHelper>& GetPropertyListHelper() const { return helper_; }

private:
    std::string _GetErrorCodeString(ResponseType result);
    std::string _GetErrorDescriptionString(ResponseType result);

    RequestType type_;
    std::shared_ptr<IPropertyListHelper> helper_;
    ResponseCallback callback_;
};

}  // namespace ircontrol
