// A request's property list as the plugin gets it: sent through the fake host to a throwaway
// service whose set callback copies it, as the plugin's own callback does. Header-only: it uses
// the plugin's list helper, which only the plugin's test programs link.
#pragma once

#include <vyrf.h>

#include <exception>
#include <memory>
#include <vector>

#include "sim/Simulator.h"
#include "util/IPropertyListHelper.h"

namespace irctest {

// The copy, which outlives the host's list; throws what the copy threw (std::invalid_argument).
inline std::shared_ptr<ircontrol::IPropertyListHelper> HostList(const std::vector<sim::HostProperty>& properties) {
    struct Copy {
        std::shared_ptr<ircontrol::IPropertyListHelper> list;
        std::exception_ptr error;
    } copy;
    const vyrf_set_request_cb onSet = [](vyrf_service_h, vyrf_transaction_h, vyrf_property_list_h list, void* user) {
        auto* into = static_cast<Copy*>(user);
        try {
            into->list = ircontrol::IPropertyListHelper::Create(list);
        } catch (...) {
            into->error = std::current_exception();
        }
    };
    void* service = vyrf_service_create({"irctest-list", 12}, {"", 0}, nullptr, nullptr, onSet, nullptr, &copy);
    sim::Host::SendSet("irctest-list", properties);
    vyrf_service_destroy(service);
    if (copy.error) std::rethrow_exception(copy.error);
    return copy.list;
}

}  // namespace irctest
