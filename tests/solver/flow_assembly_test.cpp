// The assembly of u, v and w in one walk: the sources of three separate assemblies.

#include "solver/flow_assembly.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <array>
#include <cstddef>

#include "solver/momentum_assembly.hpp"
#include "solver/momentum_case.hpp"
#include "solver/reference/plain_momentum.hpp"

namespace torvex {
namespace {

using test::deviation;
using test::MomentumCase;

constexpr std::array coefficients{&LinearSystem::ae, &LinearSystem::aw, &LinearSystem::an,
                                  &LinearSystem::as, &LinearSystem::at, &LinearSystem::ab};

GridGeometry sloping(Planes n, unsigned seed) {
    GridGeometry g = sheared_mesh(n);
    shake(g, {0.12, 0.12, 0.12}, seed);
    return g;
}

// A state with everything at random, a density that varies, and room for the sources.
struct Flow : MomentumCase {
    Flow(const Planes& planes, unsigned seed) : MomentumCase(sloping(planes, seed)) {
        fill_at_random(seed + 1);
        fill(s.den, [](Position r) { return 1.0 + 0.02 * r[0] + 0.03 * r[1] - 0.01 * r[2]; });
        for (Field3& x : su) {
            x.allocate(g.ni, g.nj, g.nk);
        }
    }
    void assemble_all() { assemble_flow(context(), work.momentum, su[0], su[1], su[2]); }
    // The same of one component after the other, in the double precision of the system.
    std::array<Array3<double>, 3> assemble_each() {
        assemble_momentum<Component::u>(context(), work.momentum);
        std::array<Array3<double>, 3> each;
        each[0] = s.eq.su;
        assemble_momentum<Component::v>(context(), work.momentum);
        each[1] = s.eq.su;
        assemble_momentum<Component::w>(context(), work.momentum);
        each[2] = s.eq.su;
        return each;
    }
    std::array<Field3, 3> su;
};

TEST(FlowAssembly, EqualsTheThreeAssemblies) {
    for (const Planes& planes :
         {Planes{10, 9, 8}, {2, 2, 2}, {3, 3, 3}, {2, 7, 6}, {7, 2, 6}, {7, 6, 2}, {40, 5, 4}}) {
        SCOPED_TRACE(testing::Message() << planes.nx << " " << planes.ny << " " << planes.nz);
        Flow all(planes, 11);
        Flow separate(planes, 11);
        all.assemble_all();
        const auto each = separate.assemble_each();
        for (std::size_t n = 0; n < 3; ++n) {
            EXPECT_LT(deviation(all.su[n], each[n]), 3e-7) << n;
            EXPECT_GT(deviation(all.su[n], each[(n + 1) % 3]), 0.1) << n;
        }
        for (const auto coefficient : coefficients) {
            EXPECT_TRUE(test::same_bits(all.s.eq.*coefficient, separate.s.eq.*coefficient));
        }
    }
}

TEST(FlowAssembly, IsLikeThePlainForm) {
    Flow all({9, 8, 7}, 5);
    all.settings.RATIO = 0.8F;
    all.settings.ETA = 0.3F;
    plain::Momentum p = plain::start(all.settings, all.g, all.s);
    plain::neighbour_coefficients(p);
    all.assemble_all();
    for (int component = 0; component < 3; ++component) {
        plain::sources(p, component);
        EXPECT_LT(deviation(all.su.at(static_cast<std::size_t>(component)), p.su), 1e-5)
            << component;
    }
}

TEST(FlowAssembly, LeavesEverythingElseAlone) {
    Flow all({6, 5, 5}, 3);
    for (Field3& x : all.su) {
        x.fill(-3.0F);
    }
    all.s.eq.su.fill(-3.0);
    all.s.eq.sp.fill(-3.0);
    const Flow before = all;
    all.assemble_all();
    EXPECT_TRUE(test::same_bits(all.s.eq.su, before.s.eq.su));
    EXPECT_TRUE(test::same_bits(all.s.eq.sp, before.s.eq.sp));
    EXPECT_TRUE(test::same_bits(all.s.u, before.s.u));
    for (const Field3& x : all.su) {
        for (int k = 1; k <= all.g.nk; ++k) {
            for (int j = 1; j <= all.g.nj; ++j) {
                for (int i = 1; i <= all.g.ni; ++i) {
                    const bool inside =
                        i > 1 && j > 1 && k > 1 && i < all.g.ni && j < all.g.nj && k < all.g.nk;
                    EXPECT_EQ(x(i, j, k) != -3.0F, inside) << i << " " << j << " " << k;
                }
            }
        }
    }
}

TEST(FlowAssembly, SameBitsForAnyNumberOfThreads) {
    const int before = omp_get_max_threads();
    omp_set_num_threads(1);
    Flow first({13, 7, 8}, 5);
    first.assemble_all();
    for (const int threads : {2, 3, 5, 8}) {
        omp_set_num_threads(threads);
        Flow again({13, 7, 8}, 5);
        again.assemble_all();
        for (std::size_t n = 0; n < 3; ++n) {
            EXPECT_TRUE(test::same_bits(again.su[n], first.su[n])) << threads;
        }
        for (const auto coefficient : coefficients) {
            EXPECT_TRUE(test::same_bits(again.s.eq.*coefficient, first.s.eq.*coefficient));
        }
    }
    omp_set_num_threads(before);
}

// One scratch serves the equations alone and all together, in any order and on any mesh.
TEST(FlowAssembly, SharesItsScratchWithTheSingleEquations) {
    Flow fresh({9, 8, 7}, 7);
    fresh.assemble_all();
    Flow used({9, 8, 7}, 7);
    Flow other({5, 6, 5}, 8);
    assemble_momentum<Component::v>(used.context(), used.work.momentum);
    assemble_flow(other.context(), used.work.momentum, other.su[0], other.su[1], other.su[2]);
    used.assemble_all();
    for (std::size_t n = 0; n < 3; ++n) {
        EXPECT_TRUE(test::same_bits(used.su[n], fresh.su[n])) << n;
    }
}

}  // namespace
}  // namespace torvex
