// IPrinter for programs: one JSON object per line, each result being the one result object
// (CResultJson). Writes only to its stream and flushes after each line a serve client waits
// for; one thread.
#pragma once

#include <ostream>

#include "IPrinter.h"
#include "JsonValue.h"

namespace ircontrol::host {

class CJsonPrinter : public IPrinter {
public:
    explicit CJsonPrinter(std::ostream& out) : out_(out) {}

    void Platform(const CPlatformSetup& setup, int irDelayMs, int timeoutMs) override;
    void Service(const sim::ServiceInfo& service) override;
    void ExchangeHeader() override {}  // objects name their own members
    void Result(const RequestResult& result, const std::string& note) override;
    // The whole result again, with "late":true.
    void Late(const RequestResult& result, std::size_t firstNew) override;
    void Summary(std::size_t steps, std::size_t unexpected) override;
    // One object per appliance on the command line; one object with them all for a serve line.
    void Devices(const CPlatformSetup& setup, const Request& request) override;
    void LineError(const Request& request, const std::string& error) override;

private:
    void line(const common::json::JsonValue& object);

    std::ostream& out_;
};

}  // namespace ircontrol::host
