// What a face of the parent carries must be carried by the child faces in it.

#include "nest/dstr_momen.hpp"

#include <gmock/gmock.h>

#include <cmath>

#include "nest/boundary_values.hpp"
#include "nest/nest_case.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::field_on;
using test::NestCase;

// A parent whose flow bends within its cells, so that interpolation and face value differ.
void fill_bent(NestCase& c) {
    c.parent.flow.u = field_on(c.parent.grid, [](double x, double y, double h) {
        return 6.0 + 2.0 * std::log(1.0 + h) + std::sin(0.02 * x) + 0.8 * std::cos(0.03 * y);
    });
    c.parent.flow.v = field_on(c.parent.grid, [](double x, double y, double h) {
        return std::sin(0.01 * x + 0.03 * y) - 0.001 * h;
    });
    c.parent.flow.w = field_on(c.parent.grid, [](double x, double y, double) {
        return 0.3 * std::cos(0.02 * x - 0.02 * y);
    });
    c.parent.flow.tke.fill(0.5F);
    c.parent.flow.ted.fill(0.02F);
}

// Sum of q A over the child faces of a parent face over the sum of their areas, by the plain areas
// of a level mesh, and the parent's value on the face.
struct FaceMeans {
    double child = 0;
    double parent = 0;
    int faces = 0;
};

FaceMeans means(const NestCase& c, const Field3& child, const Field3& parent, int jp, int kp) {
    constexpr int I = 5;  // plane x = -200
    const GridGeometry& g = c.child;
    const GridGeometry& p = c.parent.grid;
    const double low = static_cast<double>(p.zn(I, jp, kp - 1) - p.zn(I, jp, 1));
    const double high = static_cast<double>(p.zn(I, jp, kp) - p.zn(I, jp, 1));
    FaceMeans m;
    double area = 0;
    for (int k = 2; k <= g.nz; ++k) {
        const auto h = static_cast<double>(g.zc(1, 2, k) - g.zc(1, 2, 1));
        for (int j = 2; j <= g.ny; ++j) {
            const float y = g.yc(1, j, 1);
            if (h >= low && h < high && y > p.yn(I, jp - 1, 1) && y < p.yn(I, jp, 1)) {
                const double A = static_cast<double>((g.yn(1, j, 1) - g.yn(1, j - 1, 1)) *
                                                     (g.zn(1, j, k) - g.zn(1, j, k - 1)));
                m.child += static_cast<double>(child(1, j, k)) * A;
                area += A;
                ++m.faces;
            }
        }
    }
    m.child /= area;
    // Even spacing: the face lies half way between the centres.
    m.parent = 0.5 * static_cast<double>(parent(I, jp, kp) + parent(I + 1, jp, kp));
    return m;
}

TEST(DstrMomen, MomentumOfEachParentFaceIsKept) {
    NestCase c;
    c.settings.nest.nest_bc_distr = 1;
    fill_bent(c);
    set_boundary_values(c.pass(), c.parent, c.flow);
    const Field3 before = c.flow.u;
    dstrMomen(c.pass(), c.parent, c.flow);
    int changed = 0;
    for (int kp = 2; kp <= c.parent.grid.nz; ++kp) {
        for (int jp = 5; jp <= 8; ++jp) {
            const FaceMeans u = means(c, c.flow.u, c.parent.flow.u, jp, kp);
            if (u.faces == 0) {
                continue;
            }
            EXPECT_EQ(u.faces, 3);
            EXPECT_NEAR(u.child / u.parent, 1.0, 1.0e-5) << jp << ' ' << kp;
            const FaceMeans v = means(c, c.flow.v, c.parent.flow.v, jp, kp);
            EXPECT_NEAR(v.child, v.parent, 1.0e-5) << jp << ' ' << kp;
            const FaceMeans w = means(c, c.flow.w, c.parent.flow.w, jp, kp);
            EXPECT_NEAR(w.child, w.parent, 1.0e-5) << jp << ' ' << kp;
            changed +=
                std::fabs(means(c, before, c.parent.flow.u, jp, kp).child - u.parent) > 1.0e-3;
        }
    }
    EXPECT_GT(changed, 10);  // the interpolated flow alone would not have kept it
}

// The shape of the interpolated flow stays: all u in a parent face are scaled alike.
TEST(DstrMomen, ScalesUAndShiftsVAndW) {
    NestCase c;
    fill_bent(c);
    set_boundary_values(c.pass(), c.parent, c.flow);
    const Field3 u = c.flow.u;
    const Field3 v = c.flow.v;
    const Field3 w = c.flow.w;
    dstrMomen(c.pass(), c.parent, c.flow);
    for (int k = 2; k <= c.child.nz; ++k) {
        for (int j = 3; j <= 4; ++j) {  // with j = 2 in one face of the parent
            EXPECT_NEAR(c.flow.u(1, j, k) / u(1, j, k), c.flow.u(1, 2, k) / u(1, 2, k), 1.0e-6F);
            EXPECT_NEAR(c.flow.v(1, j, k) - v(1, j, k), c.flow.v(1, 2, k) - v(1, 2, k), 1.0e-6F);
            EXPECT_NEAR(c.flow.w(1, j, k) - w(1, j, k), c.flow.w(1, 2, k) - w(1, 2, k), 1.0e-6F);
        }
    }
}

TEST(DstrMomen, DistributionZeroPutsTheParentsValueOnEveryFace) {
    NestCase c;
    c.settings.nest.nest_bc_distr = 0;
    fill_bent(c);
    set_boundary_values(c.pass(), c.parent, c.flow);
    dstrMomen(c.pass(), c.parent, c.flow);
    for (int k = 2; k <= c.child.nz; ++k) {
        for (int j = 2; j <= c.child.ny; ++j) {
            const int jp = 5 + (j - 2) / 3;  // the child begins with cell 5 of the parent
            EXPECT_NEAR(c.flow.u(1, j, k),
                        0.5F * (c.parent.flow.u(5, jp, k) + c.parent.flow.u(6, jp, k)), 1.0e-5F);
            EXPECT_NEAR(c.flow.w(1, j, k),
                        0.5F * (c.parent.flow.w(5, jp, k) + c.parent.flow.w(6, jp, k)), 1.0e-5F);
        }
    }
}

// Levels of the child that do not tile the parent's layers: seven with their centres in six layers,
// two of them between 50 m and 80 m.
TEST(DstrMomen, LevelsNeedNotTileTheLayers) {
    NestCase c(test::flat_ground, {0, 15, 40, 61, 90, 150, 300, 1000});
    fill_bent(c);
    set_boundary_values(c.pass(), c.parent, c.flow);
    dstrMomen(c.pass(), c.parent, c.flow);
    int covered = 0;
    for (int kp = 2; kp <= c.parent.grid.nz; ++kp) {
        const FaceMeans u = means(c, c.flow.u, c.parent.flow.u, 5, kp);
        if (u.faces > 0) {
            ++covered;
            EXPECT_NEAR(u.child / u.parent, 1.0, 1.0e-5) << kp;
        }
    }
    EXPECT_EQ(covered, 6);
}

TEST(DstrMomen, ScaleIsHeldAndStillAirIsLeftAlone) {
    NestCase c;
    fill_bent(c);
    set_boundary_values(c.pass(), c.parent, c.flow);
    for (int j = 2; j <= c.child.ny; ++j) {
        c.flow.u(1, j, 3) = 0.01F;
        c.flow.u(1, j, 4) = 900.0F;
        c.flow.u(1, j, 5) = 0.0F;
        c.flow.u(1, j, 6) = -5.0F;
        c.flow.u(1, j, 7) = 0.9e-6F;
        c.flow.u(1, j, 8) = 1.2e-6F;
    }
    dstrMomen(c.pass(), c.parent, c.flow);
    EXPECT_FLOAT_EQ(c.flow.u(1, 3, 3), 0.02F);
    EXPECT_FLOAT_EQ(c.flow.u(1, 3, 4), 450.0F);
    EXPECT_EQ(c.flow.u(1, 3, 5), 0.0F);
    EXPECT_FLOAT_EQ(c.flow.u(1, 3, 6), -2.5F);
    // A micrometre a second is where still air begins.
    EXPECT_EQ(c.flow.u(1, 3, 7), 0.9e-6F);
    EXPECT_FLOAT_EQ(c.flow.u(1, 3, 8), 2.4e-6F);
}

TEST(DstrMomen, OtherPlanesAndTheGroundAreLeftAlone) {
    NestCase c;
    fill_bent(c);
    set_boundary_values(c.pass(), c.parent, c.flow);
    const Field3 u = c.flow.u;
    dstrMomen(c.pass(), c.parent, c.flow);
    const GridGeometry& g = c.child;
    test::for_boundary_columns(g, [&](int i, int j) {
        for (int k = 1; k <= g.nk; ++k) {
            const bool inflow = i == 1 && j > 1 && j < g.nj && k > 1 && k < g.nk;
            if (!inflow) {
                EXPECT_EQ(c.flow.u(i, j, k), u(i, j, k));
            }
        }
    });
}

TEST(DstrMomen, FaceWithoutAreaEndsTheRun) {
    NestCase c;
    fill_bent(c);
    for (const int j : {1, 2}) {
        c.child.zn(1, j, 3) = c.child.zn(1, j, 2);
    }
    ::testing::internal::CaptureStdout();
    const auto stopped = test::stop_of([&] { dstrMomen(c.pass(), c.parent, c.flow); });
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "[dstrMomen] ERROR: Divide by Zero.\n");
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(stopped->what(), ::testing::StartsWith("[dstrMomen] ERROR: Divide by Zero."));
}

}  // namespace
}  // namespace torvex
