#include "run/level_ground.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <ostream>

namespace torvex::test {

namespace {

constexpr double kappa = 0.41;
constexpr std::array heights{10.0, 50.0, 100.0, 200.0};

}  // namespace

void PrintTo(const LevelGround& ground, std::ostream* out) {
    *out << "z0 " << ground.z0 << " m, first cell " << ground.first_cell << " m, ratio "
         << ground.ratio << ", model " << ground.model
         << (ground.accelerated ? ", accelerated" : "");
}

CaseItems case_of(const LevelGround& ground) {
    const auto text = [](double value) { return std::to_string(value); };
    return {{"NML_RUN", "TERRAIN_MODE = 'flat'"},
            {"NML_CASEFILE", "FLAT_ROUGHNESS = " + text(ground.z0)},
            {"NML_CASEFILE", "WE_LENGTH = 280, NS_LENGTH = 280, MIN_DXY = 200, MAX_DXY = 200"},
            {"NML_CASEFILE", "MESH_HRATIO = 1, MIN_DZ = " + text(ground.first_cell)},
            {"NML_CASEFILE", "MESH_VRATIO = " + text(ground.ratio)},
            {"NML_BOUNDARY_TREATMENT", "ADD_R = 0, ADD_LIMIT = 9000, UP_BR = 1.5, DOWN_BR = 1.5"},
            {"NML_BOUNDARY_TREATMENT", "SIDE_BR = 1.1, EQUILIBRIUM_INFLOW = T"},
            {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + std::to_string(ground.model)},
            {"NML_NAVIER_STOKES", "WALL_DISSIPATION_AT_CENTRE = T"},
            {"NML_NUMERICAL_SOLVER", "MAXIT = 400, CC_OUT_U = 1E-4, CC_OUT_V = 1E-4"},
            {"NML_NUMERICAL_SOLVER", "CC_OUT_W = 1E-4, CC_OUT_M = 1E-4, URFU = 0.7, URFV = 0.7"},
            {"NML_NUMERICAL_SOLVER", "URFW = 0.7, URFP = 0.3, URFK = 0.7, URFE = 0.7"},
            {"NML_NUMERICAL_SOLVER", "URFVIS = 0.7"},
            {"NML_NUMERICAL_SOLVER", ground.accelerated ? "ACCEL = 1" : "ACCEL = 0"}};
}

void expect_level(const Solution& s, const LevelGround& ground) {
    const GridGeometry& g = s.grid;
    const int j = g.nj / 2;
    const Column in{1, j};
    const Column out{g.nx, j};
    ASSERT_GT(g.xc(out.i, j, 2) - g.xc(in.i, j, 2), 9500.0F);
    const auto change = [&](const Field3& x, double z) {
        return value_above(s, x, out, z) / value_above(s, x, in, z) - 1;
    };
    for (const double z : heights) {
        EXPECT_NEAR(change(s.flow.u, z), 0.0, 0.01) << z << " m";
        EXPECT_NEAR(change(s.flow.tke, z), 0.0, 0.05) << z << " m";
    }
    const auto u = [&](const Column& at, int k) {
        return static_cast<double>(s.flow.u(at.i, at.j, k));
    };
    EXPECT_NEAR(u(out, 2) / u(in, 2) - 1, 0.0, 0.02);
    const double u_star = kappa * u(out, 2) / std::log(height(s, out, 2) / ground.z0);
    for (int k = 3; k <= 6; ++k) {
        const double law = u_star / kappa * std::log(height(s, out, k) / ground.z0);
        EXPECT_NEAR(u(out, k) / law - 1, 0.0, 0.015) << "cell " << k - 1;
    }
}

}  // namespace torvex::test
