#pragma once

#include <string>

#include "maps/plane_rectangular.hpp"

namespace torvex {

// The coordinate systems in which shapefiles and databases come, by their numbers:
//
//   0             longitude and latitude in degrees; of no datum in particular
//   1 .. 19       zones of the plane rectangular system, Bessel ellipsoid
//   1001 .. 1019  the same zones on GRS80
//   101 .. 160    UTM zones 1 to 60 north, WGS84
//   201 .. 260    UTM zones 1 to 60 south
//   -1            metres east and north of the case centre
//
// Files give X to the east and Y to the north (plane zones: easting, northing).
struct CoordinateFrame {
    int id = 0;
    PlaneSystem system;      // of a projected system
    double false_east = 0;   // what its X has in front [m]
    double false_north = 0;  // and its Y

    bool geographic() const { return id == 0; }
    bool metres_from_centre() const { return id == -1; }
};

// stops 1 for a number that is none of them; `where` tells where it was given
CoordinateFrame coordinate_frame(int id, const std::string& where);

// A geographic point [minutes of arc].
struct MinutesOfArc {
    double lon = 0;
    double lat = 0;
};

// Minutes of arc of a point X, Y of the frame; not for metres from the centre. Stops 1 for a point
// beyond a pole.
MinutesOfArc minutes_of_arc(const CoordinateFrame& frame, double X, double Y);

// The way back: X and Y of a geographic point.
struct FramePoint {
    double X = 0;
    double Y = 0;
};
// Not for metres from the centre.
FramePoint frame_point(const CoordinateFrame& frame, const MinutesOfArc& at);

}  // namespace torvex
