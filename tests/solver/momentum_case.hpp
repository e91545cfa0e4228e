#pragma once

#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "mesh/test_meshes.hpp"
#include "solver/flow_state.hpp"
#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"
#include "solver/solver_work.hpp"

namespace torvex::test {

// A mesh with a state on it and all that the momentum routines want. At first the air has
// density 1 and rests, without viscosity.
class MomentumCase {
 public:
    explicit MomentumCase(GridGeometry mesh) : g(with_metrics(std::move(mesh))) {
        settings.URFU = settings.URFV = settings.URFW = 0.5F;
        settings.NSWPU = settings.NSWPV = settings.NSWPW = 3;
        settings.ETA = 0.5F;
        settings.RATIO = 1.0F;
        settings.CMU = 0.09F;
        settings.WIND_TUNNEL_Z0 = 0.001F;
        allocate_fields(s, g, 1);
        s.z0.allocate(g.ni, g.nj, 0.01F);
        set_density(1.0F);
    }

    void set_density(float den) {
        settings.DENSIT = den;
        s.den.fill(den);
    }

    // All fields at random, the boundary included; lengths of the mesh are near 1.
    void fill_at_random(unsigned seed) {
        std::mt19937 random(seed);
        const auto fill = [&random](Field3& x, double from, double to) {
            for (std::size_t n = 0; n < x.size(); ++n) {
                const double unit = static_cast<double>(random()) / 4294967295.0;
                x.data()[n] = static_cast<float>(from + (to - from) * unit);
            }
        };
        fill(s.u, 2.0, 8.0);
        fill(s.v, -3.0, 3.0);
        fill(s.w, -2.0, 2.0);
        fill(s.p, -5.0, 5.0);
        fill(s.vis, 0.2, 2.0);
        fill(s.tke, -0.2, 2.0);
        fill(s.flxU, -3.0, 6.0);
        fill(s.flxV, -3.0, 3.0);
        fill(s.flxW, -3.0, 3.0);
        s.gp_d.allocate(g.ni, g.nj, g.nk);
        fill(s.gp_d, 0.0, 0.3);
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                s.z0(i, j) = 0.001F * static_cast<float>(1 + (i + 3 * j) % 7);
            }
        }
        s.outflow_mass = 70.0F;
    }

    // x = f at the cell centres, boundary faces included.
    void fill(Field3& x, const std::function<double(Position)>& f) {
        for (int k = 1; k <= g.nk; ++k) {
            for (int j = 1; j <= g.nj; ++j) {
                for (int i = 1; i <= g.ni; ++i) {
                    x(i, j, k) = static_cast<float>(
                        f({double(g.xc(i, j, k)), double(g.yc(i, j, k)), double(g.zc(i, j, k))}));
                }
            }
        }
    }

    // What the routines see of it all, walls and controls as they follow from it now.
    SolverContext context() {
        walls = wall_cells(settings, g, s.z0);
        controls = solve_controls(settings);
        return {.settings = settings,
                .controls = controls,
                .grid = g,
                .walls = walls,
                .flow = s,
                .work = work,
                .skip_sides = skip_sides};
    }

    // The records of solutions as the outer iteration tells them, line by line.
    void tell(std::string_view label, const SolveRecords& records) {
        for (const SolveRecord& record : records) {
            report += solve_line(label, record) + '\n';
        }
    }

    CaseSettings settings;
    GridGeometry g;
    FlowState s;
    SolverWork work;
    Walls walls;
    SolveControls controls;
    int skip_sides = 0;
    std::string report;
};

template <class Cell>
void for_interior(const GridGeometry& g, const Cell& cell) {
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                cell(i, j, k);
            }
        }
    }
}

// Largest |a - b| over the largest |b|, in the given cells of two fields of any type.
struct Deviation {
    double difference = 0;
    double scale = 0;

    void add(double a, double b) {
        // A difference that is not a number must not pass.
        if (!std::isnan(difference) && !(std::abs(a - b) <= difference)) {
            difference = std::abs(a - b);
        }
        scale = std::fmax(scale, std::abs(b));
    }
    double relative() const { return scale > 0 ? difference / scale : difference; }
};

template <class A, class B>
double deviation(const A& a, const B& b) {
    Deviation d;
    for (std::size_t n = 0; n < b.size(); ++n) {
        d.add(static_cast<double>(a.data()[n]), static_cast<double>(b.data()[n]));
    }
    return d.relative();
}

template <class T>
bool same_bits(const Array3<T>& a, const Array3<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

}  // namespace torvex::test
