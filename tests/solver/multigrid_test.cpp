// The multigrid solver of the pressure correction as a whole.

#include "solver/multigrid.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "solver/linear_solvers.hpp"
#include "solver/multigrid_systems.hpp"
#include "solver/pressure_run.hpp"
#include "solver/test_systems.hpp"

namespace torvex {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinite = std::numeric_limits<float>::infinity();

Field3 zeros(const FaceCase& c) {
    return {c.ni + 2, c.nj + 2, c.nk + 2};
}

bool finite(const Field3& x) {
    return std::all_of(x.data(), x.data() + x.size(), [](float v) { return std::isfinite(v); });
}

// su = A x for a known x comes back up to a constant. The error is bounded by that of rounding
// times the condition of the mesh, some thousands here.
TEST(Multigrid, FindsAKnownSolutionUpToItsLevel) {
    for (const int n : {6, 17, 32}) {
        SCOPED_TRACE(n);
        FaceCase c = random_faces(n, n + 3, 9, {1, 2, 4}, 3, 11U);
        const Field3 x = field_of(
            c, [=](int i, int j, int k) { return std::cos(6.0 * i / n) + 0.3 * j / n + 0.1 * k; });
        c.manufacture(x);
        Field3 pp = zeros(c);
        Multigrid solver;
        const SolveRecord done = solver.solve(c.system(), pp, {.stop_ratio = 1e-5F, .cycles = 12});
        EXPECT_LE(done.n, 12);
        const float level = pp(2, 2, 2) - x(2, 2, 2);
        for (int k = 2; k <= c.nk + 1; ++k) {
            for (int j = 2; j <= c.nj + 1; ++j) {
                for (int i = 2; i <= c.ni + 1; ++i) {
                    ASSERT_NEAR(pp(i, j, k) - level, x(i, j, k), 2e-3);
                }
            }
        }
    }
}

TEST(Multigrid, StopsAtTheCycleThatMeetsTheRatio) {
    const FaceCase c = random_faces(40, 30, 12, {1, 1, 30}, 10, 12U);
    Field3 pp = zeros(c);
    Multigrid solver;
    const SolveRecord done = solver.solve(c.system(), pp, {.stop_ratio = 1e-3F});
    EXPECT_NEAR(done.r0, c.source(), 1e-5 * c.source());
    EXPECT_LT(done.a, 1e-3F);
    EXPECT_FLOAT_EQ(done.a, done.r1 / done.r0);
    // The residual is the true one and not only that of the recursion.
    EXPECT_NEAR(done.r1, c.residual(pp), 0.05 * double(done.r1));
    ASSERT_GT(done.n, 1);
    const SolveRecord fewer =
        solver.solve(c.system(), pp, {.stop_ratio = 1e-3F, .cycles = done.n - 1});
    EXPECT_GE(fewer.a, 1e-3F);
    EXPECT_EQ(fewer.n, done.n) << "one more than allowed";
    EXPECT_NEAR(fewer.r1, c.residual(pp), 0.05 * double(fewer.r1));
}

TEST(Multigrid, TheUsualStopIsATenthOrTenCycles) {
    const FaceCase c = random_faces(30, 20, 8, {}, 10, 13U);
    Field3 pp = zeros(c);
    Multigrid solver;
    const SolveRecord done = solver.solve(c.system(), pp);
    EXPECT_LE(done.n, 3);
    EXPECT_LT(c.residual(pp), 0.1 * c.source());
}

// A source with a mean has no solution; the part without it has.
TEST(Multigrid, TakesTheMeanOffTheSource) {
    FaceCase c = random_faces(12, 10, 6, {}, 3, 14U);
    std::transform(c.su.data(), c.su.data() + c.su.size(), c.su.data(),
                   [](float x) { return x + 1.0F; });
    Field3 pp = zeros(c);
    Multigrid solver;
    const SolveRecord done = solver.solve(c.system(), pp, {.stop_ratio = 1e-4F, .cycles = 20});
    EXPECT_LT(done.a, 1e-4F);
    EXPECT_LT(c.residual(pp), 2e-4 * c.source());
}

TEST(Multigrid, NothingToSolve) {
    FaceCase c = random_faces(12, 10, 6, {}, 3, 15U);
    Multigrid solver;
    for (const float source : {0.0F, 3.0F}) {
        c.su.fill(source);
        Field3 pp = zeros(c);
        const SolveRecord done = solver.solve(c.system(), pp);
        EXPECT_EQ(done.n, 0);
        EXPECT_NEAR(done.a, 0.0F, 1e-6F);
        EXPECT_TRUE(same_bits(pp, zeros(c)));
    }
}

// Of what stood in pp nothing is left, and boundary values are not touched.
TEST(Multigrid, WritesTheInterior) {
    const FaceCase c = random_faces(12, 10, 6, {}, 3, 16U);
    Field3 first = zeros(c);
    Field3 second(c.ni + 2, c.nj + 2, c.nk + 2, 5.0F);
    Multigrid solver;
    solver.solve(c.system(), first);
    solver.solve(c.system(), second);
    const CellRange cells = interior(c.ni + 2, c.nj + 2, c.nk + 2);
    EXPECT_EQ(largest_difference(cells, first, second), 0.0);
    EXPECT_TRUE(same_outside(cells, second, Field3(c.ni + 2, c.nj + 2, c.nk + 2, 5.0F)));
}

TEST(Multigrid, NoCycleLeavesNoCorrection) {
    const FaceCase c = random_faces(12, 10, 6, {}, 3, 17U);
    Multigrid solver;
    for (const int cycles : {0, -2}) {
        Field3 pp = zeros(c);
        const SolveRecord done = solver.solve(c.system(), pp, {.cycles = cycles});
        EXPECT_EQ(done.n, 1);
        EXPECT_TRUE(same_bits(pp, zeros(c)));
    }
}

// Coefficients on the boundary take no part.
TEST(Multigrid, ClosesTheBoundary) {
    FaceCase c = random_faces(9, 8, 7, {}, 3, 18U);
    Field3 pp = zeros(c);
    Multigrid solver;
    solver.solve(c.system(), pp);
    for (int k = 1; k <= 9; ++k) {
        for (int j = 1; j <= 10; ++j) {
            for (int i = 1; i <= 11; ++i) {
                const auto is_boundary = [](int n, int cells) { return n < 2 || n > cells; };
                c.a_e(i, j, k) = is_boundary(i, 9) ? 100.0F : c.a_e(i, j, k);
                c.a_n(i, j, k) = is_boundary(j, 8) ? 100.0F : c.a_n(i, j, k);
                c.a_t(i, j, k) = is_boundary(k, 7) ? 100.0F : c.a_t(i, j, k);
            }
        }
    }
    Field3 again = zeros(c);
    solver.solve(c.system(), again);
    EXPECT_TRUE(same_bits(pp, again));
}

struct Shape {
    int ni, nj, nk;
};

// Meshes of a cell, a column, a row or a plane, and odd numbers everywhere.
TEST(Multigrid, SolvesThinMeshes) {
    for (const Shape& s :
         {Shape{1, 1, 1}, {1, 1, 2},  {1, 1, 30}, {2, 1, 1},   {1, 2, 9},  {2, 2, 9},  {3, 1, 4},
          {3, 2, 4},      {3, 3, 3},  {4, 2, 5},  {5, 1, 6},   {5, 5, 5},  {31, 1, 1}, {1, 31, 1},
          {33, 2, 7},     {2, 35, 7}, {63, 3, 1}, {13, 11, 1}, {7, 9, 40}, {65, 17, 2}}) {
        SCOPED_TRACE(std::to_string(s.ni) + " x " + std::to_string(s.nj) + " x " +
                     std::to_string(s.nk));
        FaceCase c = random_faces(s.ni, s.nj, s.nk, {1, 2, 20}, 10, 19U);
        Field3 pp = zeros(c);
        Multigrid solver;
        const SolveRecord done = solver.solve(c.system(), pp, {.stop_ratio = 1e-3F});
        EXPECT_LE(done.n, 6);
        EXPECT_LE(c.residual(pp), 1.2e-3 * c.source());
        EXPECT_TRUE(finite(pp));
    }
}

// Mean factor a cycle over the cycles that bring the residual down by four orders.
double contraction(const FaceCase& c) {
    Field3 pp = zeros(c);
    Multigrid solver;
    const SolveRecord done = solver.solve(c.system(), pp, {.stop_ratio = 1e-4F, .cycles = 30});
    return std::pow(double(done.a), 1.0 / std::min(done.n, 30));
}

TEST(Multigrid, ContractsAsFastOnLargeMeshesAsOnSmall) {
    for (const int n : {16, 31, 64, 128}) {
        EXPECT_LT(contraction(random_faces(n, n, 16, {}, 2, 20U)), 0.15) << n << " columns a side";
    }
}

// Coefficients go with the square of the ratio of the edges. Tall cells leave planes that are all
// but uncoupled, flat ones columns that are all but rigid.
TEST(Multigrid, ContractsWhateverTheShapeOfTheCells) {
    for (const float ratio : {1e-6F, 1e-4F, 1e-2F, 1e2F, 1e4F, 1e6F}) {
        const Along along{.k = ratio};
        EXPECT_LT(contraction(random_faces(64, 48, 20, along, 2, 21U)), 0.25) << ratio;
    }
    // Cells ten times as long as wide, for which neither the lines nor the pairs are made.
    EXPECT_LT(contraction(random_faces(64, 48, 20, {.j = 100}, 2, 22U)), 0.8);
}

// Coefficients without any order, each drawn for itself.
TEST(Multigrid, SurvivesContrasts) {
    for (const float contrast : {10.0F, 1e2F, 1e3F, 1e4F}) {
        const FaceCase c = random_faces(40, 36, 12, {}, contrast, 23U);
        Field3 pp = zeros(c);
        Multigrid solver;
        const SolveRecord done = solver.solve(c.system(), pp, {.cycles = 60});
        EXPECT_LE(done.n, 60) << contrast;
        EXPECT_LT(c.residual(pp), 0.12 * c.source()) << contrast;
    }
    const FaceCase c = random_faces(40, 36, 12, {}, 1e9F, 23U);
    Field3 pp = zeros(c);
    EXPECT_TRUE(std::isfinite(Multigrid().solve(c.system(), pp, {.cycles = 60}).a));
    EXPECT_TRUE(finite(pp));
}

// Any unit of measurement will do.
TEST(Multigrid, DoesNotDependOnTheSizeOfTheNumbers) {
    const FaceCase c = random_faces(20, 17, 9, {1, 2, 30}, 10, 24U);
    Field3 pp = zeros(c);
    Multigrid solver;
    const SolveRecord done = solver.solve(c.system(), pp);
    for (const float size : {0x1p-60F, 0x1p60F}) {
        FaceCase scaled = c;
        for (Field3* a : {&scaled.a_e, &scaled.a_n, &scaled.a_t}) {
            std::transform(a->data(), a->data() + a->size(), a->data(),
                           [=](float x) { return size * x; });
        }
        Field3 x = zeros(c);
        const SolveRecord again = solver.solve(scaled.system(), x);
        EXPECT_EQ(again.n, done.n);
        EXPECT_NEAR(again.a, done.a, 1e-4);
        EXPECT_NEAR(x(9, 9, 5) * size, pp(9, 9, 5), 1e-3);
    }
}

TEST(Multigrid, EndsWhateverTheNumbers) {
    for (const float bad : {nan, infinite, -infinite}) {
        for (const int where : {0, 1, 2, 3}) {
            FaceCase c = random_faces(20, 17, 9, {}, 10, 25U);
            Field3* fields[] = {&c.a_e, &c.a_n, &c.a_t, &c.su};
            (*fields[where])(7, 8, 5) = bad;
            Field3 pp = zeros(c);
            Multigrid solver;
            const SolveRecord done = solver.solve(c.system(), pp);
            EXPECT_EQ(done.n, 11) << bad << " in " << where;
            EXPECT_FALSE(std::isfinite(done.r1)) << bad << " in " << where;
            EXPECT_FALSE(std::isfinite(done.a)) << bad << " in " << where;
            // A later system does not suffer.
            const FaceCase good = random_faces(20, 17, 9, {}, 10, 25U);
            solver.solve(good.system(), pp);
            Field3 fresh = zeros(c);
            Multigrid().solve(good.system(), fresh);
            EXPECT_TRUE(same_bits(pp, fresh));
        }
    }
}

// Not a pressure equation: no conductance at all, or negative ones.
TEST(Multigrid, EndsWithoutADirectionToGo) {
    FaceCase c = random_faces(20, 17, 9, {}, 10, 26U);
    for (const float factor : {0.0F, -1.0F}) {
        FaceCase odd = c;
        for (Field3* a : {&odd.a_e, &odd.a_n, &odd.a_t}) {
            std::transform(a->data(), a->data() + a->size(), a->data(),
                           [=](float x) { return factor * x; });
        }
        Field3 pp = zeros(c);
        Multigrid solver;
        const SolveRecord done = solver.solve(odd.system(), pp);
        EXPECT_EQ(done.n, 11);
        EXPECT_TRUE(finite(pp));
    }
}

TEST(Multigrid, GivesTheSameBitsForAnyNumberOfThreads) {
    const int processors = omp_get_max_threads();
    const FaceCase c = random_faces(61, 83, 11, {1, 2, 30}, 100, 27U);
    Field3 first;
    SolveRecord first_done;
    for (const int threads : {1, 2, 3, 5, 8}) {
        omp_set_num_threads(threads);
        Field3 pp = zeros(c);
        Multigrid solver;
        const SolveRecord done = solver.solve(c.system(), pp, {.stop_ratio = 1e-3F});
        if (threads == 1) {
            first = pp;
            first_done = done;
        }
        EXPECT_TRUE(same_bits(pp, first)) << threads;
        EXPECT_EQ(done.n, first_done.n) << threads;
        EXPECT_EQ(done.r0, first_done.r0) << threads;
        EXPECT_EQ(done.r1, first_done.r1) << threads;
    }
    omp_set_num_threads(processors);
}

TEST(Multigrid, ServesMeshAfterMeshAndCopies) {
    const FaceCase c = random_faces(20, 17, 9, {}, 10, 28U);
    Field3 fresh = zeros(c);
    Multigrid().solve(c.system(), fresh);
    Multigrid solver;
    const FaceCase other = random_faces(9, 30, 4, {}, 10, 29U);
    Field3 pp = zeros(other);
    solver.solve(other.system(), pp);
    Multigrid copy = solver;
    for (Multigrid* each : {&solver, &copy}) {
        pp = zeros(c);
        each->solve(c.system(), pp);
        EXPECT_TRUE(same_bits(pp, fresh));
    }
}

// ---- behind the seam of the pressure solvers

LinearSolvers multigrid() {
    CaseSettings settings;
    settings.PRESSURE_SOLVER = 1;
    return linear_solvers(settings);
}

double residual_sum_of(const LinearSystem& eq, const Field3& phi, const CellRange& cells) {
    double mean = 0;
    for_cells(cells, [&](int i, int j, int k) { mean += eq.su(i, j, k); });
    mean /= double(cells.i2 - 1) * (cells.j2 - 1) * (cells.k2 - 1);
    double sum = 0;
    for_cells(cells, [&](int i, int j, int k) {
        double r = eq.su(i, j, k) - mean - double(eq.ap(i, j, k)) * double(phi(i, j, k));
        r += double(eq.ae(i, j, k)) * double(phi(i + 1, j, k)) +
             double(eq.aw(i, j, k)) * double(phi(i - 1, j, k)) +
             double(eq.an(i, j, k)) * double(phi(i, j + 1, k)) +
             double(eq.as(i, j, k)) * double(phi(i, j - 1, k)) +
             double(eq.at(i, j, k)) * double(phi(i, j, k + 1)) +
             double(eq.ab(i, j, k)) * double(phi(i, j, k - 1));
        sum += std::abs(r);
    });
    return sum;
}

TEST(MultigridPressure, SolvesASingularSystem) {
    const CellRange cells = interior(18, 15, 12);
    LinearSystem eq = neumann_system(smooth_field(18, 15, 12));
    Field3 phi(18, 15, 12);
    const double r0 = residual_sum_of(eq, phi, cells);
    const SolveRecord done = multigrid().pressure(cells, eq, phi, 10);
    EXPECT_LT(done.a, 0.1F);
    EXPECT_NEAR(done.r0, r0, 1e-4 * r0);
    EXPECT_NEAR(done.r1, residual_sum_of(eq, phi, cells), 0.02 * double(done.r1));
}

TEST(MultigridPressure, ImprovesThePressureThatIsThere) {
    const CellRange cells = interior(18, 15, 12);
    LinearSystem eq = neumann_system(smooth_field(18, 15, 12));
    Field3 phi(18, 15, 12);
    const PressureSolver solve = multigrid().pressure;
    double before = residual_sum_of(eq, phi, cells);
    for (int call = 0; call < 3; ++call) {
        const SolveRecord done = solve(cells, eq, phi, 10);
        EXPECT_NEAR(done.r0, before, 1e-3 * before);
        before = residual_sum_of(eq, phi, cells);
        EXPECT_NEAR(done.r1, before, 0.05 * before + 1e-4);
    }
}

TEST(MultigridPressure, TakesNoMoreCyclesThanAllowed) {
    const CellRange cells = interior(18, 15, 12);
    const FaceCase c = random_faces(16, 13, 10, {}, 1e6F, 30U);
    LinearSystem eq = neumann_system(smooth_field(18, 15, 12));
    eq.ae = c.a_e;
    eq.an = c.a_n;
    eq.at = c.a_t;
    Field3 phi(18, 15, 12);
    EXPECT_EQ(multigrid().pressure(cells, eq, phi, 1).n, 2);
    EXPECT_EQ(multigrid().pressure(cells, eq, phi, 0).n, 1);
}

TEST(MultigridPressure, IsChosenByTheCase) {
    CaseSettings settings;
    EXPECT_EQ(linear_solvers(settings).pressure.target<Multigrid>(), nullptr);
    settings.PRESSURE_SOLVER = 1;
    EXPECT_NE(linear_solvers(settings).pressure.target<Multigrid>(), nullptr);
}

// The step of the outer iteration on a shaken mesh with densities between 0.8 and 1.2, with and
// without the second corrector: the mass sources left are a tenth of what they were.
TEST(MultigridPressure, CorrectsAFlowOfVaryingDensity) {
    for (const bool twice : {false, true}) {
        PressureRun run(random_case(with_flat_top(shaken_hill({14, 13, 12}, 3U)), 31U));
        balance_outflow(run.c);
        run.settings.DOUBLE_CORRECTION = twice;
        run.settings.PRESSURE_SOLVER = 1;
        run.work.solvers = linear_solvers(run.settings);
        run.step();
        const GridGeometry& g = run.c.g;
        const CellRange cells{2, 2, 2, g.nx, g.ny, g.nz};
        const LinearSystem& eq = run.c.s.eq;
        const double left = residual_sum_of(eq, run.c.s.pp, cells);
        const double source = residual_sum_of(eq, Field3(g.ni, g.nj, g.nk), cells);
        EXPECT_LT(left, 0.1 * source);
        EXPECT_GT(source, 0.0);
    }
}

}  // namespace
}  // namespace torvex
