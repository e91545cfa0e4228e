#include "solver/sweep_until.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "solver/fields.hpp"
#include "solver/residual_sum.hpp"
#include "solver/sweep_phi.hpp"
#include "solver/test_systems.hpp"

namespace torvex {
namespace {

struct Problem {
    LinearSystem eq = random_system(40, 12, 11, 1.1F, 61);
    Field3 phi = random_field(40, 12, 11, 62);
    CellRange cells = interior(40, 12, 11);

    float sum() const { return residual_sum(cells, eq, phi, Pinned::skip); }
};

// The loop as it reads on paper, with the whole sum behind each sweep.
SolveRecord by_the_book(Problem& p, float relax, int sweeps, float r0) {
    SolveRecord result;
    for (; result.n <= sweeps; ++result.n) {
        sweep_phi(p.cells, p.eq, p.phi, relax);
        result.r1 = p.sum();
        result.a = result.r1 / r0;
        if (0.1F > result.a) {
            break;
        }
    }
    return result;
}

void expect_the_same(float relax, int sweeps, float over_first) {
    Problem book;
    Problem fast;
    const float r0 = over_first * book.sum();
    const SolveRecord expected = by_the_book(book, relax, sweeps, r0);
    const SolveRecord found =
        sweep_until(sweep_phi, fast.cells, fast.eq, fast.phi, relax, sweeps, r0);
    EXPECT_EQ(found.n, expected.n);
    EXPECT_EQ(found.r1, expected.r1);
    EXPECT_EQ(found.a, expected.a);
    EXPECT_TRUE(same_bits(fast.phi, book.phi));
}

TEST(SweepUntil, StopsWhereTheWholeSumsWould) {
    for (const float over_first : {100.0F, 5.0F, 1.0F, 0.3F, 0.01F, 1e-12F}) {
        for (const int sweeps : {1, 2, 10}) {
            expect_the_same(1.0F, sweeps, over_first);
            expect_the_same(1.1F, sweeps, over_first);
        }
    }
}

// The cases above hold both ends: some stop early, some run out.
TEST(SweepUntil, CountsOneMoreWhereTheSweepsRunOut) {
    Problem p;
    const float r0 = p.sum();
    EXPECT_EQ(sweep_until(sweep_phi, p.cells, p.eq, p.phi, 1.0F, 3, 1e-12F * r0).n, 4);
    Problem q;
    EXPECT_EQ(sweep_until(sweep_phi, q.cells, q.eq, q.phi, 1.0F, 10, 100.0F * r0).n, 1);
    Problem r;
    const int n = sweep_until(sweep_phi, r.cells, r.eq, r.phi, 1.0F, 50, r0).n;
    EXPECT_GT(n, 1);
    EXPECT_LE(n, 50);
}

TEST(SweepUntil, MakesAllSweepsFromZero) {
    Problem p;
    const SolveRecord result = sweep_until(sweep_phi, p.cells, p.eq, p.phi, 1.0F, 2, 0.0F);
    EXPECT_EQ(result.n, 3);
    EXPECT_TRUE(std::isinf(result.a));
    EXPECT_EQ(result.r1, p.sum());
}

TEST(SweepUntil, DoesNothingWithoutSweeps) {
    for (const int sweeps : {0, -3}) {
        Problem p;
        const SolveRecord result = sweep_until(sweep_phi, p.cells, p.eq, p.phi, 1.0F, sweeps, 1.0F);
        EXPECT_EQ(result.n, 1);
        EXPECT_EQ(result.r1, 0.0F);
        EXPECT_EQ(result.a, 0.0F);
        EXPECT_TRUE(same_bits(p.phi, Problem{}.phi));
    }
}

}  // namespace
}  // namespace torvex
