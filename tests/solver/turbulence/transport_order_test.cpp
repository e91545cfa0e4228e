// Order of accuracy of diffusion and convection on a hill.

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "mesh/test_meshes.hpp"
#include "solver/face_area.hpp"
#include "solver/fields.hpp"
#include "solver/turbulence/transport_assembly.hpp"
#include "solver/turbulence/turbulence_case.hpp"

namespace torvex::test {
namespace {

struct Point {
    double x, y, z;
};

// phi and its derivatives, in closed form.
double phi(Point p) {
    return std::sin(1.1 * p.x + 0.3) * std::cos(0.9 * p.y) + 0.5 * std::sin(1.3 * p.z + 0.4 * p.x);
}
Point gradient(Point p) {
    return {1.1 * std::cos(1.1 * p.x + 0.3) * std::cos(0.9 * p.y) +
                0.2 * std::cos(1.3 * p.z + 0.4 * p.x),
            -0.9 * std::sin(1.1 * p.x + 0.3) * std::sin(0.9 * p.y),
            0.65 * std::cos(1.3 * p.z + 0.4 * p.x)};
}
double laplacian(Point p) {
    return -(1.1 * 1.1 + 0.9 * 0.9) * std::sin(1.1 * p.x + 0.3) * std::cos(0.9 * p.y) -
           0.5 * (1.3 * 1.3 + 0.4 * 0.4) * std::sin(1.3 * p.z + 0.4 * p.x);
}
double viscosity(Point p) {
    return 1.0 + 0.3 * std::sin(0.8 * p.x + 0.5 * p.z) + 0.1 * p.y;
}
double diffusion(Point p) {
    const Point g = gradient(p);
    const double c = 0.3 * std::cos(0.8 * p.x + 0.5 * p.z);
    return viscosity(p) * laplacian(p) + 0.8 * c * g.x + 0.1 * g.y + 0.5 * c * g.z;
}

Point centre(const GridGeometry& g, int i, int j, int k) {
    return {double(g.xc(i, j, k)), double(g.yc(i, j, k)), double(g.zc(i, j, k))};
}

// Root mean square of the operator per unit volume less what it stands for, in the middle of the
// block: beside the boundary differences are one-sided.
template <class Exact>
double error(TurbulenceCase& c, const Field3& x, Exact exact) {
    const GridGeometry& g = c.grid;
    assemble_transport(g, c.flow, x, 1.0F, c.work.transport,
                       [&](int j, int k, Row<const float> cross) {
                           for (int i = 2; i <= g.nx; ++i) {
                               c.flow.eq.su(i, j, k) = static_cast<double>(cross[i]);
                           }
                       });
    const LinearSystem& eq = c.flow.eq;
    double sum = 0;
    int count = 0;
    const int first = 2 + (g.nx - 1) / 8;
    const int last = 1 + (g.nx - 1) * 7 / 8;
    for (int k = first; k <= last; ++k) {
        for (int j = first; j <= last; ++j) {
            for (int i = first; i <= last; ++i) {
                const auto here = double(x(i, j, k));
                const double computed = double(eq.ae(i, j, k)) * (double(x(i + 1, j, k)) - here) +
                                        double(eq.aw(i, j, k)) * (double(x(i - 1, j, k)) - here) +
                                        double(eq.an(i, j, k)) * (double(x(i, j + 1, k)) - here) +
                                        double(eq.as(i, j, k)) * (double(x(i, j - 1, k)) - here) +
                                        double(eq.at(i, j, k)) * (double(x(i, j, k + 1)) - here) +
                                        double(eq.ab(i, j, k)) * (double(x(i, j, k - 1)) - here) +
                                        eq.su(i, j, k);
                const double e = computed / double(g.vol(i, j, k)) - exact(centre(g, i, j, k));
                sum += e * e;
                ++count;
            }
        }
    }
    return std::sqrt(sum / count);
}

struct HillCase : TurbulenceCase {
    explicit HillCase(int n)
        : TurbulenceCase(with_metrics(hill_mesh({n + 1, n + 1, n + 1})), 1),
          x(field_of(grid, [&](int i, int j, int k) { return phi(centre(grid, i, j, k)); })) {}
    Field3 x;
};

double diffusion_error(int n) {
    HillCase c(n);
    c.flow.vis =
        field_of(c.grid, [&](int i, int j, int k) { return viscosity(centre(c.grid, i, j, k)); });
    return error(c, c.x, diffusion);
}

// The flow (3, 1, 0.5) through the faces of the mesh.
double convection_error(int n) {
    HillCase c(n);
    const auto flux = [](const Vec3& s) { return 3.0F * s.x + s.y + 0.5F * s.z; };
    const GridGeometry& g = c.grid;
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                c.flow.flxU(i, j, k) = flux(east_area(g, i, j, k));
                c.flow.flxV(i, j, k) = flux(north_area(g, i, j, k));
                c.flow.flxW(i, j, k) = flux(top_area(g, i, j, k));
            }
        }
    }
    return error(c, c.x, [](Point p) {
        const Point g1 = gradient(p);
        return -(3.0 * g1.x + g1.y + 0.5 * g1.z);
    });
}

TEST(TransportOrder, DiffusionWithCrossTermsIsOfSecondOrder) {
    const double coarse = diffusion_error(16);
    const double fine = diffusion_error(32);
    const double order = std::log2(coarse / fine);
    EXPECT_GT(order, 1.85) << coarse << " " << fine;
    EXPECT_LT(order, 2.2) << coarse << " " << fine;
    EXPECT_LT(fine, 0.01);
}

TEST(TransportOrder, ConvectionIsOfFirstOrder) {
    const double coarse = convection_error(16);
    const double fine = convection_error(32);
    const double order = std::log2(coarse / fine);
    EXPECT_GT(order, 0.85) << coarse << " " << fine;
    EXPECT_LT(order, 1.3) << coarse << " " << fine;
}

}  // namespace
}  // namespace torvex::test
