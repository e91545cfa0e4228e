#pragma once

#include <memory>
#include <vector>

#include "maps/plane_points.hpp"

struct pj_ctx;
struct PJconsts;

namespace torvex::test {

// A zone as PROJ has it: transverse Mercator on the Bessel ellipsoid, scale 0.9999.
class ProjZone {
 public:
    explicit ProjZone(int zone);
    ~ProjZone();
    ProjZone(const ProjZone&) = delete;
    ProjZone& operator=(const ProjZone&) = delete;

    PlaneReference forward(double lon, double lat) const;         // [deg]
    PlaneReference inverse(double x_north, double y_east) const;  // [m]

 private:
    PlaneReference with_factors(PlaneReference point) const;

    int zone_;
    pj_ctx* context_;
    PJconsts* projection_;
};

// The points of the stored table: in each zone its origin, and points up to 1.4 degrees east and
// west of it.
std::vector<PlaneReference> plane_points_by_proj();

}  // namespace torvex::test
