#include "maps/coordinate_ids.hpp"

#include <numbers>

#include "base/stop.hpp"

namespace torvex {

namespace {

constexpr double minutes_per_radian = 10800.0 / std::numbers::pi;

bool within(int id, int first, int last) {
    return id >= first && id <= last;
}

void set_utm(CoordinateFrame& frame, int zone, bool south) {
    frame.system.a = 6378137.0;  // WGS84
    frame.system.F = 298.257223563;
    frame.system.m0 = 0.9996;
    frame.false_east = 500000.0;
    frame.false_north = south ? 10000000.0 : 0.0;
    prepare_system(frame.system, frame.id, {6.0 * zone - 183.0, 0, 0}, {0, 0, 0});
}

}  // namespace

CoordinateFrame coordinate_frame(int id, const std::string& where) {
    CoordinateFrame frame;
    frame.id = id;
    if (within(id, 1, 19)) {
        set_coordinate_system(frame.system, id);
    } else if (within(id, 1001, 1019)) {
        frame.system.a = 6378137.0;  // GRS80
        frame.system.F = 298.257222101;
        set_coordinate_system(frame.system, id - 1000);
    } else if (within(id, 101, 160)) {
        set_utm(frame, id - 100, false);
    } else if (within(id, 201, 260)) {
        set_utm(frame, id - 200, true);
    } else if (id != 0 && id != -1) {
        stop(
            1, "Unknown coordinate system [" + std::to_string(id) + "]", where,
            "0 degrees, 1 to 19 plane zones, 1001 to 1019 the same on GRS80, 101 to 160 and 201 to "
            "260 UTM north and south, -1 metres from the centre");
    }
    return frame;
}

MinutesOfArc minutes_of_arc(const CoordinateFrame& frame, double X, double Y) {
    if (frame.geographic()) {
        return {60.0 * X, 60.0 * Y};
    }
    PlanePoint point;
    point.x = Y - frame.false_north;  // the plane module has x to the north
    point.y = X - frame.false_east;
    plane_to_geographic(frame.system, point);
    return {radians_of(point.lon) * minutes_per_radian, radians_of(point.lat) * minutes_per_radian};
}

FramePoint frame_point(const CoordinateFrame& frame, const MinutesOfArc& at) {
    if (frame.geographic()) {
        return {at.lon / 60.0, at.lat / 60.0};
    }
    PlanePoint point;
    point.lon = triple_of(at.lon / minutes_per_radian);
    point.lat = triple_of(at.lat / minutes_per_radian);
    geographic_to_plane(frame.system, point);
    return {point.y + frame.false_east, point.x + frame.false_north};
}

}  // namespace torvex
