// The service's one job queue: a single worker thread "ircontrolQ" runs jobs one at a time in
// the order they were enqueued. Producers (host threads) only touch the container mutex and the
// condition variable, so a long job never blocks an enqueue. Quit() is final: afterwards
// EnqueueData throws std::runtime_error. A job's exception is logged and never stops the worker.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "common/CNoncopyable.h"
#include "common/Types.h"

namespace ircontrol {

class CMsgQueue : private CNoncopyable {
public:
    class MsgQueue : private CNoncopyable {
    public:
        explicit MsgQueue(const std::string& name);
        ~MsgQueue();

        // False (nothing queued) once Close() has run.
        bool Push(ThreadJob& job);
        void Pop();                 // not on an empty queue
        ThreadJob& Front();         // not on an empty queue
        int Size();
        bool IsEmpty();
        void RunFirstJob();         // runs the oldest job without holding the mutex
        void Clear();
        // Clear() for good: every later Push is refused. The same lock as Push, so no job can
        // slip in behind the worker's final clear.
        void Close();

    private:
        void discard(bool close);

        std::mutex mutex_;
        std::deque<ThreadJob> jobs_;
        bool closed_ = false;
        std::string name_;
    };

    // The service's queue, started on first use and joined at process (or library) exit.
    static CMsgQueue& GetInstance();

    // Starts the worker. Public so tests can have queues of their own; the service uses
    // GetInstance().
    CMsgQueue();
    ~CMsgQueue();

    void EnqueueData(ThreadJob& job);  // throws std::runtime_error once stopped
    void Quit();                       // asks the worker to stop; does not wait
    bool isEmptyQueue();
    void clearData();                  // discards the queued jobs and refuses any later ones

private:
    void runDispatchingThread();

    std::thread thread_;
    std::condition_variable condition_;
    std::mutex waitMutex_;
    MsgQueue queue_;
    // Read by producers and the worker without the lock by design: the worker's wait is
    // bounded, so it notices a cleared flag within a second at the latest.
    std::atomic<bool> running_;
    std::string name_;
};

}  // namespace ircontrol
