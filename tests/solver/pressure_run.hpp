#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "base/case_settings.hpp"
#include "solver/calcp.hpp"
#include "solver/pressure_cases.hpp"
#include "solver/reference/plain_pressure.hpp"
#include "solver/solver_context.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

// Everything CALCP needs. The records of the solutions go to `console` as the outer iteration tells
// them.
struct PressureRun {
    explicit PressureRun(PressureCase start) : c(std::move(start)) {
        settings.URFP = 0.2F;
        settings.NSWPP = 10;
    }

    void step(int iter = 1) {
        const Walls walls;  // no part of the pressure step
        const SolveControls controls = solve_controls(settings);
        const SolverContext context{.settings = settings,
                                    .controls = controls,
                                    .grid = c.g,
                                    .walls = walls,
                                    .flow = c.s,
                                    .work = work};
        const SolveRecords records = CALCP(context, iter, 50);
        for (std::size_t n = 0; n < records.size(); ++n) {
            console += solve_line(n == 0 ? "   p" : "  pp", records[n]) + '\n';
        }
    }

    PressureCase c;
    CaseSettings settings;
    SolverWork work;
    std::string console;
};

inline plain::Fluxes fluxes(const FlowState& s) {
    return {s.flxU, s.flxV, s.flxW};
}

// Adds one increment to u on the outflow so that as much leaves through the boundary as enters, the
// top being closed: otherwise no correction can bring the imbalances to 0.
inline void balance_outflow(PressureCase& c) {
    const GridGeometry& g = c.g;
    const FlowState& s = c.s;
    const auto flow = [&](plain::Cell face_of, plain::Face face, plain::Cell from) {
        return plain::at_face(g, s.den, face_of, face) *
               plain::boundary_flux(g, s, face_of, face, from);
    };
    using plain::Face;
    double net = 0;
    double area = 0;
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            net += flow({g.nx, j, k}, Face::east, {g.ni, j, k}) -
                   flow({1, j, k}, Face::east, {1, j, k});
            area += plain::at_face(g, s.den, {g.nx, j, k}, Face::east) * 0.5 *
                    plain::twice_area(g, {g.nx, j, k}, Face::east).x;
        }
        for (int i = 2; i <= g.nx; ++i) {
            net += flow({i, g.ny, k}, Face::north, {i, g.nj, k}) -
                   flow({i, 1, k}, Face::north, {i, 1, k});
        }
    }
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            net -= flow({i, j, 1}, Face::top, {i, j, 1});
        }
    }
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            c.s.u(g.ni, j, k) -= static_cast<float>(net / area);
        }
    }
}

// Levels the top, so that a flow along it does not pass through.
inline GridGeometry with_flat_top(GridGeometry g) {
    for (int j = 1; j <= g.ny; ++j) {
        for (int i = 1; i <= g.nx; ++i) {
            g.zn(i, j, g.nz) = 2.0F;
        }
    }
    return g;
}

}  // namespace torvex
