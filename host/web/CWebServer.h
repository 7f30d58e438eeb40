// ircontrol-host web: an HTTP server (libsoup 3) with the JSON API, the live event stream and
// the page, over the plugin the tool has loaded. Everything HTTP runs on one GLib main loop on
// the thread that calls Run(); requests to the plugin run on one worker thread, so a slow answer
// never stalls the loop. Run() returns on SIGINT or SIGTERM, after the streams are closed and
// the worker has stopped. Construct, Run and destroy on the same thread. Throws nothing.
#pragma once

#include <libsoup/soup.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>

#include "CEventHub.h"
#include "CJobRunner.h"
#include "CLoopInbox.h"
#include "CRequestGuard.h"
#include "CRequestRecorder.h"
#include "CWebApi.h"
#include "CWebLearn.h"
#include "GlibHandles.h"

namespace ircontrol::host {

struct WebOptions {
    std::string listen = "127.0.0.1:8088";
    int timeoutMs = 2000;
    std::size_t maxStreams = 16;
    std::size_t maxQueued = 512;
    WebLearnOptions learn;
    std::function<void()> pairingChanged;  // worker thread, after PUT /api/devices changed the list
    std::function<void()> reload;          // loop thread, on SIGHUP (not caught when empty)
    std::function<void()> learned;         // worker thread, after a learn changed the codesets
};

class CWebServer {
public:
    CWebServer(const WebOptions& options, CSession& session, CPlatformSetup& setup);
    ~CWebServer();
    CWebServer(const CWebServer&) = delete;
    CWebServer& operator=(const CWebServer&) = delete;

    // Binds the address; false with a one-line reason.
    bool Listen(std::string& error);
    std::string Url() const { return url_; }
    // The one worker every request to the plugin runs on; other doors post theirs here too.
    CJobRunner& Runner() { return runner_; }
    // Where the next learn reads and writes; any thread.
    void SetLearnOptions(const WebLearnOptions& options) { learn_.SetOptions(options); }
    // Serves until SIGINT/SIGTERM (or Quit()), then closes the streams and stops the worker.
    void Run();
    void Quit();

private:
    static void onRequest(SoupServer* server, SoupServerMessage* message, const char* path, GHashTable* query,
                          gpointer self);
    static void onEarly(SoupServer* server, SoupServerMessage* message, const char* path, GHashTable* query,
                        gpointer self);
    static void onPendingFinished(SoupServerMessage* message, gpointer self);
    void handle(SoupServerMessage* message, const std::string& path);
    void api(SoupServerMessage* message, const std::string& method, const std::string& path);
    void asset(SoupServerMessage* message, const std::string& method, const std::string& path);
    void reply(SoupServerMessage* message, const WebReply& reply);
    void complete(uint64_t token, const WebReply& reply);  // loop thread
    static gboolean onHangUp(gpointer self);
    void shutdown();

    WebOptions options_;
    GMainContextPtr context_;
    GMainLoopPtr loop_;
    // Tasks the worker hands to the loop (its answers); before the runner, so it outlives it.
    CLoopInbox<std::function<void()>> inbox_;
    std::string address_;
    unsigned port_ = 0;
    std::string url_;
    std::unique_ptr<CRequestGuard> guard_;
    CEventHub hub_;
    CRequestRecorder recorder_;
    CJobRunner runner_;
    CWebLearn learn_;  // after the runner and recorder its thread uses
    CWebApi api_;
    GObjectPtr<SoupServer> server_;
    // Paused API messages waiting for the worker, by token; loop thread only.
    struct Pending {
        GObjectPtr<SoupServerMessage> message;
        gulong finished = 0;
    };
    std::map<uint64_t, Pending> pending_;
    uint64_t nextToken_ = 1;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    bool stopped_ = false;
};

}  // namespace ircontrol::host
