// Order of accuracy of the metric on a hill whose coordinate transformation is known.

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "mesh/grid.hpp"
#include "mesh/test_meshes.hpp"
#include "mesh/trilinear.hpp"

namespace torvex {
namespace {

struct Errors {
    double area = 0;      // area vectors inside, over their length
    double boundary = 0;  // area vector across the plane, on the six boundary planes
    double volume = 0;    // vol over the Jacobian
    double sum = 0;       // sum of vol over the analytic volume
    double closed = 0;    // sum of the area vectors of a cell's six faces over its volume [1/m]
};

// Root mean square, entry by entry.
class Rms {
 public:
    void add(double error) {
        sum_ += error * error;
        ++count_;
    }
    double value() const { return std::sqrt(sum_ / count_); }

 private:
    double sum_ = 0;
    int count_ = 0;
};

// Derivative of the hill's map along one of its parameters, of fourth order with a step at which
// both its truncation and its rounding are below 1e-10.
Position derivative(std::array<double, 3> at, std::size_t axis) {
    const double h = 1e-3;
    const auto r = [&](double steps) {
        std::array<double, 3> p = at;
        p[axis] += steps * h;
        return hill_map(p[0], p[1], p[2]);
    };
    const Position near = minus(r(1), r(-1));
    const Position far = minus(r(2), r(-2));
    Position d{};
    for (std::size_t n = 0; n < 3; ++n) {
        d[n] = (8.0 * near[n] - far[n]) / (12.0 * h);
    }
    return d;
}

Position vector(const Field3& x, const Field3& y, const Field3& z, int i, int j, int k) {
    return {double(x(i, j, k)), double(y(i, j, k)), double(z(i, j, k))};
}

// Sum of the six face areas of cell (i,j,k), each interpolated from the centres on its two sides.
Position closed_surface(const GridGeometry& g, int i, int j, int k) {
    const auto xi = [&](int m) { return vector(g.xix, g.xiy, g.xiz, m, j, k); };
    const auto et = [&](int m) { return vector(g.etx, g.ety, g.etz, i, m, k); };
    const auto ze = [&](int m) { return vector(g.zex, g.zey, g.zez, i, j, m); };
    const auto add_pair = [](Position& sum, const auto& area, const auto& factor, int m) {
        const auto face = [&](int low, std::size_t n) {
            return area(low)[n] + double(factor(low)) * (area(low + 1)[n] - area(low)[n]);
        };
        for (std::size_t n = 0; n < 3; ++n) {
            sum[n] += face(m, n) - face(m - 1, n);
        }
    };
    Position sum{};
    add_pair(
        sum, xi, [&](int m) { return g.fx(m, j, k); }, i);
    add_pair(
        sum, et, [&](int m) { return g.fy(i, m, k); }, j);
    add_pair(
        sum, ze, [&](int m) { return g.fz(i, j, m); }, k);
    return sum;
}

// The hill with n cells along each axis.
Errors errors(int n) {
    const GridGeometry g = with_metrics(hill_mesh({n + 1, n + 1, n + 1}));
    const double h = 1.0 / n;
    const auto parameter = [&](int cell) { return (place(cell, n + 1) - 1.0) * h; };
    Rms area;
    Rms boundary;
    Rms volume;
    Rms closed;
    double sum = 0;
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const std::array at{parameter(i), parameter(j), parameter(k)};
                const std::array<Position, 3> r{derivative(at, 0), derivative(at, 1),
                                                derivative(at, 2)};
                const std::array computed{vector(g.xix, g.xiy, g.xiz, i, j, k),
                                          vector(g.etx, g.ety, g.etz, i, j, k),
                                          vector(g.zex, g.zey, g.zez, i, j, k)};
                const std::array ends{i == 1 || i == g.ni, j == 1 || j == g.nj,
                                      k == 1 || k == g.nk};
                const int planes = int{ends[0]} + int{ends[1]} + int{ends[2]};
                for (std::size_t axis = 0; axis < 3 && planes <= 1; ++axis) {
                    Position exact = cross_product(r[(axis + 1) % 3], r[(axis + 2) % 3]);
                    for (double& component : exact) {
                        component *= h * h;
                    }
                    const double error = norm(minus(computed[axis], exact)) / norm(exact);
                    if (planes == 0) {
                        area.add(error);
                    } else if (ends[axis]) {
                        boundary.add(error);
                    }
                }
                if (planes == 0) {
                    const auto cell = double(g.vol(i, j, k));
                    const double exact =
                        scalar_product(r[0], cross_product(r[1], r[2])) * h * h * h;
                    volume.add(cell / exact - 1.0);
                    sum += cell;
                    // Beside the boundary the interpolation is one-sided and of first order.
                    const auto inner = [n](int c) { return c >= 3 && c <= n; };
                    if (inner(i) && inner(j) && inner(k)) {
                        closed.add(norm(closed_surface(g, i, j, k)) / cell);
                    }
                }
            }
        }
    }
    // The box of 4 by 3 by 2 without the hill, 0.4 times the means 1/2 of its two squared sines.
    const double analytic = 24.0 - 0.4 * 2.0 * 1.5;
    return {area.value(), boundary.value(), volume.value(), std::abs(sum / analytic - 1.0),
            closed.value()};
}

TEST(GridOrder, MetricOfAnAnalyticHillIsOfSecondOrder) {
    const Errors coarse = errors(12);
    const Errors fine = errors(24);
    const auto expect_second_order = [&](double Errors::*error) {
        const double order = std::log2(coarse.*error / (fine.*error));
        EXPECT_GT(order, 1.9) << coarse.*error << " " << fine.*error;
        EXPECT_LT(order, 2.3) << coarse.*error << " " << fine.*error;
    };
    {
        SCOPED_TRACE("area vectors inside");
        expect_second_order(&Errors::area);
    }
    {
        SCOPED_TRACE("area vectors across the boundary planes");
        expect_second_order(&Errors::boundary);
    }
    {
        SCOPED_TRACE("volumes");
        expect_second_order(&Errors::volume);
    }
    {
        SCOPED_TRACE("sum of the volumes");
        expect_second_order(&Errors::sum);
    }
    {
        SCOPED_TRACE("closed surface");
        expect_second_order(&Errors::closed);
    }
    EXPECT_LT(fine.sum, 1e-3);
}

}  // namespace
}  // namespace torvex
