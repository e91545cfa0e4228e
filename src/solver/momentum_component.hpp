#pragma once

#include "mesh/vec3.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// The three momentum equations are one piece of code. What sets them apart:
//
//   - u alone builds the six neighbour coefficients; v and w use them as u's boundary left them
//   - u alone weights its deferred convection with the density; v and w take the volume flux
//   - u alone has the zero gradient at an open top and the outflow that carries the mass inflow
//   - v keeps its values on the sides; u and w have zero gradient or rest there
//   - the reference sums of v and w start from that of u
enum class Component { u, v, w };

template <Component A>
[[gnu::always_inline]] inline float component(const Vec3& r) {
    if constexpr (A == Component::u) {
        return r.x;
    } else if constexpr (A == Component::v) {
        return r.y;
    } else {
        return r.z;
    }
}

// The arrays, settings and sums of one equation.
struct MomentumEquation {
    char letter;
    Field3& phi;
    Field3& dxi;  // metric component of each direction over ap
    Field3& det;
    Field3& dze;
    const Field3& xi;  // those metric components
    const Field3& et;
    const Field3& ze;
    float urf;   // under-relaxation
    int sweeps;  // most sweeps in a call
    float& resid;
    float& scale;
    float scale_start;
};

inline MomentumEquation momentum_equation(const SolverContext& c, Component component) {
    FlowState& s = c.flow;
    const GridGeometry& g = c.grid;
    const CaseSettings& q = c.settings;
    switch (component) {
        case Component::u:
            return {'u',   s.u,    s.dUxi,  s.dUet,    s.dUze,    g.xix, g.etx,
                    g.zex, q.URFU, q.NSWPU, s.resid_u, s.scale_u, 0.0F};
        case Component::v:
            return {'v',   s.v,    s.dVxi,  s.dVet,    s.dVze,    g.xiy,    g.ety,
                    g.zey, q.URFV, q.NSWPV, s.resid_v, s.scale_v, s.scale_u};
        case Component::w:
            break;
    }
    return {'w',   s.w,    s.dWxi,  s.dWet,    s.dWze,    g.xiz,    g.etz,
            g.zez, q.URFW, q.NSWPW, s.resid_w, s.scale_w, s.scale_u};
}

}  // namespace torvex
