// The JSON API behind /api/: requests to the plugin, the key and air-conditioner shortcuts,
// the pairing list and learning (handed to CWebLearn). Handle() runs on the server's loop thread and only validates; the work runs
// as a job on the runner's worker thread, which calls `done` exactly once (or `done` is called at
// once for a request refused before any work). Throws nothing.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "CJobRunner.h"
#include "CLateFollowUp.h"
#include "CPlatformSetup.h"
#include "CRequestRecorder.h"
#include "CSession.h"
#include "CWebLearn.h"
#include "JsonValue.h"
#include "WebReply.h"

namespace ircontrol::host {

// Requests are parsed by the tool's one request parser, as serve's JSON lines are, and sent by
// its session; the parser runs on the worker, beside the pairing-list edits it reads.
class CWebApi {
public:
    using Done = std::function<void(WebReply reply)>;

    // `pairingChanged` (may be empty) runs on the worker after a PUT /api/devices replaced the list.
    CWebApi(CJobRunner& runner, CRequestRecorder& recorder, CSession& session, CPlatformSetup& setup,
            CWebLearn& learn, std::function<void()> pairingChanged = {});

    // `body` is already checked to be UTF-8 JSON text of bounded size and depth (or empty).
    void Handle(const std::string& method, const std::string& path, bool wait, const std::string& body, Done done);

    // Which methods a path takes ("" for a path that is not the API's).
    static std::string Allowed(const std::string& path);
    static bool Accepts(const std::string& method, const std::string& path);
    static WebReply Error(unsigned status, const std::string& message);

private:
    void request(const common::json::JsonValue& body, bool wait, Done done);
    void shortcut(const std::string& command, const common::json::JsonValue& body, bool wait, Done done);
    void properties(const common::json::JsonValue& list, bool wait, Done done);
    void devices(Done done);
    void putDevices(const std::string& body, Done done);
    // Sends one serve-style JSON line ({"command": ..., values}) through the request parser.
    void submit(const common::json::JsonValue& line, bool wait, Done done);
    // Follows a request that had no answer in time and looks again until it comes (worker).
    void follow(uint64_t id, const RequestResult& result);
    void lookAgain();
    void enqueue(const common::json::JsonValue& request, bool wait, CRequestRecorder::Send send, Done done);
    common::json::JsonValue devicesJson() const;  // worker thread

    CJobRunner& runner_;
    CRequestRecorder& recorder_;
    CSession& session_;
    CPlatformSetup& setup_;
    CWebLearn& learn_;
    std::function<void()> pairingChanged_;
    CLateFollowUp followUp_;    // worker thread only
    bool looking_ = false;      // a look is queued; worker thread only
};

}  // namespace ircontrol::host
