// One worker thread that runs the web server's jobs in arrival order, so the plugin sees one
// request at a time and the server's main loop never waits for an answer. Post() from any
// thread; Stop() (also the destructor) lets the running job finish and drops the queued ones.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace ircontrol::host {

class CJobRunner {
public:
    using Job = std::function<void()>;

    explicit CJobRunner(std::size_t maxQueued);
    ~CJobRunner();
    CJobRunner(const CJobRunner&) = delete;
    CJobRunner& operator=(const CJobRunner&) = delete;

    // false when the queue is full or the runner stopped; the job is then not run.
    bool Post(Job job);
    void Stop();

private:
    void run();

    const std::size_t maxQueued_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Job> jobs_;
    bool stopping_ = false;
    std::thread thread_;  // last: starts after the state above exists
};

}  // namespace ircontrol::host
