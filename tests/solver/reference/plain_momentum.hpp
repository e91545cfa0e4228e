#pragma once

#include <array>

#include "base/case_settings.hpp"
#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

// The momentum equations written out cell by cell in double precision, every face seen from both of
// its cells and every corner value formed anew. Slow, and in no way shared with the solver.
namespace torvex::plain {

using Vector = std::array<double, 3>;
using DoubleField = Array3<double>;

enum class Direction { xi, et, ze };
inline constexpr std::array directions{Direction::xi, Direction::et, Direction::ze};

// Component 0, 1, 2: the equation of u, v, w.
struct Momentum {
    const CaseSettings& settings;
    const GridGeometry& g;
    const FlowState& s;                   // all but the velocity and the system
    std::array<DoubleField, 3> velocity;  // u, v, w
    DoubleField ae, aw, an, as, at, ab;   // of the u equation, all three use them
    DoubleField ap, su, sp;               // of the equation in hand
    std::array<DoubleField, 9> gradient;  // dUxi, dUet, dUze, dVxi .. dWze
    std::array<double, 3> resid{};        // resid_u, resid_v, resid_w
    std::array<double, 3> scale{};        // scale_u, scale_v, scale_w

    // What the report tells.
    int n = 0;
    double r0 = 0, r1 = 0, a = 0;
};

// The state of a run as double precision, the system cleared.
Momentum start(const CaseSettings& settings, const GridGeometry& g, const FlowState& s);

// The lettered terms of su of one cell.
double cross_diffusion(const Momentum& m, int component, int i, int j, int k);
double transposed_stress(const Momentum& m, int component, int i, int j, int k);
double pressure_gradient(const Momentum& m, int component, int i, int j, int k);
double deferred_convection(const Momentum& m, int component, int i, int j, int k);

// One step of an equation, in the order of these lines.
void neighbour_coefficients(Momentum& m);  // u only
void sources(Momentum& m, int component);
void canopy(Momentum& m);
void boundaries(Momentum& m, int component, int skip_sides);
void relax(Momentum& m, int component);
void reference_sums(Momentum& m, int component);
void solve(Momentum& m, int component);

// All of them: an equation at outer iteration iter.
void equation(Momentum& m, int component, int iter, int interval, int skip_sides);

}  // namespace torvex::plain
