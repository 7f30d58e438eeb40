// Requests that had no answer in time, followed until it comes: the command line and the web
// remote both show what a request's job still did after the tool stopped waiting (a late answer,
// late transmissions). Not thread-safe: one thread follows and looks. Throws nothing of its own.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "CSession.h"
#include "Request.h"

namespace ircontrol::host {

class CLateFollowUp {
public:
    // `tag` is the caller's name for the request (the web's request id); `firstNew` the first of
    // the result's transmissions that came since it was last shown.
    using Late = std::function<void(uint64_t tag, const RequestResult& result, std::size_t firstNew)>;

    // `maxLooks`: how many looks a request gets before it is given up (0: until it is answered).
    CLateFollowUp(const CSession& session, std::size_t maxLooks = 0) : session_(session), maxLooks_(maxLooks) {}

    // Follows `result` when it had no answer in time (and was sent); ignores it otherwise.
    void Follow(const RequestResult& result, uint64_t tag = 0);
    // Looks again at each request followed, in the order they were sent, waiting up to `wait`
    // for each (its answer comes within one on-air time of the one before it); calls `late` for
    // each one something came of. Answered requests, and those out of looks, are dropped.
    void Look(std::chrono::milliseconds wait, const Late& late);
    bool Empty() const { return pending_.empty(); }

private:
    struct Pending {
        RequestResult result;
        uint64_t tag;
        std::size_t looks = 0;
    };

    const CSession& session_;
    std::size_t maxLooks_;
    std::vector<Pending> pending_;
};

}  // namespace ircontrol::host
