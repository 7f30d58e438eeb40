// IPrinter for people: aligned columns, one row per request with its transmissions, answer and
// reason below each other. Writes only to its stream; one thread.
#pragma once

#include <ostream>

#include "IPrinter.h"

namespace ircontrol::host {

class CTextPrinter : public IPrinter {
public:
    explicit CTextPrinter(std::ostream& out) : out_(out) {}

    void Platform(const CPlatformSetup& setup, int irDelayMs, int timeoutMs) override;
    void Service(const sim::ServiceInfo& service) override;
    void ExchangeHeader() override;
    void Result(const RequestResult& result, const std::string& note) override;
    // "late for line 3 (fan key 12 (HFAN0001)): hdevice #1 key 12; answer ok"
    void Late(const RequestResult& result, std::size_t firstNew) override;
    void Summary(std::size_t steps, std::size_t unexpected) override;
    void Devices(const CPlatformSetup& setup, const Request& request) override;
    void LineError(const Request& request, const std::string& error) override;

private:
    std::ostream& out_;
};

}  // namespace ircontrol::host
