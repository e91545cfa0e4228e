#pragma once

#include <string>
#include <vector>

namespace torvex::test {

// A point of a zone as an independent projection library has it.
struct PlaneReference {
    int zone = 0;
    double lon = 0;  // [deg]
    double lat = 0;
    double x = 0;            // north [m]
    double y = 0;            // east [m]
    double convergence = 0;  // [rad]
    double scale = 0;
};

// Origin of a zone [deg], typed in here a second time.
struct ZoneOrigin {
    double lat;
    double lon;
};
ZoneOrigin zone_origin(int zone);

// The stored table.
std::vector<PlaneReference> read_plane_points(const std::string& path);

}  // namespace torvex::test
