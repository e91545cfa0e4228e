// A whole small case: a hill of 100 m in neutral wind against level ground, to convergence.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>

#include "base/edit.hpp"
#include "maps/local_metric.hpp"
#include "results/record_file.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "run/run_fixture.hpp"
#include "run/run_state.hpp"

namespace torvex {
namespace {

using test::CaseItems;

constexpr double half_width = 500;  // where half of the height is reached [m]

// A map of 161 x 161 points, 75 m apart, round 35 30 N, 139 45 E.
std::string hill_map(double height) {
    constexpr int points = 161;
    constexpr double spacing = 75;
    constexpr double reach = spacing * (points - 1) / 2;
    const MetresPerMinute metres = metres_per_minute(35.5 * 60, 0);
    const double mx = metres.lon;
    const double my = metres.lat;
    std::string text = "<TORVEX_MAP lon-lat>\nn_lon = 161, n_lat = 161\n";
    text += "d_lon = " + edit::F(spacing / mx, 14, 9) + ", d_lat = " + edit::F(spacing / my, 14, 9);
    text += "\nbase_longitude = 139 " + edit::F(45 - reach / mx, 14, 8);
    text += "\nbase_latitude = 35 " + edit::F(30 - reach / my, 14, 8) + "\n--DATA--\n";
    for (int j = 0; j < points; ++j) {
        for (int i = 0; i < points; ++i) {
            const double r = std::hypot(-reach + spacing * i, -reach + spacing * j);
            const double c = std::cos(3.14159265358979 * r / (4 * half_width));
            text += edit::F(r < 2 * half_width ? height * c * c : 0.0, 9, 3);
        }
        text += '\n';
    }
    return text;
}

struct Solution {
    Field3 xc, yc, zc;
    FlowState flow;
    int outer_count = 0;
};

class Hill : public test::RunTest {
 protected:
    Solution solve(double height, const std::string& model) {
        directory.write("h.map", hill_map(height));
        directory.write("z0.map", test::level_map("0.03"));
        write_case({{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 1"},
                    {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 270"},
                    {"NML_CASEFILE", "WE_LENGTH = 1200, NS_LENGTH = 1200, MIN_DXY = 75"},
                    {"NML_CASEFILE", "MAX_DXY = 200, MIN_DXY_RAD = 600, MESH_HRATIO = 1.2"},
                    {"NML_CASEFILE", "MIN_DZ = 5, MESH_VRATIO = 1.25"},
                    {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + model},
                    {"NML_NUMERICAL_SOLVER", "MAXIT = 300"}});
        const test::ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_THAT(log(), testing::HasSubstr(": Converged."));
        return stored(std::stoi(model));
    }

 private:
    Solution stored(int model) const {
        const std::string stem = directory.file("restart-270_0-");
        const Extents n = read_extents(stem + "xyzc.tuf", {1, 1, 1});
        Solution s;
        for (Field3* field : {&s.xc, &s.yc, &s.zc, &s.flow.u, &s.flow.v, &s.flow.w, &s.flow.p,
                              &s.flow.tke, &s.flow.ted, &s.flow.flxU, &s.flow.flxV, &s.flow.flxW,
                              &s.flow.vis, &s.flow.pp, &s.flow.lm, &s.flow.tkl, &s.flow.viskl}) {
            field->allocate(n.ni, n.nj, n.nk);
        }
        RecordReader reader;
        EXPECT_TRUE(reader.open(stem + "xyzc.tuf") && reader.skip() && reader.skip());
        EXPECT_TRUE(reader.read(s.xc) && reader.read(s.yc) && reader.read(s.zc)) << reader.fault();
        s.outer_count = read_restart_info(stem + "restart.info").value().outer_count;
        read_vpkeout(newest_result_path(stem, s.outer_count), model, result_targets(s.flow));
        return s;
    }
};

// Speed at a height above ground in the column nearest to the centre, linear in ln z.
double speed_above_centre(const Solution& s, double height) {
    int i = 2;
    int j = 2;
    for (int n = 2; n < s.xc.ni(); ++n) {
        i = std::abs(s.xc(n, 2, 1)) < std::abs(s.xc(i, 2, 1)) ? n : i;
    }
    for (int n = 2; n < s.yc.nj(); ++n) {
        j = std::abs(s.yc(2, n, 1)) < std::abs(s.yc(2, j, 1)) ? n : j;
    }
    int k = 2;
    const auto z = [&](int n) { return static_cast<double>(s.zc(i, j, n) - s.zc(i, j, 1)); };
    while (z(k + 1) < height) {
        ++k;
    }
    const double t = std::log(height / z(k)) / std::log(z(k + 1) / z(k));
    return (1 - t) * static_cast<double>(s.flow.u(i, j, k)) +
           t * static_cast<double>(s.flow.u(i, j, k + 1));
}

// Linear theory (Jackson and Hunt 1975) puts the speed-up of this hill at 10 m near 1.32.
TEST_F(Hill, SpeedsUpTheWindAsLinearTheorySays) {
    const Solution level = solve(0, "1");
    const Solution hill = solve(100, "1");
    EXPECT_NEAR(speed_above_centre(hill, 10) / speed_above_centre(level, 10), 1.32, 0.03);

    // What comes in goes out.
    const int nx = hill.xc.ni() - 1;
    double in = 0;
    double out = 0;
    for (int k = 2; k < hill.xc.nk(); ++k) {
        for (int j = 2; j < hill.xc.nj(); ++j) {
            in += static_cast<double>(hill.flow.flxU(1, j, k));
            out += static_cast<double>(hill.flow.flxU(nx, j, k));
        }
    }
    EXPECT_NEAR(out / in, 1.0, 1e-4);

    // The hill is symmetric about the wind, and so is its flow.
    const int nj = hill.yc.nj();
    float largest = 0;
    for (int k = 1; k <= hill.xc.nk(); ++k) {
        for (int j = 1; j <= nj; ++j) {
            for (int i = 1; i <= hill.xc.ni(); ++i) {
                largest = std::max(largest,
                                   std::abs(hill.flow.u(i, j, k) - hill.flow.u(i, nj + 1 - j, k)));
            }
        }
    }
    EXPECT_LT(largest, 0.01F) << "of a wind of 10 m/s";
}

TEST_F(Hill, TheHybridModelWithoutItsKlPartIsKEpsilonToTheLastBit) {
    const Solution one = solve(100, "1");
    const Solution four = solve(100, "4");
    ASSERT_EQ(one.outer_count, four.outer_count);
    for (const auto& field : {&FlowState::u, &FlowState::p, &FlowState::tke, &FlowState::ted,
                              &FlowState::vis, &FlowState::flxW}) {
        const Field3& a = one.flow.*field;
        const Field3& b = four.flow.*field;
        for (std::size_t n = 0; n < a.size(); ++n) {
            ASSERT_EQ(a.data()[n], b.data()[n]);
        }
    }
}

}  // namespace
}  // namespace torvex
