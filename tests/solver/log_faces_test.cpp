// The faces between the first and the second cell from a wall: what the log law carries through
// them, and what it is on them.

#include "solver/log_faces.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "mesh/test_meshes.hpp"
#include "solver/constants.hpp"
#include "solver/fields.hpp"
#include "solver/momentum_assembly.hpp"
#include "solver/momentum_case.hpp"

namespace torvex::test {
namespace {

CaseSettings with_key(int tunnel_mode) {
    CaseSettings s;
    s.WALL_DISSIPATION_AT_CENTRE = true;
    s.WIND_TUNNEL_MODE = tunnel_mode;
    s.WIND_TUNNEL_Z0 = 0.01F;
    s.CMU = 0.0625F;
    return s;
}

LogFaces faces_of(const CaseSettings& settings, const GridGeometry& g) {
    return wall_cells(settings, g, Field2(g.ni, g.nj, 0.03F)).log_faces;
}

// Cells 10 m by 4 m by 2 m: centres 1 m and 3 m from the ground with the face at 2 m, 2 m and 6 m
// from the sides with the face at 4 m.
GridGeometry box() {
    return with_metrics(uniform_mesh({5, 6, 7}, 10, 4, 2));
}

TEST(LogFaces, AreThereOnRequestOnly) {
    const GridGeometry g = box();
    CaseSettings off = with_key(2);
    off.WALL_DISSIPATION_AT_CENTRE = false;
    const LogFaces none = faces_of(off, g);
    EXPECT_EQ(none.ground.factor.size(), 0U);
    EXPECT_EQ(none.south.factor.size(), 0U);
    const LogFaces open = faces_of(with_key(0), g);
    EXPECT_GT(open.ground.factor.size(), 0U);
    EXPECT_EQ(open.top.factor.size(), 0U);
    EXPECT_EQ(open.south.factor.size(), 0U);
    const LogFaces lid = faces_of(with_key(1), g);
    EXPECT_GT(lid.top.factor.size(), 0U);
    EXPECT_EQ(lid.north.factor.size(), 0U);
}

TEST(LogFaces, HaveTheLengthsAndWeightsOfTheLaw) {
    const GridGeometry g = box();
    const LogFaces all = faces_of(with_key(2), g);
    EXPECT_NEAR(all.scale, 0.41 * 0.5, 1e-6);
    for (const auto* faces : {&all.ground, &all.top}) {
        EXPECT_NEAR(faces->of_speed(3, 4), 2 / std::log(3.0), 1e-5);
        EXPECT_NEAR(faces->of_dissipation(3, 4), 1.5, 1e-5);
    }
    EXPECT_NEAR(all.ground.factor(3, 4), std::log(2.0) / std::log(3.0), 1e-6);
    EXPECT_NEAR(all.top.factor(3, 4), 1 - std::log(2.0) / std::log(3.0), 1e-6);
    for (const auto* faces : {&all.south, &all.north}) {
        EXPECT_NEAR(faces->of_speed(3, g.nz), 4 / std::log(3.0), 1e-5);
        EXPECT_NEAR(faces->of_dissipation(3, g.nz), 3.0, 1e-5);
    }
    EXPECT_NEAR(all.south.factor(3, 2), std::log(2.0) / std::log(3.0), 1e-6);
    EXPECT_NEAR(all.north.factor(3, 2), 1 - std::log(2.0) / std::log(3.0), 1e-6);
}

// Ground that rises 1 in 1: all distances shrink by sqrt(2), and the ratios stay.
TEST(LogFaces, MeasureAlongTheNormal) {
    const GridGeometry g = with_metrics(mapped_mesh({5, 5, 5}, [](double s, double t, double q) {
        return Position{40 * s, 40 * t, 40 * s + 16 * q};
    }));
    const LogFaces faces = faces_of(with_key(0), g);
    EXPECT_NEAR(faces.ground.of_speed(3, 3), 4 / std::sqrt(2.0) / std::log(3.0), 1e-4);
    EXPECT_NEAR(faces.ground.of_dissipation(3, 3), 3 / std::sqrt(2.0), 1e-4);
    EXPECT_NEAR(faces.ground.factor(3, 3), std::log(2.0) / std::log(3.0), 1e-5);
}

// Two layers under a lid: the second cell from the ground is the first one from the lid.
TEST(LogFaces, AreLeftOutWhereTwoWallsShareThem) {
    EXPECT_EQ(
        faces_of(with_key(0), with_metrics(uniform_mesh({5, 6, 2}, 1, 1, 1))).ground.factor.size(),
        0U);
    const GridGeometry two = with_metrics(uniform_mesh({5, 6, 3}, 1, 1, 1));
    EXPECT_GT(faces_of(with_key(0), two).ground.factor.size(), 0U);
    const LogFaces lid = faces_of(with_key(1), two);
    EXPECT_EQ(lid.ground.factor.size(), 0U);
    EXPECT_EQ(lid.top.factor.size(), 0U);
    const LogFaces narrow = faces_of(with_key(2), with_metrics(uniform_mesh({5, 3, 6}, 1, 1, 1)));
    EXPECT_EQ(narrow.south.factor.size(), 0U);
    EXPECT_GT(narrow.ground.factor.size(), 0U);
}

TEST(LogFaces, OthersKeepTheirFactors) {
    const GridGeometry g = box();
    const LogFaces faces = faces_of(with_key(2), g);
    FlowState s;
    Field2 scratch(g.ni, 1);
    for (const auto& [j, k] : {std::pair(3, 3), std::pair(3, 1), std::pair(3, g.nz)}) {
        EXPECT_FALSE(
            log_face_viscosity(faces, g, s, LogFlux::of_speed, Axis::k, j, k, row(scratch, 1)));
        EXPECT_EQ(log_face_factor(faces, g, Axis::k, j, k, row(g.fz, j, k))[3], g.fz(3, j, k));
    }
    EXPECT_EQ(log_face_factor(faces, g, Axis::i, 2, 2, row(g.fx, 2, 2))[3], g.fx(3, 2, 2));
    EXPECT_EQ(log_face_factor(faces, g, Axis::j, 3, 3, row(g.fy, 3, 3))[3], g.fy(3, 3, 3));
}

// Along every wall the coefficient of momentum between the first two cells times the difference of
// the log law is the stress den u*^2 on the area of the face, whatever the viscosity in the cells,
// in even layers and in stretched ones.
TEST(LogFaces, CarryTheStressOfTheLogLaw) {
    constexpr double u_star = 0.5;
    constexpr double z0 = 0.02;
    for (const double ratio : {1.0, 1.3}) {
        SCOPED_TRACE(ratio);
        MomentumCase c(stretched_mesh({5, 6, 7}, {10, 4, 2}, {1, ratio, ratio}));
        c.settings.WALL_DISSIPATION_AT_CENTRE = true;
        c.settings.WIND_TUNNEL_MODE = 2;
        c.set_density(1.2F);
        c.s.vis = random_field(c.g, 0.5F, 3, 3);
        c.s.tke.fill(static_cast<float>(u_star * u_star / 0.3));
        const SolverContext context = c.context();
        assemble_momentum<Component::u>(context, c.work.momentum);
        const auto law = [&](double d) { return u_star / 0.41 * std::log(d / z0); };
        const GridGeometry& g = c.g;
        const auto from = [](float a, float b) { return std::abs(double(a) - double(b)); };
        // Away from the edges, where a face belongs to one wall.
        const int i = 3;
        const int j = 4;
        const int k = 4;
        const double level =
            double(g.xn(i, j, 1) - g.xn(i - 1, j, 1)) * double(g.yn(i, j, 1) - g.yn(i, j - 1, 1));
        const double upright =
            double(g.xn(i, j, 1) - g.xn(i - 1, j, 1)) * double(g.zn(i, j, k) - g.zn(i, j, k - 1));
        const double stress = 1.2 * u_star * u_star;
        const auto expect = [&](double coefficient, double d1, double d2, double area) {
            EXPECT_NEAR(coefficient * (law(d2) - law(d1)) / (stress * area), 1.0, 1e-4);
        };
        const float ground = g.zn(i, j, 1);
        const float lid = g.zn(i, j, g.nz);
        expect(c.s.eq.at(i, j, 2), from(g.zc(i, j, 2), ground), from(g.zc(i, j, 3), ground), level);
        expect(c.s.eq.ab(i, j, 3), from(g.zc(i, j, 2), ground), from(g.zc(i, j, 3), ground), level);
        expect(c.s.eq.at(i, j, g.nz - 1), from(g.zc(i, j, g.nz), lid),
               from(g.zc(i, j, g.nz - 1), lid), level);
        const float south = g.yn(i, 1, k);
        const float north = g.yn(i, g.ny, k);
        expect(c.s.eq.an(i, 2, k), from(g.yc(i, 2, k), south), from(g.yc(i, 3, k), south), upright);
        expect(c.s.eq.as(i, g.ny, k), from(g.yc(i, g.ny, k), north),
               from(g.yc(i, g.ny - 1, k), north), upright);
    }
}

// Each thread forms the faces below its first plane anew.
TEST(LogFaces, GiveTheSameCoefficientsForAnyNumberOfThreads) {
    const auto coefficients = [](int threads) {
        const Threads use(threads);
        GridGeometry mesh = uniform_mesh({9, 8, 7}, 1, 1, 1);
        shake(mesh, {0.2, 0.2, 0.2}, 11);
        MomentumCase c(std::move(mesh));
        c.settings.WALL_DISSIPATION_AT_CENTRE = true;
        c.settings.WIND_TUNNEL_MODE = 2;
        c.fill_at_random(5);
        const SolverContext context = c.context();
        assemble_momentum<Component::u>(context, c.work.momentum);
        return std::pair(c.s.eq.at, c.s.eq.su);
    };
    const auto one = coefficients(1);
    for (const int threads : {2, 5}) {
        const auto many = coefficients(threads);
        EXPECT_TRUE(same_bits(one.first, many.first)) << threads;
        EXPECT_TRUE(same_bits(one.second, many.second)) << threads;
    }
}

}  // namespace
}  // namespace torvex::test
