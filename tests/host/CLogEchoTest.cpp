#include "CLogEcho.h"

#include <dlog.h>

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

TEST(CLogEchoTest, FormatsOneReadableLinePerLogLine) {
    struct Case {
        int priority;
        const char* tag;
        const char* text;
        bool colour;
        const char* line;
    };
    const Case cases[] = {
        {DLOG_INFO, "IRCONTROL", "a.cpp : f(1)  hello\n", false, "I/IRCONTROL   a.cpp : f(1)  hello"},
        {DLOG_ERROR, "IRCONTROL", "\033[31mbad\033[0m", false, "E/IRCONTROL   bad"},
        {DLOG_ERROR, "IRCONTROL", "\033[31mbad\033[0m", true, "E/IRCONTROL   \033[31mbad\033[0m"},
        {DLOG_DEBUG, "VYRF_COMMON", "x\r\n", false, "D/VYRF_COMMON x"},
        {DLOG_FATAL, "A_VERY_LONG_TAG_NAME", "y", false, "F/A_VERY_LONG_TAG_NAME y"},
        {42, "T", "\033[unterminated", false, "?/T           \033[unterminated"},
    };
    for (const auto& c : cases) EXPECT_EQ(CLogEcho::Format(c.priority, c.tag, c.text, c.colour), c.line) << c.line;
}

TEST(CLogEchoTest, EchoesWhileAliveAndNothingAfterwards) {
    std::ostringstream out;
    {
        CLogEcho echo(out, false);
        dlog_print(DLOG_WARN, "IRCONTROL", "seen %d", 1);
    }
    dlog_print(DLOG_WARN, "IRCONTROL", "not seen");
    EXPECT_EQ(out.str(), "W/IRCONTROL   seen 1\n");
}

}  // namespace
}  // namespace ircontrol::host
