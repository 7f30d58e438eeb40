// The JSON kinds. The numbers are fixed: SharedJson::type() produces them and CProperty stores them.
#pragma once

namespace common::json {

enum JsonType : int {
    kNull = 0,    // null, and any value type json-glib holds that is none of the below
    kBool = 1,
    kInt = 2,     // signed 64-bit
    kDouble = 3,
    kString = 4,
    kObject = 5,
    kArray = 6,
};

}  // namespace common::json
