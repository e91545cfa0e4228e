#include "run/whole_case.hpp"

#include <gmock/gmock.h>

#include <cmath>

#include "base/edit.hpp"
#include "base/record_file.hpp"
#include "maps/local_metric.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "run/run_state.hpp"

namespace torvex::test {

Ground cosine_hill(double height, double half_width, double east, double north) {
    return [=](double x, double y) {
        const double r = std::hypot(x - east, y - north);
        const double c = std::cos(3.14159265358979 * r / (4 * half_width));
        return r < 2 * half_width ? height * c * c : 0.0;
    };
}

std::string map_of(const Ground& ground, int points, double spacing) {
    const double reach = spacing * (points - 1) / 2;
    const MetresPerMinute metres = metres_per_minute(35.5 * 60, 0);
    const auto mx = static_cast<double>(metres.lon);
    const auto my = static_cast<double>(metres.lat);
    const std::string n = std::to_string(points);
    std::string text = "<TORVEX_MAP lon-lat>\nn_lon = " + n + ", n_lat = " + n + "\n";
    text += "d_lon = " + edit::F(spacing / mx, 14, 9) + ", d_lat = " + edit::F(spacing / my, 14, 9);
    text += "\nbase_longitude = 139 " + edit::F(45 - reach / mx, 14, 8);
    text += "\nbase_latitude = 35 " + edit::F(30 - reach / my, 14, 8) + "\n--DATA--\n";
    for (int j = 0; j < points; ++j) {
        for (int i = 0; i < points; ++i) {
            text += edit::F(ground(-reach + spacing * i, -reach + spacing * j), 10, 4);
        }
        text += '\n';
    }
    return text;
}

Column column_at(const Solution& s, double x, double y) {
    const auto nearest = [](double place, int last, const auto& centre) {
        int n = 2;
        for (int m = 2; m <= last; ++m) {
            n = std::abs(centre(m) - place) < std::abs(centre(n) - place) ? m : n;
        }
        return n;
    };
    const GridGeometry& g = s.grid;
    return {nearest(x, g.nx, [&](int i) { return static_cast<double>(g.xc(i, 2, 1)); }),
            nearest(y, g.ny, [&](int j) { return static_cast<double>(g.yc(2, j, 1)); })};
}

double height(const Solution& s, const Column& at, int k) {
    return static_cast<double>(s.grid.zc(at.i, at.j, k) - s.grid.zc(at.i, at.j, 1));
}

double value_above(const Solution& s, const Field3& field, const Column& at, double z) {
    int k = 2;
    while (height(s, at, k + 1) < z) {
        ++k;
    }
    const double low = height(s, at, k);
    const double t = std::log(z / low) / std::log(height(s, at, k + 1) / low);
    return (1 - t) * static_cast<double>(field(at.i, at.j, k)) +
           t * static_cast<double>(field(at.i, at.j, k + 1));
}

double mass_imbalance(const Solution& s) {
    const GridGeometry& g = s.grid;
    double in = 0;
    double net = 0;
    const auto add = [&](const Field3& flux, int i, int j, int k, double sign) {
        net += sign * static_cast<double>(flux(i, j, k));
    };
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            in += static_cast<double>(s.flow.flxU(1, j, k));
            add(s.flow.flxU, 1, j, k, -1);
            add(s.flow.flxU, g.nx, j, k, 1);
        }
        for (int i = 2; i <= g.nx; ++i) {
            add(s.flow.flxV, i, 1, k, -1);
            add(s.flow.flxV, i, g.ny, k, 1);
        }
    }
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            add(s.flow.flxW, i, j, 1, -1);
            add(s.flow.flxW, i, j, g.nz, 1);
        }
    }
    return net / in;
}

void WholeCase::write_ground(const Ground& elevation, const Ground& roughness, int points,
                             double spacing) const {
    directory.write("h.map", map_of(elevation, points, spacing));
    directory.write("z0.map", map_of(roughness, points, spacing));
}

Solution WholeCase::converged(const CaseItems& items, const std::string& tag) const {
    write_case(items);
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(log(), testing::HasSubstr(": Converged."));
    return stored(tag);
}

Solution WholeCase::stored(const std::string& tag, const std::string& prefix) const {
    const std::string stem = directory.file(prefix + "restart-" + tag + "-");
    const Extents n = read_extents(stem + "xyzc.tuf", {1, 1, 1});
    Solution s;
    GridGeometry& g = s.grid;
    FlowState& f = s.flow;
    allocate_nodes(g, n.ni - 1, n.nj - 1, n.nk - 1);
    for (Field3* centre : {&g.xc, &g.yc, &g.zc}) {
        centre->allocate(n.ni, n.nj, n.nk);
    }
    allocate(f, result_fields, n.ni, n.nj, n.nk);
    f.z0.allocate(n.ni, n.nj);
    read_xyz(stem + "xyz.tuf", g.xn, g.yn, g.zn);
    read_z0(stem + "z0.tuf", f.z0);
    RecordReader centres;
    EXPECT_TRUE(centres.open(stem + "xyzc.tuf") && centres.skip() && centres.skip() &&
                centres.read(g.xc) && centres.read(g.yc) && centres.read(g.zc))
        << centres.fault();
    s.outer_count = read_restart_info(stem + "restart.info").value().outer_count;
    // The fields that all models store; what a k-l model adds is left in the file.
    read_vpkeout(newest_result_path(stem, s.outer_count), 1, f);
    return s;
}

CaseItems hill_case(const CaseItems& more) {
    CaseItems items{{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 1"},
                    {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 270"},
                    {"NML_CASEFILE", "WE_LENGTH = 1200, NS_LENGTH = 1200, MIN_DXY = 75"},
                    {"NML_CASEFILE", "MAX_DXY = 200, MIN_DXY_RAD = 600, MESH_HRATIO = 1.2"},
                    {"NML_CASEFILE", "MIN_DZ = 5, MESH_VRATIO = 1.25"},
                    {"NML_NUMERICAL_SOLVER", "MAXIT = 300"}};
    items.insert(items.end(), more.begin(), more.end());
    return items;
}

}  // namespace torvex::test
