// The parts of a multigrid cycle: coefficients, lines, restriction, prolongation.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "solver/multigrid_lines.hpp"
#include "solver/multigrid_products.hpp"
#include "solver/multigrid_systems.hpp"
#include "solver/multigrid_transfer.hpp"

namespace torvex {
namespace {

float at(const Field3& x, int i, int j, int k) {
    return line_row(x, j, k)[i - 1];
}

template <class Action>
void for_cells(const MultigridLevel& m, const Action& action) {
    for (int k = 1; k <= m.nk; ++k) {
        for (int j = 1; j <= m.nj; ++j) {
            for (int i = 1; i <= m.ni; ++i) {
                action(i, j, k);
            }
        }
    }
}

struct Shape {
    int ni, nj, nk;
};
std::string name(const Shape& s) {
    return std::to_string(s.ni) + " x " + std::to_string(s.nj) + " x " + std::to_string(s.nk);
}

// Even and odd numbers, multiples of a block and their neighbours, single cells.
const std::vector<Shape> shapes{{1, 1, 1},  {1, 1, 6},  {2, 1, 3},  {1, 2, 3},  {3, 1, 4},
                                {2, 2, 4},  {3, 3, 2},  {4, 3, 2},  {5, 4, 3},  {7, 5, 3},
                                {8, 6, 4},  {9, 7, 5},  {15, 8, 3}, {16, 9, 3}, {17, 5, 4},
                                {31, 4, 3}, {32, 3, 2}, {33, 2, 2}, {40, 1, 3}, {1, 23, 4}};

// Two fine lines, resistances in series: 0.5/1 + 1/2 + 0.5/4 and 0.5/2 + 1/1 + 0.5/2. The last
// aggregate of five columns has one cell and no half.
TEST(MultigridTransfer, CoarseCoefficientsByHand) {
    FaceCase c(5, 2, 2);
    const auto set_row = [&](int j, int k, const std::vector<float>& a) {
        for (int i = 0; i < 4; ++i) {
            c.a_e(2 + i, 1 + j, 1 + k) = a[std::size_t(i)];
        }
    };
    set_row(1, 1, {1, 2, 4, 8});
    set_row(2, 1, {2, 1, 2, 3});
    for (int i = 1; i <= 5; ++i) {
        c.a_n(1 + i, 2, 2) = float(i);
        c.a_t(1 + i, 2, 2) = float(10 * i);
        c.a_t(1 + i, 3, 2) = float(i);
    }
    MultigridMeshes meshes = slabs_of(c);
    ASSERT_GE(meshes.level.size(), 2U);
    const MultigridLevel& coarse = meshes.level[1];
    EXPECT_EQ(coarse.ni, 3);
    EXPECT_EQ(coarse.nj, 1);
    EXPECT_EQ(coarse.nk, 2);
    EXPECT_FLOAT_EQ(at(coarse.ae, 1, 1, 1), 1 / 1.125F + 1 / 1.5F);
    EXPECT_FLOAT_EQ(at(coarse.ae, 2, 1, 1), 1 / (0.5F / 4 + 1 / 8.0F) + 1 / (0.5F / 2 + 1 / 3.0F));
    EXPECT_EQ(at(coarse.ae, 3, 1, 1), 0.0F);
    EXPECT_EQ(at(coarse.ae, 1, 1, 2), 0.0F);
    EXPECT_EQ(at(coarse.an, 1, 1, 1), 0.0F) << "inside an aggregate";
    EXPECT_FLOAT_EQ(at(coarse.at, 1, 1, 1), 11 * 1 + 11 * 2);
    EXPECT_FLOAT_EQ(at(coarse.at, 3, 1, 1), 11 * 5);
    EXPECT_EQ(at(coarse.at, 1, 1, 2), 0.0F);
}

// A contact that is a thousand times worse than the cells beside it stays what it is, where a sum
// of faces over twice the distance would halve it.
TEST(MultigridTransfer, AWeakFaceKeepsItsConductance) {
    FaceCase c(4, 1, 1);
    c.a_e(2, 2, 2) = 1000;
    c.a_e(3, 2, 2) = 1;
    c.a_e(4, 2, 2) = 1000;
    const MultigridMeshes meshes = slabs_of(c);
    EXPECT_NEAR(at(meshes.level[1].ae, 1, 1, 1), 1.0, 2e-3);
}

TEST(MultigridTransfer, CoarseCoefficientsEqualThePlainOnes) {
    for (const Shape& s : shapes) {
        SCOPED_TRACE(name(s));
        const FaceCase c = random_faces(s.ni, s.nj, s.nk, {1, 2, 5}, 1000, 3U);
        const MultigridMeshes meshes = slabs_of(c);
        plain::Mesh m = plain_of(c);
        for (std::size_t l = 1; l < meshes.level.size(); ++l) {
            m = plain::coarse_mesh(m);
            const MultigridLevel& level = meshes.level[l];
            ASSERT_EQ(level.ni, m.ni);
            ASSERT_EQ(level.nj, m.nj);
            for_cells(level, [&](int i, int j, int k) {
                EXPECT_NEAR(at(level.ae, i, j, k), m.ae(i, j, k), 1e-5 * m.ae(i, j, k));
                EXPECT_NEAR(at(level.an, i, j, k), m.an(i, j, k), 1e-5 * m.an(i, j, k));
                EXPECT_NEAR(at(level.at, i, j, k), m.at(i, j, k), 1e-5 * m.at(i, j, k));
            });
        }
        EXPECT_LE(meshes.level.back().ni * meshes.level.back().nj, 3);
    }
}

// No face without conductance gets one, and a face beside a closed one stays finite.
TEST(MultigridTransfer, ClosedFacesStayClosed) {
    FaceCase c(6, 4, 2);
    c.a_e(2, 2, 2) = 1;  // within the first aggregate; all else is closed
    const MultigridMeshes meshes = slabs_of(c);
    for_cells(meshes.level[1], [&](int i, int j, int k) {
        EXPECT_EQ(at(meshes.level[1].ae, i, j, k), 0.0F);
        EXPECT_EQ(at(meshes.level[1].an, i, j, k), 0.0F);
    });
}

// A constant is in the kernel of the matrix of every mesh.
TEST(MultigridTransfer, TheRowsOfEveryMatrixAddUpToZero) {
    MultigridMeshes meshes = slabs_of(random_faces(21, 14, 5, {1, 3, 9}, 100, 4U));
    for (MultigridLevel& level : meshes.level) {
        Field3 w;
        level.allocate(w);
        for_cells(level, [&](int i, int j, int k) { line_row(level.z, j, k)[i - 1] = 7.0F; });
        for (int j = 1; j <= level.nj; ++j) {
            multiply(level, j, nullptr, w);
        }
        for_cells(level, [&](int i, int j, int k) { EXPECT_EQ(at(w, i, j, k), 0.0F); });
    }
}

void load_z(MultigridLevel& level, plain::Mesh& m) {
    for_cells(level, [&](int i, int j, int k) {
        const float z = std::sin(float(3 * i + 5 * j) + 0.7F * float(k * i));
        line_row(level.z, j, k)[i - 1] = z;
        m.z.set(i, j, k) = double(z);
    });
}

TEST(MultigridProducts, EqualThePlainProduct) {
    for (const Shape& s : shapes) {
        SCOPED_TRACE(name(s));
        const FaceCase c = random_faces(s.ni, s.nj, s.nk, {1, 2, 5}, 10, 5U);
        MultigridMeshes meshes = slabs_of(c);
        MultigridLevel& level = meshes.level.front();
        plain::Mesh m = plain_of(c);
        load_z(level, m);
        Field3 w;
        level.allocate(w);
        Products sums;
        for (int j = 1; j <= level.nj; ++j) {
            const Products of_slab = multiply(level, j, &level.z, w);
            sums.zr += of_slab.zr;
            sums.zw += of_slab.zw;
            sums.zq += of_slab.zq;
        }
        double zr = 0;
        double zw = 0;
        double zz = 0;
        for_cells(level, [&](int i, int j, int k) {
            const double z = m.z(i, j, k);
            const double product = plain::product(m, m.z, i, j, k);
            EXPECT_NEAR(at(w, i, j, k), product, 1e-4);
            zr += z * m.r(i, j, k);
            zw += z * product;
            zz += z * z;
        });
        const double terms = s.ni * s.nj * s.nk;
        EXPECT_NEAR(sums.zr, zr, 1e-6 * terms);
        EXPECT_NEAR(sums.zw, zw, 1e-5 * terms);
        EXPECT_NEAR(sums.zq, zz, 1e-6 * terms);
    }
}

// Cells 1..4 of a line by hand: A z = f with two neighbours that hold it.
TEST(MultigridLines, EqualThePlainLineAndLeaveTheOtherColour) {
    for (const Shape& s : shapes) {
        if (s.ni * s.nj == 1) {
            continue;  // the level of a line without neighbours is free
        }
        SCOPED_TRACE(name(s));
        const FaceCase c = random_faces(s.ni, s.nj, s.nk, {1, 2, 5}, 10, 6U);
        for (const int colour : {0, 1}) {
            MultigridMeshes meshes = slabs_of(c);
            MultigridLevel& level = meshes.level.front();
            plain::Mesh m = plain_of(c);
            load_z(level, m);
            LineScratch& scratch = meshes.scratch.front();
            for (int j = 1; j <= level.nj; ++j) {
                solve_lines(level, j, colour, scratch);
                for (int i = 1; i <= level.ni; ++i) {
                    if ((i + j) % 2 == colour) {
                        plain::solve_line(m, i, j, meshes.level.size() > 1 ? 1e-6 : 1e-5);
                    }
                }
            }
            for_cells(level, [&](int i, int j, int k) {
                if ((i + j) % 2 == colour) {
                    EXPECT_NEAR(at(level.z, i, j, k), m.z(i, j, k), 1e-4);
                } else {
                    EXPECT_EQ(double(at(level.z, i, j, k)), m.z(i, j, k));
                }
            });
        }
    }
}

// Flat cells: the coupling along k is a million times that to the neighbours, whose mean the line
// must take all the same. In the usual form the last pivot would be rounding.
TEST(MultigridLines, TakeTheLevelOfTheirNeighboursInFlatCells) {
    const FaceCase c = random_faces(3, 3, 40, {1, 1, 1e6F}, 1, 7U);
    MultigridMeshes meshes = slabs_of(c);
    MultigridLevel& level = meshes.level.front();
    level.r.fill(0.0F);
    for_cells(level, [&](int i, int j, int k) {
        line_row(level.z, j, k)[i - 1] = (i + j) % 2 == 0 ? 0.0F : 5.0F;
    });
    solve_lines(level, 2, 0, meshes.scratch.front());
    for (int k = 1; k <= 40; ++k) {
        EXPECT_NEAR(at(level.z, 2, 2, k), 5.0F, 1e-4F);
    }
}

TEST(MultigridTransfer, RestrictionIsTheSumOfTheResidualOfEachAggregate) {
    for (const Shape& s : shapes) {
        if (s.ni * s.nj <= 3) {
            continue;
        }
        SCOPED_TRACE(name(s));
        const FaceCase c = random_faces(s.ni, s.nj, s.nk, {1, 2, 5}, 10, 8U);
        MultigridMeshes meshes = slabs_of(c);
        MultigridLevel& level = meshes.level.front();
        LineScratch& scratch = meshes.scratch.front();
        for (int j = 1; j <= level.nj; ++j) {
            solve_lines_from_zero(level, j, scratch);
        }
        for (int j = 1; j <= level.nj; ++j) {
            solve_lines(level, j, 1, scratch);
        }
        plain::Mesh m = plain_of(c);
        for_cells(level,
                  [&](int i, int j, int k) { m.z.set(i, j, k) = double(at(level.z, i, j, k)); });
        for (int j = 1; j <= level.nj; ++j) {
            restrict_residual(level, j, meshes.level[1]);
        }
        plain::Mesh coarse = plain::coarse_mesh(m);
        plain::restrict_residual(m, coarse);
        for_cells(meshes.level[1], [&](int i, int j, int k) {
            EXPECT_NEAR(at(meshes.level[1].r, i, j, k), coarse.r(i, j, k), 5e-4);
        });
    }
}

TEST(MultigridTransfer, ProlongationIsLinearBetweenMiddlesAndConstantBeyond) {
    for (const Shape& s : shapes) {
        if (s.ni * s.nj <= 3) {
            continue;
        }
        SCOPED_TRACE(name(s));
        const FaceCase c = random_faces(s.ni, s.nj, s.nk, {}, 1, 9U);
        MultigridMeshes meshes = slabs_of(c);
        plain::Mesh fine = plain_of(c);
        plain::Mesh coarse = plain::coarse_mesh(fine);
        load_z(meshes.level[0], fine);
        load_z(meshes.level[1], coarse);
        for (int j = 1; j <= s.nj; ++j) {
            prolong(meshes.level[1], j, meshes.level[0], meshes.scratch.front());
        }
        plain::prolong(coarse, fine);
        for_cells(meshes.level[0], [&](int i, int j, int k) {
            EXPECT_NEAR(at(meshes.level[0].z, i, j, k), fine.z(i, j, k), 1e-6);
        });
    }
}

// Middles of aggregates stand at 1.5, 3.5, ..: a slope goes over exactly but at the ends.
TEST(MultigridTransfer, ProlongationKeepsConstantsAndSlopes) {
    FaceCase c(12, 10, 2);
    MultigridMeshes meshes = slabs_of(c);
    MultigridLevel& coarse = meshes.level[1];
    for_cells(coarse, [&](int i, int j, int k) {
        line_row(coarse.z, j, k)[i - 1] = float(2 * i) - 0.5F + 10 * (float(2 * j) - 0.5F);
    });
    MultigridLevel& fine = meshes.level[0];
    for (int j = 1; j <= fine.nj; ++j) {
        prolong(coarse, j, fine, meshes.scratch.front());
    }
    for_cells(fine, [&](int i, int j, int k) {
        const double x = std::clamp(double(i), 1.5, 11.5);
        const double y = std::clamp(double(j), 1.5, 9.5);
        EXPECT_NEAR(at(fine.z, i, j, k), x + 10 * y, 1e-4);
    });
}

// The whole cycle against the plain one, in which every pass is a loop over all cells. Both solve
// for a right side without a mean.
TEST(MultigridCycle, EqualsThePlainCycle) {
    for (const Shape& s : shapes) {
        if (s.ni * s.nj == 1) {
            continue;
        }
        SCOPED_TRACE(name(s));
        FaceCase c = random_faces(s.ni, s.nj, s.nk, {1, 2, 5}, 10, 10U);
        c.manufacture(field_of(c, [](int i, int j, int k) { return std::sin(i + 2 * j + 3 * k); }));
        MultigridMeshes meshes = slabs_of(c);
        plain::Mesh m = plain_of(c);
        std::vector<int> finished(std::size_t(s.nj) + 1);
        v_cycle(meshes, [&](int j) { ++finished[std::size_t(j)]; });
        plain::v_cycle(m);
        const MultigridLevel& level = meshes.level.front();
        const double free_level = double(at(level.z, 1, 1, 1)) - m.z(1, 1, 1);
        for_cells(level, [&](int i, int j, int k) {
            EXPECT_NEAR(double(at(level.z, i, j, k)) - free_level, m.z(i, j, k), 1e-3);
        });
        for (int j = 1; j <= s.nj; ++j) {
            EXPECT_EQ(finished[std::size_t(j)], 1);
        }
    }
}

}  // namespace
}  // namespace torvex
