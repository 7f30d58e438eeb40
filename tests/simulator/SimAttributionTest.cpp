// The simulator ties what a plugin thread does (IR calls, log lines) to the host request that
// thread is serving, so a tool can show each transmission under the request whose job made it.
#include <dlog.h>
#include <gtest/gtest.h>
#include <irkt_irbl.h>
#include <vyrf.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "sim/Simulator.h"

namespace {

vyrf_string S(const char* text) { return vyrf_string{text, std::char_traits<char>::length(text)}; }

// A service shaped like the plugin: the set callback copies the request's list and queues it;
// one worker thread reads each copy, logs, transmits and answers.
class QueueService {
public:
    QueueService() {
        service_ = vyrf_service_create(S("svc"), S("desc"), nullptr, nullptr, &OnSet, nullptr, this);
        worker_ = std::thread([this] { run(); });
    }
    ~QueueService() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            stop_ = true;
        }
        wake_.notify_all();
        worker_.join();
        vyrf_service_destroy(service_);
    }
    bool answer = true;  // false: the worker leaves requests unanswered

private:
    struct Job { void* transaction; void* list; };
    static void OnSet(void*, void* transaction, void* list, void* user) {
        auto* self = static_cast<QueueService*>(user);
        dlog_print(DLOG_INFO, "T", "callback");
        {
            std::lock_guard<std::mutex> lock(self->mutex_);
            self->jobs_.push_back({transaction, vyrf_property_list_copy(list)});
        }
        self->wake_.notify_all();
    }
    void run() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            wake_.wait(lock, [this] { return stop_ || !jobs_.empty(); });
            if (jobs_.empty()) return;
            Job job = jobs_.front();
            jobs_.pop_front();
            lock.unlock();
            dlog_print(DLOG_INFO, "T", "before reading");  // still the previous request's
            int key = 0;
            vyrf_property_get_int(vyrf_property_list_find(job.list, S("key")), &key);
            dlog_print(DLOG_ERROR, "T", "job for key %d", key);
            irkt_irbl_send_command_hdevice(key, 1, false);
            if (answer) {
                vyrf_service_send_set_property_result(service_, job.transaction, vyrf_property_list_create(), 0);
            }
            dlog_print(DLOG_INFO, "T", "after answering");
            vyrf_property_list_destroy(job.list);
            lock.lock();
        }
    }
    void* service_ = nullptr;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Job> jobs_;
    bool stop_ = false;
    std::thread worker_;
};

std::vector<std::string> Texts(const std::vector<sim::LogLine>& lines) {
    std::vector<std::string> out;
    for (const auto& line : lines) out.push_back(line.text);
    return out;
}

TEST(SimAttributionTest, EachTransmissionAndLogLineCarriesTheRequestItsWorkerThreadServed) {
    sim::ResetAll();
    uint64_t first = 0, second = 0;
    {
        QueueService service;
        // The blaster holds the worker, so the second request waits in the queue behind the first.
        sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(50));
        const auto before = std::chrono::steady_clock::now();
        first = sim::Host::SendSet("svc", {sim::HostProperty::Int("key", 10)});
        second = sim::Host::SendSet("svc", {sim::HostProperty::Int("key", 12)});
        const auto result = sim::Host::WaitResult(second, std::chrono::seconds(10));
        ASSERT_TRUE(result.has_value());
        // Answers carry their arrival time.
        EXPECT_GE(result->time, before);
        EXPECT_LE(result->time, std::chrono::steady_clock::now());
    }  // the worker has finished its last line

    for (const auto& [transaction, key] : {std::pair<uint64_t, int>{first, 10}, {second, 12}}) {
        const auto calls = sim::IrBlaster::JournalFor(transaction);
        ASSERT_EQ(calls.size(), 1u) << transaction;
        EXPECT_EQ(calls[0].key, key);
        EXPECT_EQ(calls[0].transaction, transaction);
        EXPECT_EQ(calls[0].onAirEnd - calls[0].time, std::chrono::milliseconds(50));
        EXPECT_EQ(Texts(sim::Log::LinesFor(transaction)),
                  (std::vector<std::string>{"callback", "job for key " + std::to_string(key)}));
    }
    // Lines after an answer and before the next list is read belong to no request.
    EXPECT_EQ(Texts(sim::Log::LinesFor(0)),
              (std::vector<std::string>{"before reading", "after answering", "before reading", "after answering"}));
    EXPECT_EQ(sim::Host::ServingTransaction(), 0u) << "the sending thread serves nothing after the callback";
}

TEST(SimAttributionTest, AnUnansweredRequestIsServedUntilTheNextOneIsRead) {
    sim::ResetAll();
    QueueService service;
    service.answer = false;
    const uint64_t first = sim::Host::SendSet("svc", {sim::HostProperty::Int("key", 1)});
    ASSERT_TRUE(sim::IrBlaster::WaitForTransmissions(1, std::chrono::seconds(10)));
    const uint64_t second = sim::Host::SendSet("svc", {sim::HostProperty::Int("key", 2)});
    // The worker logs in order, so once the second job has logged, the first one's lines are all in.
    for (int i = 0; i < 1000 && sim::Log::LinesFor(second).size() < 2; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(Texts(sim::Log::LinesFor(first)),
              (std::vector<std::string>{"callback", "job for key 1", "after answering", "before reading"}));
    EXPECT_EQ(sim::IrBlaster::JournalFor(second).size(), 1u);
    EXPECT_EQ(Texts(sim::Log::LinesFor(0)), std::vector<std::string>{"before reading"});  // the very first
}

}  // namespace
