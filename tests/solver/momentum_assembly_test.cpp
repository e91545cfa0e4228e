// The assembly of the three equations against the plain form in double precision, on shaken meshes
// with random fields.

#include "solver/momentum_assembly.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <array>

#include "solver/momentum_case.hpp"
#include "solver/reference/plain_momentum.hpp"

namespace torvex {
namespace {

using test::deviation;
using test::for_interior;
using test::MomentumCase;

GridGeometry shaken(Planes n, unsigned seed) {
    GridGeometry g = sheared_mesh(n);
    shake(g, {0.12, 0.12, 0.12}, seed);
    return g;
}

void assemble(MomentumCase& c, int component) {
    switch (component) {
        case 0:
            return assemble_momentum<Component::u>(c.context(), c.work.momentum);
        case 1:
            return assemble_momentum<Component::v>(c.context(), c.work.momentum);
        default:
            return assemble_momentum<Component::w>(c.context(), c.work.momentum);
    }
}

void expect_like_plain(MomentumCase& c) {
    plain::Momentum p = plain::start(c.settings, c.g, c.s);
    plain::neighbour_coefficients(p);
    for (int component = 0; component < 3; ++component) {
        SCOPED_TRACE(testing::Message() << "component " << component);
        plain::sources(p, component);
        c.s.eq.sp.fill(7.0);
        assemble(c, component);
        EXPECT_LT(deviation(c.s.eq.su, p.su), 1e-5);
        for_interior(c.g, [&](int i, int j, int k) { EXPECT_EQ(c.s.eq.sp(i, j, k), 0.0); });
    }
    EXPECT_LT(deviation(c.s.eq.ae, p.ae), 1e-5);
    EXPECT_LT(deviation(c.s.eq.aw, p.aw), 1e-5);
    EXPECT_LT(deviation(c.s.eq.an, p.an), 1e-5);
    EXPECT_LT(deviation(c.s.eq.as, p.as), 1e-5);
    EXPECT_LT(deviation(c.s.eq.at, p.at), 1e-5);
    EXPECT_LT(deviation(c.s.eq.ab, p.ab), 1e-5);
}

TEST(MomentumAssembly, LikeThePlainFormForAllSettings) {
    for (const float ratio : {0.0F, 1.0F}) {
        for (const float eta : {0.0F, 0.5F, 1.0F}) {
            for (const float den : {1.0F, 1.2F}) {
                SCOPED_TRACE(testing::Message()
                             << "RATIO " << ratio << ", ETA " << eta << ", DENSIT " << den);
                MomentumCase c(shaken({8, 7, 6}, 11));
                c.fill_at_random(5);
                c.settings.RATIO = ratio;
                c.settings.ETA = eta;
                c.set_density(den);
                expect_like_plain(c);
            }
        }
    }
}

TEST(MomentumAssembly, LikeThePlainFormWhenTheDensityVaries) {
    MomentumCase c(shaken({7, 6, 8}, 3));
    c.fill_at_random(8);
    c.fill(c.s.den, [](Position r) { return 1.0 + 0.02 * r[0] + 0.03 * r[1] - 0.01 * r[2]; });
    expect_like_plain(c);
}

// One, two and three cells along each axis, and rows longer than a vector.
TEST(MomentumAssembly, LikeThePlainFormForAllExtents) {
    for (const int nx : {2, 3, 4, 21}) {
        for (const int ny : {2, 3, 4}) {
            for (const int nz : {2, 3, 4}) {
                SCOPED_TRACE(testing::Message() << nx << " " << ny << " " << nz);
                MomentumCase c(shaken({nx, ny, nz}, 1));
                c.fill_at_random(2);
                expect_like_plain(c);
            }
        }
    }
}

TEST(MomentumAssembly, LikeThePlainFormOnAHill) {
    MomentumCase c(hill_mesh({10, 9, 8}));
    c.fill_at_random(4);
    expect_like_plain(c);
}

TEST(MomentumAssembly, LeavesTheBoundaryOfTheSystemAlone) {
    MomentumCase c(shaken({5, 5, 5}, 1));
    c.fill_at_random(2);
    for (Field3* x : {&c.s.eq.ae, &c.s.eq.aw, &c.s.eq.an, &c.s.eq.as, &c.s.eq.at, &c.s.eq.ab}) {
        x->fill(-3.0F);
    }
    c.s.eq.su.fill(-3.0);
    c.s.eq.sp.fill(-3.0);
    for (int component = 0; component < 3; ++component) {
        assemble(c, component);
    }
    const auto is_left = [&](const auto& x) {
        for (int k = 1; k <= c.g.nk; ++k) {
            for (int j = 1; j <= c.g.nj; ++j) {
                for (int i = 1; i <= c.g.ni; ++i) {
                    const bool inside =
                        i > 1 && j > 1 && k > 1 && i < c.g.ni && j < c.g.nj && k < c.g.nk;
                    if ((x(i, j, k) == -3) == inside) {
                        return false;
                    }
                }
            }
        }
        return true;
    };
    for (const Field3* x :
         {&c.s.eq.ae, &c.s.eq.aw, &c.s.eq.an, &c.s.eq.as, &c.s.eq.at, &c.s.eq.ab}) {
        EXPECT_TRUE(is_left(*x));
    }
    EXPECT_TRUE(is_left(c.s.eq.su));
    EXPECT_TRUE(is_left(c.s.eq.sp));
}

TEST(MomentumAssembly, SecondAndThirdEquationKeepTheCoefficients) {
    MomentumCase c(shaken({5, 6, 5}, 1));
    c.fill_at_random(2);
    assemble(c, 0);
    const LinearSystem before = c.s.eq;
    c.s.flxU.fill(9.0F);
    assemble(c, 1);
    assemble(c, 2);
    EXPECT_TRUE(test::same_bits(before.ae, c.s.eq.ae));
    EXPECT_TRUE(test::same_bits(before.aw, c.s.eq.aw));
    EXPECT_TRUE(test::same_bits(before.an, c.s.eq.an));
    EXPECT_TRUE(test::same_bits(before.as, c.s.eq.as));
    EXPECT_TRUE(test::same_bits(before.at, c.s.eq.at));
    EXPECT_TRUE(test::same_bits(before.ab, c.s.eq.ab));
}

// A uniform flow has no explicit source at all: every difference is 0, on any mesh.
TEST(MomentumAssembly, UniformFlowHasNoSources) {
    for (const bool distorted : {false, true}) {
        MomentumCase c(distorted ? shaken({8, 7, 6}, 5)
                                 : uniform_mesh({8, 7, 6}, 3.0F, 2.0F, 1.0F));
        c.s.u.fill(7.0F);
        c.s.v.fill(-2.0F);
        c.s.w.fill(1.0F);
        c.s.p.fill(3.0F);
        c.s.vis.fill(0.5F);
        c.s.flxU.fill(7.0F);
        c.s.flxV.fill(-2.0F);
        c.s.flxW.fill(1.0F);
        for (int component = 0; component < 3; ++component) {
            assemble(c, component);
            for_interior(c.g, [&](int i, int j, int k) {
                EXPECT_NEAR(c.s.eq.su(i, j, k), 0.0, 2e-5) << i << " " << j << " " << k;
            });
        }
    }
}

TEST(MomentumAssembly, SameBitsForAnyNumberOfThreads) {
    const int before = omp_get_max_threads();
    std::array<Array3<double>, 3> su;
    LinearSystem first;
    for (const int threads : {1, 2, 3, 5, 8}) {
        omp_set_num_threads(threads);
        MomentumCase c(shaken({13, 7, 8}, 5));
        c.fill_at_random(6);
        c.set_density(1.2F);
        for (std::size_t component = 0; component < 3; ++component) {
            assemble(c, static_cast<int>(component));
            if (threads == 1) {
                su.at(component) = c.s.eq.su;
            }
            EXPECT_TRUE(test::same_bits(su.at(component), c.s.eq.su)) << threads;
        }
        if (threads == 1) {
            first = c.s.eq;
        }
        EXPECT_TRUE(test::same_bits(first.at, c.s.eq.at)) << threads;
        EXPECT_TRUE(test::same_bits(first.ab, c.s.eq.ab)) << threads;
        EXPECT_TRUE(test::same_bits(first.as, c.s.eq.as)) << threads;
    }
    omp_set_num_threads(before);
}

// The scratch of one mesh must not stain the next.
TEST(MomentumAssembly, WorkSpaceServesAnotherMesh) {
    MomentumCase small(shaken({5, 4, 4}, 1));
    small.fill_at_random(2);
    assemble(small, 0);
    MomentumCase c(shaken({9, 7, 5}, 5));
    c.fill_at_random(6);
    c.work.momentum = small.work.momentum;
    expect_like_plain(c);
}

}  // namespace
}  // namespace torvex
