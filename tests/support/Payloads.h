// Key-event texts as a client writes them. A member given as text is written as it is, so a
// test can put any JSON value where a well-formed client puts a number.
#pragma once

#include <string>

namespace irctest {

inline std::string KeyPayload(const std::string& type, const std::string& codeset, const std::string& key) {
    return R"({"x.com.korvan.deviceType":")" + type + R"(","x.com.korvan.codesetName":")" + codeset +
           R"(","x.com.korvan.codesetKey":)" + key + "}";
}

// An air conditioner's state: the three words quoted, the set point as JSON text.
inline std::string AcPayload(const std::string& codeset, const std::string& power, const std::string& mode,
                             const std::string& setpoint, const std::string& fan, int key = 1) {
    return R"({"x.com.korvan.deviceType":"oic.d.airconditioner","x.com.korvan.codesetName":")" + codeset +
           R"(","x.com.korvan.codesetKey":)" + std::to_string(key) +
           R"(,"x.com.korvan.acState":{"x.com.korvan.power":")" + power + R"(","x.com.korvan.mode":")" +
           mode + R"(","x.com.korvan.coolingSetpoint":)" + setpoint + R"(,"x.com.korvan.fanSpeed":")" +
           fan + R"("}})";
}

}  // namespace irctest
