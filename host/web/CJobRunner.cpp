#include "CJobRunner.h"

namespace ircontrol::host {

CJobRunner::CJobRunner(std::size_t maxQueued) : maxQueued_(maxQueued), thread_([this] { run(); }) {}

CJobRunner::~CJobRunner() { Stop(); }

bool CJobRunner::Post(Job job) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (stopping_ || jobs_.size() >= maxQueued_) return false;
        jobs_.push_back(std::move(job));
    }
    wake_.notify_one();
    return true;
}

void CJobRunner::Stop() {
    std::deque<Job> dropped;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
        dropped.swap(jobs_);
    }
    wake_.notify_one();
    if (thread_.joinable()) thread_.join();
    // `dropped` goes here, on the stopping thread, after the worker is gone.
}

void CJobRunner::run() {
    for (;;) {
        Job job;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
            if (stopping_) return;
            job = std::move(jobs_.front());
            jobs_.pop_front();
        }
        // A job reports its own failures; one that throws anyway must not end the worker.
        try {
            job();
        } catch (...) {
        }
    }
}

}  // namespace ircontrol::host
