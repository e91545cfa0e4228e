// Diffusion and convection of the shared transport assembly.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "mesh/test_meshes.hpp"
#include "solver/fields.hpp"
#include "solver/turbulence/transport_assembly.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_case.hpp"

namespace torvex::test {
namespace {

// Coefficients, and cross diffusion alone in su.
void assemble(TurbulenceCase& c, const Field3& phi, float sigma) {
    assemble_transport(c.grid, c.flow, phi, sigma, c.work.transport,
                       [&](int j, int k, Row<const float> cross) {
                           for (int i = 2; i <= c.grid.nx; ++i) {
                               c.flow.eq.su(i, j, k) = static_cast<double>(cross[i]);
                           }
                       });
}

TEST(Diffusion, OnABlockIsFaceAreaOverDistance) {
    // Widths 2, 4, 5: faces of 20, 10 and 8 between centres, half as far apart at the boundary.
    TurbulenceCase c(with_metrics(uniform_mesh({4, 4, 4}, 2, 4, 5)), 1);
    c.flow.vis.fill(3.0F);
    assemble(c, c.flow.tke, 1.5F);
    const LinearSystem& eq = c.flow.eq;
    const double d = 3.0 / 1.5;
    EXPECT_NEAR(double(eq.ae(3, 3, 3)), d * 20 / 2, 1e-4);
    EXPECT_NEAR(double(eq.aw(3, 3, 3)), d * 20 / 2, 1e-4);
    EXPECT_NEAR(double(eq.an(3, 3, 3)), d * 10 / 4, 1e-4);
    EXPECT_NEAR(double(eq.as(3, 3, 3)), d * 10 / 4, 1e-4);
    EXPECT_NEAR(double(eq.at(3, 3, 3)), d * 8 / 5, 1e-4);
    EXPECT_NEAR(double(eq.ab(3, 3, 3)), d * 8 / 5, 1e-4);
    EXPECT_NEAR(double(eq.aw(2, 3, 3)), d * 20 / 1, 1e-4);
    EXPECT_NEAR(double(eq.ae(4, 3, 3)), d * 20 / 1, 1e-4);
    EXPECT_NEAR(double(eq.as(3, 2, 3)), d * 10 / 2, 1e-4);
    EXPECT_NEAR(double(eq.an(3, 4, 3)), d * 10 / 2, 1e-4);
    EXPECT_NEAR(double(eq.ab(3, 3, 2)), d * 8 / 2.5, 1e-4);
    EXPECT_NEAR(double(eq.at(3, 3, 4)), d * 8 / 2.5, 1e-4);
}

TEST(Diffusion, TakesViscosityAtTheFace) {
    // Centres at 1, 3, 6.5: the face at 4 lies 1/3.5 of the way from the second to the third.
    GridGeometry g = uniform_mesh({4, 2, 2}, 2, 1, 1);
    for (int k = 1; k <= 2; ++k) {
        for (int j = 1; j <= 2; ++j) {
            g.xn(4, j, k) = 9.0F;
        }
    }
    TurbulenceCase c(with_metrics(std::move(g)), 1);
    c.flow.vis = field_of(c.grid, [](int i, int, int) { return i; });
    assemble(c, c.flow.tke, 1.0F);
    const double f = 1.0 / 3.5;
    const double vis = (1 - f) * 3 + f * 4;
    const double vol = (1 - f) * 2 + f * 5;
    EXPECT_NEAR(double(c.flow.eq.ae(3, 2, 2)), vis / vol, 1e-6);
    EXPECT_NEAR(double(c.flow.eq.aw(4, 2, 2)), vis / vol, 1e-6);
}

TEST(Diffusion, PrandtlNumberDividesTheOrthogonalPartOnly) {
    TurbulenceCase one(shaken_block(), 1);
    make_random(one, 9);
    one.flow.flxU.fill(0.0F);
    one.flow.flxV.fill(0.0F);
    one.flow.flxW.fill(0.0F);
    assemble(one, one.flow.tke, 1.0F);
    const LinearSystem first = one.flow.eq;
    assemble(one, one.flow.tke, 2.0F);
    double largest = 0;
    for (int k = 2; k <= one.grid.nz; ++k) {
        for (int j = 2; j <= one.grid.ny; ++j) {
            for (int i = 2; i <= one.grid.nx; ++i) {
                EXPECT_EQ(one.flow.eq.ae(i, j, k), 0.5F * first.ae(i, j, k));
                EXPECT_EQ(one.flow.eq.ab(i, j, k), 0.5F * first.ab(i, j, k));
                EXPECT_EQ(one.flow.eq.su(i, j, k), first.su(i, j, k));
                largest = std::max(largest, std::abs(first.su(i, j, k)));
            }
        }
    }
    EXPECT_GT(largest, 0.1);
}

// On an even skewed mesh differences of a quadratic are exact away from the boundary, so that
// diffusion is its Laplacian, if the cross terms have their right sign and size.
TEST(Diffusion, OfAQuadraticOnASkewedMeshIsExact) {
    TurbulenceCase c(with_metrics(sheared_mesh({7, 6, 8})), 1);
    const GridGeometry& g = c.grid;
    const Field3 phi = field_of(g, [&](int i, int j, int k) {
        const float x = g.xc(i, j, k) - 3;
        const float y = g.yc(i, j, k) - 3;
        const float z = g.zc(i, j, k) - 4;
        return 0.5F * x * x - 0.7F * y * y + 0.3F * z * z + 0.4F * x * y - 0.6F * y * z +
               0.2F * x * z;
    });
    c.flow.vis.fill(2.0F);
    assemble(c, phi, 1.0F);
    const LinearSystem& eq = c.flow.eq;
    // The Laplacian is 1 - 1.4 + 0.6, the volume the determinant of the shear, 1 + 0.3*0.2*0.4.
    const double expected = 2.0 * 0.2 * 1.024;
    double cross = 0;
    for (int k = 3; k < g.nz; ++k) {
        for (int j = 3; j < g.ny; ++j) {
            for (int i = 3; i < g.nx; ++i) {
                const auto difference = [&](float a, float neighbour) {
                    return double(a) * (double(neighbour) - double(phi(i, j, k)));
                };
                const double orthogonal = difference(eq.ae(i, j, k), phi(i + 1, j, k)) +
                                          difference(eq.aw(i, j, k), phi(i - 1, j, k)) +
                                          difference(eq.an(i, j, k), phi(i, j + 1, k)) +
                                          difference(eq.as(i, j, k), phi(i, j - 1, k)) +
                                          difference(eq.at(i, j, k), phi(i, j, k + 1)) +
                                          difference(eq.ab(i, j, k), phi(i, j, k - 1));
                EXPECT_NEAR(orthogonal + eq.su(i, j, k), expected, 1e-4)
                    << i << " " << j << " " << k;
                cross = std::max(cross, std::abs(eq.su(i, j, k)));
            }
        }
    }
    EXPECT_GT(cross, 0.1);
}

TEST(Convection, IsUpwindWithTheMassFluxOfTheFace) {
    TurbulenceCase c(with_metrics(uniform_mesh({4, 4, 4}, 1, 1, 1)), 1);
    // Half-way faces carry the mean density of their two cells.
    c.flow.den = field_of(c.grid, [](int i, int j, int k) { return i + 10 * j + 100 * k; });
    c.flow.flxU.fill(2.0F);
    c.flow.flxV.fill(-3.0F);
    c.flow.flxW.fill(4.0F);
    assemble(c, c.flow.tke, 1.0F);
    const LinearSystem& eq = c.flow.eq;
    EXPECT_EQ(eq.ae(3, 3, 3), 0.0F);
    EXPECT_NEAR(double(eq.aw(3, 3, 3)), 2 * 332.5, 1e-3);
    EXPECT_NEAR(double(eq.an(3, 3, 3)), 3 * 338.0, 1e-3);
    EXPECT_EQ(eq.as(3, 3, 3), 0.0F);
    EXPECT_EQ(eq.at(3, 3, 3), 0.0F);
    EXPECT_NEAR(double(eq.ab(3, 3, 3)), 4 * 283.0, 1e-3);
    // A boundary face has the density beyond it.
    EXPECT_NEAR(double(eq.aw(2, 3, 3)), 2 * 331.0, 1e-3);
    c.flow.flxU.fill(-2.0F);
    c.flow.flxV.fill(3.0F);
    c.flow.flxW.fill(-4.0F);
    assemble(c, c.flow.tke, 1.0F);
    EXPECT_NEAR(double(eq.ae(3, 3, 3)), 2 * 333.5, 1e-3);
    EXPECT_EQ(eq.aw(3, 3, 3), 0.0F);
    EXPECT_EQ(eq.an(3, 3, 3), 0.0F);
    EXPECT_NEAR(double(eq.as(3, 3, 3)), 3 * 328.0, 1e-3);
    EXPECT_NEAR(double(eq.at(3, 3, 3)), 4 * 383.0, 1e-3);
    EXPECT_EQ(eq.ab(3, 3, 3), 0.0F);
}

TEST(Convection, OfAFluxThatIsNotANumberShows) {
    TurbulenceCase c(with_metrics(uniform_mesh({4, 4, 4}, 1, 1, 1)), 1);
    c.flow.vis.fill(1.0F);
    c.flow.flxV(3, 3, 3) = std::nanf("");
    assemble(c, c.flow.tke, 1.0F);
    EXPECT_TRUE(std::isnan(c.flow.eq.an(3, 3, 3)));
    EXPECT_TRUE(std::isnan(c.flow.eq.as(3, 4, 3)));
    EXPECT_FALSE(std::isnan(c.flow.eq.as(3, 3, 3)));
}

}  // namespace
}  // namespace torvex::test
