#pragma once

#include <functional>
#include <string>

#include "base/stop.hpp"

namespace torvex::test {

// A 3 by 2 map with its south-west point at 139 0 E, 35 0 N; spacings of one and half a minute.
inline std::string map_text(const std::string& data, const std::string& header_extra = "",
                            const std::string& counts = "n_lon = 3, n_lat = 2") {
    return "<TORVEX_MAP lon-lat>\n" + counts +
           "\nd_lon = 1.0, d_lat = 0.5\nbase_longitude = 139 0\nbase_latitude = 35 0\n" +
           header_extra + "--DATA--\n" + data;
}

// The stop that a call ends in; code 0 if it does not end so.
inline Stop stop_of(const std::function<void()>& call) {
    try {
        call();
    } catch (const Stop& s) {
        return s;
    }
    return {0, "", "", ""};
}

}  // namespace torvex::test
