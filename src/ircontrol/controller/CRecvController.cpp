#include "controller/CRecvController.h"

#include <exception>

#include "common/CException.h"
#include "common/ServiceLog.h"
#include "queue/CMsgQueue.h"

namespace ircontrol {

CRecvController::~CRecvController() = default;

void CRecvController::Init() {
    _AddJobToQueue([this] {
        IRC_LOGI("Init job");
        irControl_.Init();
    });
}

void CRecvController::Deinit() {
    // Not waiting for the worker: a job already running finishes on its own, queued ones are
    // discarded unrun by the stopping worker.
    CMsgQueue::GetInstance().Quit();
    irControl_.Deinit();
}

void CRecvController::HandleKeyEvent(RequestSharedPtr request) {
    _AddJobToQueue([this, request] {
        IRC_LOGI("HandleKeyEvent");
        irControl_.HandleKeyEvent(request);
    });
}

void CRecvController::HandleDeviceEvent(RequestSharedPtr request) {
    _AddJobToQueue([this, request] {
        IRC_LOGI("HandleDeviceEvent");
        irControl_.HandleDeviceEvent(request);
    });
}

void CRecvController::_AddJobToQueue(ThreadJob job) {
    try {
        CMsgQueue::GetInstance().EnqueueData(job);
    } catch (const CException& e) {
        IRC_LOGE("Exception !! - %s(error_code:%d)", e.GetMessage().c_str(), e.GetErrorCode());
        throw;
    } catch (const std::exception& e) {
        IRC_LOGE("Exception !! - %s", e.what());
        throw;
    }
}

}  // namespace ircontrol
