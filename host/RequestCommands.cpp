// The commands that run on the command line alone: demo, key/ac/set and devices.
#include <vector>

#include "CLateFollowUp.h"
#include "CRequestParser.h"
#include "Commands.h"
#include "ServiceContract.h"

namespace ircontrol::host {
namespace {

void ShowLate(IPrinter& printer, CLateFollowUp& followUp, std::chrono::milliseconds wait) {
    followUp.Look(wait, [&printer](uint64_t, const RequestResult& result, std::size_t firstNew) {
        printer.Late(result, firstNew);
    });
}

}  // namespace

int RunRequest(CommandContext& c) {
    const CRequestParser parser(c.setup, CRequestParser::Style::CommandLine);
    Request request;
    std::string error;
    if (!parser.Parse(c.options.command, c.options.values, request, error)) return c.Fail(error, 2);
    if (!c.options.json) c.printer.Platform(c.setup, c.options.irDelayMs, c.options.timeoutMs);
    const RequestResult result = c.session.Send(request);
    c.printer.Result(result, "");
    // Show what still comes of a request that had no answer in time, marked late; the status
    // stays that of the timeout.
    CLateFollowUp followUp(c.session);
    followUp.Follow(result);
    ShowLate(c.printer, followUp, c.DrainWait());
    switch (result.outcome) {
        case Outcome::Ok:
        case Outcome::Listed: return 0;
        case Outcome::Refused: return c.Fail("refused: " + result.reason, 1);
        case Outcome::Unanswered:
        case Outcome::NoAnswer: return c.Fail(result.reason, 1);
    }
    return 1;
}

int RunDemo(CommandContext& c) {
    c.printer.Platform(c.setup, c.options.irDelayMs, c.options.timeoutMs);
    c.printer.Service(*sim::Host::FindService(contract::kServiceName));
    c.printer.ExchangeHeader();
    struct Step {
        RequestKind kind;
        NamedValues values;
        Outcome expected;
        std::string note;
    };
    const std::vector<Step> steps = {
        {RequestKind::Key, {{"type", "fan"}, {"key", "10"}}, Outcome::Ok, ""},
        {RequestKind::Key, {{"type", "purifier"}, {"key", "11"}}, Outcome::Ok, ""},
        {RequestKind::Key, {{"type", "humidifier"}, {"key", "76"}}, Outcome::Ok, ""},
        {RequestKind::Key, {{"type", "cleaner"}, {"key", "39"}}, Outcome::Ok, ""},
        {RequestKind::Ac, {}, Outcome::Ok, ""},
        {RequestKind::Key, {{"type", "fan"}, {"key", "39"}}, Outcome::Refused, "key 39 is not one of a fan's keys"},
        {RequestKind::Key,
         {{"type", "oic.d.television"}, {"codeset", c.setup.PairedCodeset(contract::kOcfFan)}, {"key", "10"}},
         Outcome::Refused, "the service drives no such device type"},
        {RequestKind::Key, {{"type", "fan"}, {"codeset", "NOTPAIRED"}, {"key", "10"}}, Outcome::Refused,
         "no paired appliance uses that codeset"},
        {RequestKind::Ac, {{"mode", "cool"}}, Outcome::Refused, "AC words are upper case: \"cool\" is not a mode"},
        {RequestKind::Set,
         {{"value", "{\"x.com.korvan.codesetName\":\"HFAN0001\",\"x.com.korvan.codesetKey\":10}"}},
         Outcome::Unanswered, "a payload without a device type gets no answer, on purpose"},
    };
    const CRequestParser parser(c.setup, CRequestParser::Style::CommandLine);
    CLateFollowUp followUp(c.session);
    std::size_t unexpected = 0;
    for (const auto& step : steps) {
        Request request;
        std::string error;
        if (!parser.Parse(ToString(step.kind), step.values, request, error)) return c.Fail(error, 1);
        const RequestResult result = c.session.Send(request);
        ShowLate(c.printer, followUp, std::chrono::milliseconds(0));
        c.printer.Result(result, step.note);
        if (result.outcome != step.expected) ++unexpected;
        followUp.Follow(result);
    }
    ShowLate(c.printer, followUp, c.DrainWait());
    c.printer.Summary(steps.size(), unexpected);
    return unexpected == 0 ? 0 : c.Fail(std::to_string(unexpected) + " demo answer(s) were not the expected ones", 1);
}

int RunDevices(CommandContext& c) {
    if (!c.options.json) c.printer.Platform(c.setup, c.options.irDelayMs, c.options.timeoutMs);
    c.printer.Devices(c.setup, Request());
    return 0;
}

}  // namespace ircontrol::host
