#include "maps/plane_points.hpp"

#include <array>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace torvex::test {

ZoneOrigin zone_origin(int zone) {
    constexpr std::array<ZoneOrigin, 19> origins{{{33, 129.5},
                                                  {33, 131},
                                                  {36, 132 + 10 / 60.0},
                                                  {33, 133.5},
                                                  {36, 134 + 20 / 60.0},
                                                  {36, 136},
                                                  {36, 137 + 10 / 60.0},
                                                  {36, 138.5},
                                                  {36, 139 + 50 / 60.0},
                                                  {40, 140 + 50 / 60.0},
                                                  {44, 140.25},
                                                  {44, 142.25},
                                                  {44, 144.25},
                                                  {26, 142},
                                                  {26, 127.5},
                                                  {26, 124},
                                                  {26, 131},
                                                  {20, 136},
                                                  {26, 154}}};
    return origins.at(static_cast<std::size_t>(zone - 1));
}

std::vector<PlaneReference> read_plane_points(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    std::vector<PlaneReference> points;
    while (std::getline(in, line)) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        std::istringstream items(line);
        PlaneReference p;
        if (!(items >> p.zone >> p.lon >> p.lat >> p.x >> p.y >> p.convergence >> p.scale)) {
            throw std::runtime_error("bad line in the table: " + line);
        }
        points.push_back(p);
    }
    return points;
}

}  // namespace torvex::test
