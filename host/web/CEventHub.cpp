#include "CEventHub.h"

#include <algorithm>

namespace ircontrol::host {

CEventHub::CEventHub(GMainContext* context, std::size_t maxStreams, std::size_t history)
    : context_(context), maxStreams_(maxStreams), historyLimit_(history),
      inbox_(context, [this](std::deque<std::string> events) { flush(std::move(events)); }) {
    heartbeat_ = g_timeout_source_new_seconds(kHeartbeatSeconds);
    g_source_set_callback(heartbeat_, onHeartbeat, this, nullptr);
    g_source_attach(heartbeat_, context_);
}

CEventHub::~CEventHub() {
    inbox_.Close();
    g_source_destroy(heartbeat_);
    g_source_unref(heartbeat_);
    CloseAll();
}

gboolean CEventHub::onHeartbeat(gpointer self) {
    static_cast<CEventHub*>(self)->ping();
    return G_SOURCE_CONTINUE;
}

void CEventHub::ping() {
    for (auto& stream : streams_) send(*stream, ": ping\n\n");
}

bool CEventHub::Attach(SoupServerMessage* message) {
    if (streams_.size() >= maxStreams_) {
        ping();
        return false;
    }
    auto stream = std::make_unique<Stream>();
    stream->message = Ref(message);
    SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
    soup_message_headers_set_encoding(headers, SOUP_ENCODING_CHUNKED);
    soup_message_headers_set_content_type(headers, "text/event-stream", nullptr);
    soup_message_headers_replace(headers, "Cache-Control", "no-store");
    soup_message_body_set_accumulate(soup_server_message_get_response_body(message), FALSE);
    soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
    stream->finished = g_signal_connect(message, "finished", G_CALLBACK(onFinished), this);
    stream->wrote = g_signal_connect(message, "wrote-body-data", G_CALLBACK(onWrote), this);
    // A comment line first, so the browser sees the stream open before any event.
    send(*stream, ": ircontrol events\nretry: 1000\n\n");
    for (const auto& frame : history_) send(*stream, frame);
    streams_.push_back(std::move(stream));
    return true;
}

// Always handed to the loop, never written inside the caller; numbered there, in posting order.
void CEventHub::Publish(const std::string& json) { inbox_.Post(json); }

void CEventHub::flush(std::deque<std::string> events) {
    for (const auto& json : events) {
        std::string frame = "id: " + std::to_string(nextId_++) + "\ndata: " + json + "\n\n";
        for (auto& stream : streams_) send(*stream, frame);
        historyBytes_ += frame.size();
        history_.push_back(std::move(frame));
        while (!history_.empty() && (history_.size() > historyLimit_ || historyBytes_ > kMaxHistoryBytes)) {
            historyBytes_ -= history_.front().size();
            history_.pop_front();
        }
    }
    // A reader that owes too much is too slow to follow: end its stream (the browser reconnects).
    for (std::size_t i = 0; i < streams_.size();) {
        if (streams_[i]->owed > kMaxOwed) {
            close(*streams_[i]);
            streams_.erase(streams_.begin() + static_cast<std::ptrdiff_t>(i));
        } else {
            ++i;
        }
    }
}

void CEventHub::send(Stream& stream, const std::string& frame) {
    soup_message_body_append(soup_server_message_get_response_body(stream.message.get()), SOUP_MEMORY_COPY,
                             frame.data(), frame.size());
    stream.owed += frame.size();
    soup_server_message_unpause(stream.message.get());
}

void CEventHub::close(Stream& stream) {
    g_signal_handler_disconnect(stream.message.get(), stream.finished);
    g_signal_handler_disconnect(stream.message.get(), stream.wrote);
    soup_message_body_complete(soup_server_message_get_response_body(stream.message.get()));
    soup_server_message_unpause(stream.message.get());
}

void CEventHub::CloseAll() {
    for (auto& stream : streams_) close(*stream);
    streams_.clear();
}

void CEventHub::onFinished(SoupServerMessage* message, gpointer self) {
    static_cast<CEventHub*>(self)->forget(message);
}

void CEventHub::onWrote(SoupServerMessage* message, guint size, gpointer self) {
    for (auto& stream : static_cast<CEventHub*>(self)->streams_) {
        if (stream->message.get() == message) stream->owed -= std::min<std::size_t>(stream->owed, size);
    }
}

void CEventHub::forget(SoupServerMessage* message) {
    const auto found = std::find_if(streams_.begin(), streams_.end(),
                                    [&](const auto& stream) { return stream->message.get() == message; });
    if (found == streams_.end()) return;
    g_signal_handler_disconnect(message, (*found)->finished);
    g_signal_handler_disconnect(message, (*found)->wrote);
    streams_.erase(found);
}

}  // namespace ircontrol::host
