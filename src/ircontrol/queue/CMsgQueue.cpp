#include "queue/CMsgQueue.h"

#include <chrono>
#include <exception>
#include <stdexcept>

#include "common/ServiceLog.h"

namespace ircontrol {
namespace {
constexpr char kQueueName[] = "ircontrolQ";
}  // namespace

CMsgQueue::MsgQueue::MsgQueue(const std::string& name) : name_(name) {}

CMsgQueue::MsgQueue::~MsgQueue() { Clear(); }

bool CMsgQueue::MsgQueue::Push(ThreadJob& job) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (closed_) return false;
    jobs_.push_back(job);
    return true;
}

void CMsgQueue::MsgQueue::Pop() {
    std::lock_guard<std::mutex> lock(mutex_);
    jobs_.pop_front();
}

ThreadJob& CMsgQueue::MsgQueue::Front() {
    std::lock_guard<std::mutex> lock(mutex_);
    return jobs_.front();
}

int CMsgQueue::MsgQueue::Size() {
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(jobs_.size());
}

bool CMsgQueue::MsgQueue::IsEmpty() {
    std::lock_guard<std::mutex> lock(mutex_);
    return jobs_.empty();
}

void CMsgQueue::MsgQueue::RunFirstJob() {
    ThreadJob job;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (jobs_.empty()) return;
        job = std::move(jobs_.front());
        jobs_.pop_front();
    }
    // The mutex is free while the job runs, so producers can keep pushing.
    if (!job) return;
    try {
        job();
    } catch (const std::exception& e) {
        IRC_LOGE("exception from job : %s", e.what());
    } catch (...) {
        IRC_LOGE("[%s] unknown exception from job", name_.c_str());
    }
}

void CMsgQueue::MsgQueue::Clear() { discard(false); }

void CMsgQueue::MsgQueue::Close() { discard(true); }

void CMsgQueue::MsgQueue::discard(bool close) {
    std::deque<ThreadJob> discarded;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = closed_ || close;
        discarded.swap(jobs_);
    }
    // Destroyed front to back outside the lock: a job's captures may release requests whose
    // destructors must not run under the queue's mutex.
    while (!discarded.empty()) discarded.pop_front();
}

CMsgQueue& CMsgQueue::GetInstance() {
    static CMsgQueue instance;
    return instance;
}

CMsgQueue::CMsgQueue() : queue_(kQueueName), running_(true), name_(kQueueName) {
    thread_ = std::thread(&CMsgQueue::runDispatchingThread, this);
    IRC_LOGE("QUEUE[%s] thread created", name_.c_str());
}

CMsgQueue::~CMsgQueue() {
    running_ = false;
    condition_.notify_one();
    if (thread_.joinable()) {
        IRC_LOGE("[%s] before join", name_.c_str());
        thread_.join();
        IRC_LOGE("[%s] after join", name_.c_str());
    } else {
        IRC_LOGE("[%s] Not joinable", name_.c_str());
    }
}

void CMsgQueue::EnqueueData(ThreadJob& job) {
    // The flag turns most late producers away; the closed container catches one that read the
    // flag just before the stop and reached the container after the worker's final clear.
    if (!running_ || !queue_.Push(job)) {
        throw std::runtime_error("Thread already finished! Can not do enqueue!!");
    }
    // Notified without the wait mutex: a notification that falls between the worker's check
    // and its wait is lost, and the worker's one-second bound picks the job up instead.
    condition_.notify_one();
}

void CMsgQueue::Quit() {
    IRC_ENTER();
    running_ = false;
    condition_.notify_one();
    IRC_LEAVE();
}

bool CMsgQueue::isEmptyQueue() { return queue_.IsEmpty(); }

// Only the worker's last act: stopping is final, so the container is closed as it is emptied.
void CMsgQueue::clearData() { queue_.Close(); }

void CMsgQueue::runDispatchingThread() {
    IRC_LOGI("QUEUE[%s] thread started", name_.c_str());
    try {
        std::unique_lock<std::mutex> lock(waitMutex_);
        while (true) {
            const bool empty = isEmptyQueue();
            if (!running_) break;
            if (!empty) {
                queue_.RunFirstJob();
                continue;
            }
            condition_.wait_until(lock, std::chrono::steady_clock::now() + std::chrono::seconds(1));
        }
        IRC_LOGE("[%s] ESCAPE!", name_.c_str());
        clearData();
        lock.unlock();
    } catch (const std::exception& e) {
        IRC_LOGE("Exception: %s", e.what());
    }
    IRC_LOGE("[%s] Finished thread running", name_.c_str());
}

}  // namespace ircontrol

