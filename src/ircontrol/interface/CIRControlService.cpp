#include "interface/CIRControlService.h"

#include <exception>
#include <memory>

#include "common/CException.h"
#include "common/CRequest.h"
#include "common/Constants.h"
#include "common/ServiceLog.h"
#include "util/VyrfString.h"
#include "property/CPropertyManager.h"
#include "util/CVyrfTypeConverter.h"
#include "util/IPropertyListHelper.h"

namespace ircontrol {
namespace {

// Owns an answer list until the host takes it over.
struct ListDeleter {
    void operator()(void* list) const { vyrf_property_list_destroy(list); }
};
using ListHandle = std::unique_ptr<void, ListDeleter>;

}  // namespace

CIRControlService::CIRControlService() = default;
CIRControlService::~CIRControlService() = default;

void CIRControlService::Init() {
    IRC_ENTER();
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    try {
        // Numbered before the host can call in, so every request of this start may answer; a
        // new number even if the host hands out the old handle again, so a job left over from
        // an earlier start answers neither while this one runs nor if it is rolled back.
        liveStart_ = ++starts_;
        vyrf_service_h service = createService();
        if (service == nullptr) {
            liveStart_ = 0;
            IRC_LOGE("failed to create service");
            return;
        }
        serviceHandle_ = service;
        registerProperty(service);
        eventReceiver_.Init();
    } catch (const CException& e) {
        IRC_LOGE("Exception !! - %s(error_code:%d)", e.GetMessage().c_str(), e.GetErrorCode());
        throw;
    } catch (const std::exception& e) {
        IRC_LOGE("Exception !! - %s", e.what());
        throw;
    }
    IRC_LEAVE();
}

void CIRControlService::Deinit() {
    IRC_ENTER();
    IRC_LOGE("DEINIT!");
    eventReceiver_.Deinit();
    // A job that was already running when the queue stopped may still answer; once the host
    // service is gone its handle means nothing, so such late answers are dropped (logged).
    liveStart_ = 0;
    unregisterProperty();
    destroyService();
    IRC_LEAVE();
}

vyrf_service_h CIRControlService::createService() {
    const std::string name = kServiceName;
    const std::string description = kServiceDescription;
    return vyrf_service_create(ToVyrfString(name), ToVyrfString(description), &protocolStatusCallback,
                               &getRequestCallback, &setRequestCallback, &cancelRequestCallback,
                               this);
}

void CIRControlService::destroyService() {
    vyrf_service_destroy(serviceHandle_);
}

void CIRControlService::registerProperty(vyrf_service_h service) {
    const auto definitions = CPropertyManager::GetInstance().GetAllPropertyInfo();
    for (const auto& entry : definitions) {
        const PropertyDefinition& def = entry.second;
        const int type = CVyrfTypeConverter::GetVyrfPropertyType(def.type);
        const vyrf_error err = vyrf_service_register_property(
            service, ToVyrfString(def.name), type, static_cast<int64_t>(def.lowerBound),
            static_cast<int64_t>(def.upperBound), ToVyrfString(def.description));
        IRC_LOGI("err: %d, name: %s, type: %d, desc: %s", err, def.name.c_str(), type,
                 def.description.c_str());
    }
}

void CIRControlService::unregisterProperty() {
    const auto definitions = CPropertyManager::GetInstance().GetAllPropertyInfo();
    for (const auto& entry : definitions) {
        const vyrf_error err =
            vyrf_service_unregister_property(serviceHandle_, ToVyrfString(entry.second.name));
        IRC_LOGI("err: %d, property: [%s] unregistered", err, entry.second.name.c_str());
    }
}

void CIRControlService::handleRequest(std::shared_ptr<CRequest> request) {
    eventReceiver_.HandleEvent(request);
}

void CIRControlService::setRequestCallback(vyrf_service_h service, vyrf_transaction_h transaction,
                                           vyrf_property_list_h list, void* user_data) {
    IRC_ENTER();
    // Nothing may unwind into the host's C code: a request that cannot be taken in (the list
    // cannot be copied, a property has no name, the queue has stopped) is logged and dropped.
    try {
        static_cast<CIRControlService*>(user_data)->onSetRequest(service, transaction, list);
    } catch (const CException& e) {
        IRC_LOGE("set request dropped: %s(error_code:%d)", e.GetMessage().c_str(),
                 e.GetErrorCode());
    } catch (const std::exception& e) {
        IRC_LOGE("set request dropped: %s", e.what());
    } catch (...) {
        IRC_LOGE("set request dropped: unknown exception");
    }
    IRC_LEAVE();
}

void CIRControlService::onSetRequest(vyrf_service_h service, vyrf_transaction_h transaction,
                                     vyrf_property_list_h list) {
    std::shared_ptr<IPropertyListHelper> helper = IPropertyListHelper::Create(list);
    auto respond = [self = this, start = liveStart_.load(), service, transaction](
                       const std::string& errorCode, const std::string& description) {
        self->sendResponse(start, service, transaction, errorCode, description);
    };
    handleRequest(CRequest::Create(RequestType::Set, helper, respond));
}

void CIRControlService::sendResponse(uint64_t start, vyrf_service_h service,
                                     vyrf_transaction_h transaction, const std::string& errorCode,
                                     const std::string& description) {
    IRC_LOGI("[resp_handler] err: %s, desc: %s", errorCode.c_str(), description.c_str());
    // Checked, not held: a stop never waits for the host to take an answer. A stop that comes
    // between this check and the send below lets this one answer go out as if it had come just
    // before the stop; the host refuses it if the service is already gone.
    if (start == 0 || liveStart_.load() != start) {
        IRC_LOGE("[resp_handler] service stopped, answer dropped: %s", errorCode.c_str());
        return;
    }
    ListHandle answer(vyrf_property_list_create());
    if (!answer) {
        IRC_LOGE("[resp_handler] failed to create answer list");
        return;
    }
    // The host takes over a property only when the push succeeds; the platform offers no way
    // to release one that it refused, so a refusal is logged and the answer goes without it.
    const std::string codeName = kAnswerErrorCode;
    const std::string descName = kAnswerDescription;
    if (vyrf_property_list_push_property(
            answer.get(), vyrf_property_create_string(ToVyrfString(codeName), ToVyrfString(errorCode)),
            0) != 0) {
        IRC_LOGE("[resp_handler] failed to push %s", codeName.c_str());
    }
    if (vyrf_property_list_push_property(
            answer.get(),
            vyrf_property_create_string(ToVyrfString(descName), ToVyrfString(description)), 0) != 0) {
        IRC_LOGE("[resp_handler] failed to push %s", descName.c_str());
    }
    const vyrf_error err =
        vyrf_service_send_set_property_result(service, transaction, answer.release(), 0);
    IRC_LOGI("[resp_handler] vyrf_service_send_set_property_result: %d", err);
}

void CIRControlService::getRequestCallback(void*, void*, void*, void*) {
    IRC_ENTER();
    IRC_LEAVE();
}

void CIRControlService::cancelRequestCallback(void*, void*, void*) {
    IRC_ENTER();
    IRC_LEAVE();
}

void CIRControlService::protocolStatusCallback(void*, vyrf_string, vyrf_protocol_status, void*) {
    IRC_ENTER();
    IRC_LEAVE();
}

}  // namespace ircontrol
