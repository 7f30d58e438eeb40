// The live event stream (Server-Sent Events): every browser attached to GET /api/events gets
// each published event, after the recent ones (bounded in count and bytes) are replayed to it.
// Publish() is thread-safe and hands the text to the main loop; Attach(), CloseAll() and the
// destructor run on that loop's thread. The number of streams and the bytes a slow reader may
// owe are bounded too.
#pragma once

#include <libsoup/soup.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "CLoopInbox.h"
#include "GlibHandles.h"

namespace ircontrol::host {

class CEventHub {
public:
    CEventHub(GMainContext* context, std::size_t maxStreams, std::size_t history);
    ~CEventHub();
    CEventHub(const CEventHub&) = delete;
    CEventHub& operator=(const CEventHub&) = delete;

    // Makes `message` a stream (status, headers, history); false when too many are open. A
    // refusal also pings every stream, so those whose reader has gone are noticed and freed.
    bool Attach(SoupServerMessage* message);
    // One event: a JSON object's text. Any thread.
    void Publish(const std::string& json);
    void CloseAll();
    std::size_t Streams() const { return streams_.size(); }

    // A comment to every stream this often: a closed connection shows only when written to.
    static constexpr guint kHeartbeatSeconds = 5;
    static constexpr std::size_t kMaxOwed = 4 * 1024 * 1024;
    static constexpr std::size_t kMaxHistoryBytes = 4 * 1024 * 1024;

private:
    struct Stream {
        GObjectPtr<SoupServerMessage> message;
        gulong finished = 0;
        gulong wrote = 0;
        std::size_t owed = 0;  // appended but not yet written
    };
    static void onFinished(SoupServerMessage* message, gpointer self);
    static void onWrote(SoupServerMessage* message, guint size, gpointer self);
    static gboolean onHeartbeat(gpointer self);
    void ping();
    void flush(std::deque<std::string> events);
    void send(Stream& stream, const std::string& frame);
    void close(Stream& stream);
    void forget(SoupServerMessage* message);

    GMainContext* context_;
    std::size_t maxStreams_;
    std::size_t historyLimit_;
    std::deque<std::string> history_;
    std::size_t historyBytes_ = 0;
    std::vector<std::unique_ptr<Stream>> streams_;
    GSource* heartbeat_ = nullptr;
    uint64_t nextId_ = 1;
    CLoopInbox<std::string> inbox_;  // events published from any thread, for the loop
};

}  // namespace ircontrol::host
