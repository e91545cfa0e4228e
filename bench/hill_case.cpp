#include "hill_case.hpp"

#include <cmath>
#include <fstream>

#include "base/edit.hpp"
#include "maps/local_metric.hpp"

namespace torvex::bench {

namespace {

constexpr double centre_lon = 139 * 60 + 45;  // minutes
constexpr double centre_lat = 35 * 60 + 30;

double elevation(double x, double y) {
    const double r = std::hypot(x, y) / hill_half_width;
    return hill_height * std::exp2(-r * r);
}

template <class Value>
void write_map(const std::filesystem::path& file, int points, double spacing, Value value) {
    const MetresPerMinute metres = metres_per_minute(centre_lat, 0);
    const double reach = spacing * (points - 1) / 2;
    const auto minutes = [](double length, float metres_per) {
        return length / static_cast<double>(metres_per);
    };
    std::ofstream out(file);
    out << "<TORVEX_MAP lon-lat>\n"
        << "n_lon = " << points << ", n_lat = " << points << '\n'
        << "d_lon = " << edit::F(minutes(spacing, metres.lon), 14, 9) << '\n'
        << "d_lat = " << edit::F(minutes(spacing, metres.lat), 14, 9) << '\n'
        << "base_longitude = 0 " << edit::F(centre_lon - minutes(reach, metres.lon), 16, 8) << '\n'
        << "base_latitude = 0 " << edit::F(centre_lat - minutes(reach, metres.lat), 16, 8) << '\n'
        << "--DATA--\n";
    for (int j = 0; j < points; ++j) {
        for (int i = 0; i < points; ++i) {
            out << edit::F(value(spacing * i - reach, spacing * j - reach), 9, 3);
        }
        out << '\n';
    }
}

constexpr const char* sizes =
    "  CENT_LON = 139, 45, 0, CENT_LAT = 35, 30, 0\n"
    "  WD_TYPE = 1, N_WIND_DIRECTION = 1, WIND_DIRECTION_ANGLE = 270\n"
    "  BASIC_H_FILE = 'h.map', BASIC_Z0_FILE = 'z0.map'\n"
    // radius 1400 m: 2.2 km upwind and downwind of it, 2 km to the sides
    "  WE_LENGTH = 1980, NS_LENGTH = 1980, MIN_DXY_RAD = 500, MESH_HRATIO = 1.1\n"
    "  MIN_DZ = 5, MESH_VRATIO = 1.15\n";
constexpr const char* borders =
    "  SIDE_BR = 0.214, UP_BR = 0.293, DOWN_BR = 0.293, ADD_R = 0.2\n"
    "  CONSTANT_DZ_HEIGHT = 100\n";

}  // namespace

double spacing_for(double cells) {
    // the horizontal cells go with the inverse square, beside a band of stretched ones
    return 20.0 * std::pow(313000.0 / cells, 0.6);
}

std::string write_hill_case(const HillCase& hill, const std::filesystem::path& directory) {
    write_map(directory / "h.map", 321, 30, elevation);
    write_map(directory / "z0.map", 5, 3000, [](double, double) { return 0.03; });
    const std::filesystem::path file = directory / "torvex.tin";
    std::ofstream out(file);
    out << "&NML_RUN /\n&NML_CASEFILE\n"
        << sizes << "  MIN_DXY = " << edit::F(hill.min_dxy, 9, 3)
        << ", MAX_DXY = " << edit::F(4 * hill.min_dxy, 9, 3) << "\n/\n"
        << "&NML_MONITOR MONITOR_STEP = 10 /\n&NML_ER /\n&NML_BOUNDARY_TREATMENT\n"
        << borders << "/\n&NML_NAVIER_STOKES TURBULENCE_MODEL = " << hill.turbulence_model
        << " /\n&NML_NUMERICAL_SOLVER MAXIT = " << hill.max_iterations << ' ' << hill.solver_keys
        << " /\n&NML_SITE /\n";
    return file.string();
}

}  // namespace torvex::bench
