// Base that forbids copy construction and copy assignment; derive from it non-publicly.
#pragma once

namespace ircontrol {

class CNoncopyable {
protected:
    CNoncopyable() = default;
    ~CNoncopyable() = default;

public:
    CNoncopyable(const CNoncopyable&) = delete;
    CNoncopyable& operator=(const CNoncopyable&) = delete;
};

}  // namespace ircontrol
