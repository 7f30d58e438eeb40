// Turns named values into a Request: the one parser behind the command line, serve's JSON lines
// and the web API, so a request is checked the same way wherever it comes from. Resolves the
// default codeset from the pairing list and key names through the codeset's key map. Reads the
// setup it is given (which must outlive it); const, so usable from any thread; throws nothing.
#pragma once

#include <string>

#include "CPlatformSetup.h"
#include "JsonValue.h"
#include "Request.h"

namespace ircontrol::host {

class CRequestParser {
public:
    // How errors name a value: "--type" on the command line, "\"type\"" in a JSON line.
    enum class Style { CommandLine, Json };

    CRequestParser(const CPlatformSetup& setup, Style style) : setup_(setup), style_(style) {}

    // `command` is key, ac, set or devices. False with a one-line reason ("key: ...").
    bool Parse(const std::string& command, const NamedValues& values, Request& out, std::string& error) const;
    // One JSON object {"command": ..., "id": ..., <the command's values>}; `line` is kept in the
    // request. False with a one-line reason; `out.id` and `out.line` are set even then.
    bool ParseLine(const std::string& text, long line, Request& out, std::string& error) const;
    // The same for an object already parsed (the web API's bodies).
    bool ParseObject(const common::json::JsonValue& root, long line, Request& out, std::string& error) const;

    // Whole-number text within [min, max]: "22", "-3", "+7". A JSON line's 22.0 arrives as "22".
    enum class Number { Ok, NotANumber, OutOfRange };
    static Number ParseInteger(const std::string& text, long long min, long long max, long long& out);

private:
    bool key(const NamedValues& values, Request& out, std::string& error) const;
    bool ac(const NamedValues& values, Request& out, std::string& error) const;
    bool set(const NamedValues& values, Request& out, std::string& error) const;
    bool keyCode(const std::string& text, Request& out, std::string& error) const;
    std::string name(const std::string& value) const;  // --value or "value"

    const CPlatformSetup& setup_;
    Style style_;
};

}  // namespace ircontrol::host
