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
            if (key != 1) {  // key 1's request is left unanswered
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

// An unanswered request is served until the worker reads the next one.
TEST(SimAttributionTest, EachTransmissionAndLogLineCarriesTheRequestItsWorkerThreadServed) {
    sim::ResetAll();
    const int keys[] = {10, 12, 1, 2};
    std::vector<uint64_t> sent;
    {
        QueueService service;
        // The blaster holds the worker, so later requests wait in the queue behind the first.
        sim::IrBlaster::SetTransmitDelay(std::chrono::milliseconds(50));
        const auto before = std::chrono::steady_clock::now();
        for (int key : keys) sent.push_back(sim::Host::SendSet("svc", {sim::HostProperty::Int("key", key)}));
        const auto result = sim::Host::WaitResult(sent.back(), std::chrono::seconds(10));
        ASSERT_TRUE(result.has_value());
        // Answers carry their arrival time.
        EXPECT_GE(result->time, before);
        EXPECT_LE(result->time, std::chrono::steady_clock::now());
    }  // the worker has finished its last line

    for (std::size_t i = 0; i < sent.size(); ++i) {
        const auto calls = sim::IrBlaster::JournalFor(sent[i]);
        ASSERT_EQ(calls.size(), 1u) << keys[i];
        EXPECT_EQ(calls[0].key, keys[i]);
        EXPECT_EQ(calls[0].transaction, sent[i]);
        EXPECT_EQ(calls[0].onAirEnd - calls[0].time, std::chrono::milliseconds(50));
        std::vector<std::string> lines = {"callback", "job for key " + std::to_string(keys[i])};
        if (keys[i] == 1) lines.insert(lines.end(), {"after answering", "before reading"});
        EXPECT_EQ(Texts(sim::Log::LinesFor(sent[i])), lines);
    }
    // Lines after an answer and before the next list is read belong to no request.
    const std::string none[] = {"before reading", "after answering"};
    EXPECT_EQ(Texts(sim::Log::LinesFor(0)),
              (std::vector<std::string>{none[0], none[1], none[0], none[1], none[0], none[1]}));
    EXPECT_EQ(sim::Host::ServingTransaction(), 0u) << "the sending thread serves nothing after the callback";
}

}  // namespace
