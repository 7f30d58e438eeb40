#include "CWebServer.h"

#include <glib-unix.h>
#include <signal.h>

#include "CWebAssets.h"

namespace ircontrol::host {
namespace {

const char kTooLarge[] = "irc-too-large";

// Events a page opened late is shown first. A key request makes about thirty (the request,
// some 25-28 log lines, its transmission and answer), so this replays the last dozen or so
// requests: enough to see what just happened, little to send to each new page.
constexpr std::size_t kEventHistory = 400;

// "wait=false" (or 0/no) among the query's parameters.
bool WaitWanted(SoupServerMessage* message) {
    const char* query = g_uri_get_query(soup_server_message_get_uri(message));
    if (query == nullptr) return true;
    const std::string text = std::string("&") + query + "&";
    for (const char* no : {"&wait=false&", "&wait=0&", "&wait=no&"}) {
        if (text.find(no) != std::string::npos) return false;
    }
    return true;
}

void SetCommonHeaders(SoupServerMessage* message) {
    SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
    soup_message_headers_replace(headers, "X-Content-Type-Options", "nosniff");
    soup_message_headers_replace(headers, "X-Frame-Options", "DENY");
    soup_message_headers_replace(headers, "Content-Security-Policy",
                                 "default-src 'self'; img-src 'self' data:; frame-ancestors 'none'");
    soup_message_headers_replace(headers, "Referrer-Policy", "no-referrer");
}

void OnGotChunk(SoupServerMessage* message, GBytes* chunk, gpointer) {
    SoupMessageBody* body = soup_server_message_get_request_body(message);
    // Past the limit the rest is read and dropped, so memory stays bounded.
    if (CRequestGuard::TooLarge(static_cast<std::size_t>(body->length) + g_bytes_get_size(chunk))) {
        g_object_set_data(G_OBJECT(message), kTooLarge, GINT_TO_POINTER(1));
        soup_message_body_set_accumulate(body, FALSE);
    }
}

}  // namespace

CWebServer::CWebServer(const WebOptions& options, CSession& session, CPlatformSetup& setup)
    : options_(options),
      context_(g_main_context_new()),
      loop_(g_main_loop_new(context_.get(), FALSE)),
      inbox_(context_.get(),
             [](std::deque<std::function<void()>> tasks) {
                 for (auto& task : tasks) task();
             }),
      hub_(context_.get(), options.maxStreams, kEventHistory),
      recorder_([this](const std::string& json) { hub_.Publish(json); }),
      runner_(options.maxQueued),
      learn_(options.learn, runner_, recorder_, setup, options.learned),
      api_(runner_, recorder_, session, setup, learn_, options.pairingChanged) {
    // The server's sockets attach to the thread-default context when it listens.
    g_main_context_push_thread_default(context_.get());
}

CWebServer::~CWebServer() {
    shutdown();
    g_main_context_pop_thread_default(context_.get());
}

bool CWebServer::Listen(std::string& error) {
    if (!CRequestGuard::ParseListen(options_.listen, address_, port_)) {
        error = "--listen needs ADDRESS:PORT with an IP address, not '" + options_.listen + "'";
        return false;
    }
    server_.reset(static_cast<SoupServer*>(g_object_new(SOUP_TYPE_SERVER, "server-header", "ircontrol-host ", nullptr)));
    soup_server_add_early_handler(server_.get(), nullptr, onEarly, this, nullptr);
    soup_server_add_handler(server_.get(), nullptr, onRequest, this, nullptr);
    // Our own socket, for a listen backlog that takes a burst of clients (GLib's default is 10).
    GObjectPtr<GInetAddress> inet(g_inet_address_new_from_string(address_.c_str()));
    GObjectPtr<GSocketAddress> where(g_inet_socket_address_new(inet.get(), static_cast<guint16>(port_)));
    GError* raw = nullptr;
    GObjectPtr<GSocket> socket(g_socket_new(g_inet_address_get_family(inet.get()), G_SOCKET_TYPE_STREAM,
                                            G_SOCKET_PROTOCOL_TCP, &raw));
    if (socket) {
        g_socket_set_listen_backlog(socket.get(), 512);
        if (!g_socket_bind(socket.get(), where.get(), TRUE, &raw) || !g_socket_listen(socket.get(), &raw) ||
            !soup_server_listen_socket(server_.get(), socket.get(), static_cast<SoupServerListenOptions>(0), &raw)) {
            socket.reset();
        }
    }
    if (!socket) {
        GErrorPtr failure(raw);
        error = "cannot listen on " + options_.listen + ": " + (failure ? failure->message : "unknown error");
        return false;
    }
    GSList* uris = soup_server_get_uris(server_.get());
    if (uris != nullptr) port_ = static_cast<unsigned>(g_uri_get_port(static_cast<GUri*>(uris->data)));
    g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
    guard_ = std::make_unique<CRequestGuard>(address_, port_);
    const bool v6 = address_.find(':') != std::string::npos;
    url_ = "http://" + (v6 ? "[" + address_ + "]" : address_) + ":" + std::to_string(port_) + "/";
    return true;
}

void CWebServer::Run() {
    auto quit = [](gpointer self) -> gboolean {
        static_cast<CWebServer*>(self)->Quit();
        return G_SOURCE_CONTINUE;
    };
    std::vector<GSource*> sources;
    for (int signal : {SIGINT, SIGTERM}) {
        GSource* source = g_unix_signal_source_new(signal);
        g_source_set_callback(source, quit, this, nullptr);
        g_source_attach(source, context_.get());
        sources.push_back(source);
    }
    if (options_.reload) {
        GSource* source = g_unix_signal_source_new(SIGHUP);
        g_source_set_callback(source, onHangUp, this, nullptr);
        g_source_attach(source, context_.get());
        sources.push_back(source);
    }
    g_main_loop_run(loop_.get());
    for (GSource* source : sources) {
        g_source_destroy(source);
        g_source_unref(source);
    }
    shutdown();
}

gboolean CWebServer::onHangUp(gpointer self) {
    try {
        static_cast<CWebServer*>(self)->options_.reload();
    } catch (const std::exception&) {
        // A reload that failed has said why; the server keeps serving.
    }
    return G_SOURCE_CONTINUE;
}

void CWebServer::Quit() { g_main_loop_quit(loop_.get()); }

void CWebServer::shutdown() {
    if (stopped_) return;
    stopped_ = true;
    hub_.CloseAll();
    runner_.Stop();  // the running request finishes; queued ones are dropped
    *alive_ = false;
    if (server_) soup_server_disconnect(server_.get());
    // Nothing runs the loop any more: run what the disconnect queued (closed connections finish
    // their messages, a paused one's "finished" forgets it) while the handlers are still here.
    while (g_main_context_iteration(context_.get(), FALSE)) {
    }
    for (auto& [token, pending] : pending_) g_signal_handler_disconnect(pending.message.get(), pending.finished);
    pending_.clear();
    server_.reset();
    // And what dropping the server queued (its sockets' last callbacks), before the context goes.
    while (g_main_context_iteration(context_.get(), FALSE)) {
    }
    inbox_.Close();  // the worker has stopped: any answer still queued has no client left
}

void CWebServer::onEarly(SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
    auto* server = static_cast<CWebServer*>(self);
    SoupMessageHeaders* headers = soup_server_message_get_request_headers(message);
    // Refuse an announced oversize body before reading it.
    if (soup_message_headers_get_encoding(headers) == SOUP_ENCODING_CONTENT_LENGTH &&
        CRequestGuard::TooLarge(static_cast<std::size_t>(soup_message_headers_get_content_length(headers)))) {
        soup_message_headers_replace(soup_server_message_get_response_headers(message), "Connection", "close");
        server->reply(message, CWebApi::Error(413, "the body is larger than 1 MiB"));
        return;
    }
    g_signal_connect(message, "got-chunk", G_CALLBACK(OnGotChunk), nullptr);
}

void CWebServer::onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self) {
    // No exception may unwind into libsoup's C code.
    try {
        static_cast<CWebServer*>(self)->handle(message, path != nullptr ? path : "/");
    } catch (const std::exception& e) {
        static_cast<CWebServer*>(self)->reply(message, CWebApi::Error(500, e.what()));
    }
}

void CWebServer::handle(SoupServerMessage* message, const std::string& path) {
    if (soup_server_message_get_status(message) != 0) return;  // answered early (413)
    SetCommonHeaders(message);
    SoupMessageHeaders* headers = soup_server_message_get_request_headers(message);
    const std::string method = soup_server_message_get_method(message);
    if (!guard_->HostAllowed(soup_message_headers_get_one(headers, "Host"))) {
        return reply(message, CWebApi::Error(403, "the Host header does not name this server"));
    }
    if (!guard_->OriginAllowed(soup_message_headers_get_one(headers, "Origin"))) {
        return reply(message, CWebApi::Error(403, "requests from other origins are refused"));
    }
    if (path.compare(0, 5, "/api/") == 0) return api(message, method, path);
    asset(message, method, path);
}

void CWebServer::api(SoupServerMessage* message, const std::string& method, const std::string& path) {
    soup_message_headers_replace(soup_server_message_get_response_headers(message), "Cache-Control", "no-store");
    if (path == "/api/events" && method == "GET") {
        if (!hub_.Attach(message)) reply(message, CWebApi::Error(503, "too many live streams open"));
        return;
    }
    SoupMessageBody* requestBody = soup_server_message_get_request_body(message);
    std::string body;
    if ((method == "POST" || method == "PUT") && CWebApi::Accepts(method, path)) {
        const bool truncated = g_object_get_data(G_OBJECT(message), kTooLarge) != nullptr;
        if (!truncated && !CRequestGuard::TooLarge(static_cast<std::size_t>(requestBody->length))) {
            const GBytesPtr raw(soup_message_body_flatten(requestBody));
            gsize size = 0;
            const auto* data = static_cast<const char*>(g_bytes_get_data(raw.get(), &size));
            body.assign(data != nullptr ? data : "", size);
        }
        const auto refusal = CRequestGuard::CheckBody(
            soup_message_headers_get_content_type(soup_server_message_get_request_headers(message), nullptr), body,
            truncated || CRequestGuard::TooLarge(static_cast<std::size_t>(requestBody->length)));
        if (refusal) return reply(message, CWebApi::Error(refusal->status, refusal->message));
    }
    const uint64_t token = nextToken_++;
    Pending& pending = pending_[token];
    pending.message = Ref(message);
    pending.finished = g_signal_connect(message, "finished", G_CALLBACK(onPendingFinished), this);
    soup_server_message_pause(message);
    std::shared_ptr<bool> alive = alive_;
    api_.Handle(method, path, WaitWanted(message), body, [this, alive, token](WebReply answer) {
        inbox_.Post([this, alive, token, answer] {
            if (*alive) complete(token, answer);
        });
    });
}

void CWebServer::onPendingFinished(SoupServerMessage* message, gpointer self) {
    // The client went away before its answer: forget the message, the worker's reply is dropped.
    auto& pending = static_cast<CWebServer*>(self)->pending_;
    for (auto it = pending.begin(); it != pending.end(); ++it) {
        if (it->second.message.get() == message) {
            g_signal_handler_disconnect(message, it->second.finished);
            pending.erase(it);
            return;
        }
    }
}

void CWebServer::complete(uint64_t token, const WebReply& answer) {
    const auto found = pending_.find(token);
    if (found == pending_.end()) return;
    GObjectPtr<SoupServerMessage> message = std::move(found->second.message);
    g_signal_handler_disconnect(message.get(), found->second.finished);
    pending_.erase(found);
    reply(message.get(), answer);
    soup_server_message_unpause(message.get());
}

void CWebServer::asset(SoupServerMessage* message, const std::string& method, const std::string& path) {
    const WebAsset* file = CWebAssets::Find(path);
    if (file == nullptr) return reply(message, CWebApi::Error(404, "no such page: " + path));
    if (method != "GET" && method != "HEAD") {
        WebReply refused = CWebApi::Error(405, method + " is not allowed on " + path + " (allowed: GET, HEAD)");
        refused.allow = "GET, HEAD";
        return reply(message, refused);
    }
    soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
    soup_server_message_set_response(message, file->contentType, SOUP_MEMORY_STATIC,
                                     reinterpret_cast<const char*>(file->data), file->size);
}

void CWebServer::reply(SoupServerMessage* message, const WebReply& answer) {
    SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
    if (!answer.allow.empty()) soup_message_headers_replace(headers, "Allow", answer.allow.c_str());
    soup_server_message_set_status(message, answer.status, nullptr);
    soup_server_message_set_response(message, "application/json", SOUP_MEMORY_COPY, answer.body.data(),
                                     answer.body.size());
}

}  // namespace ircontrol::host
