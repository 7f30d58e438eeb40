// serve: one request per JSON line on stdin (see `serve --help`), one JSON object per line about
// each on stdout, whatever --json says. The status is 0 only when every non-blank line was usable
// and answered ok in time.
#include "CJsonPrinter.h"
#include "CLateFollowUp.h"
#include "CRequestParser.h"
#include "Commands.h"

namespace ircontrol::host {

int RunServe(CommandContext& c) {
    CJsonPrinter printer(c.out);
    const CRequestParser parser(c.setup, CRequestParser::Style::Json);
    CLateFollowUp followUp(c.session);
    const auto showLate = [&](std::chrono::milliseconds wait) {
        followUp.Look(wait, [&](uint64_t, const RequestResult& result, std::size_t firstNew) {
            printer.Late(result, firstNew);
        });
    };
    bool allOk = true;
    std::string line;
    for (long number = 1; std::getline(c.in, line); ++number) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        Request request;
        std::string error;
        if (!parser.ParseLine(line, number, request, error)) {
            showLate(std::chrono::milliseconds(0));
            printer.LineError(request, error);
            allOk = false;
            continue;
        }
        if (request.kind == RequestKind::Devices) {
            showLate(std::chrono::milliseconds(0));
            printer.Devices(c.setup, request);
            continue;
        }
        const RequestResult result = c.session.Send(request);
        showLate(std::chrono::milliseconds(0));
        printer.Result(result, "");
        if (result.outcome != Outcome::Ok) allOk = false;
        followUp.Follow(result);
    }
    showLate(c.DrainWait());
    return allOk ? 0 : 1;
}

}  // namespace ircontrol::host
