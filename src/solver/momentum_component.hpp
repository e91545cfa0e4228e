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

// The arrays, controls and sums of one equation.
struct MomentumEquation {
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
    const SolveControls& q = c.controls;
    switch (component) {
        case Component::u:
            return {.phi = s.u,
                    .dxi = s.dUxi,
                    .det = s.dUet,
                    .dze = s.dUze,
                    .xi = g.xix,
                    .et = g.etx,
                    .ze = g.zex,
                    .urf = q.URFU,
                    .sweeps = q.NSWPU,
                    .resid = s.resid_u,
                    .scale = s.scale_u,
                    .scale_start = 0.0F};
        case Component::v:
            return {.phi = s.v,
                    .dxi = s.dVxi,
                    .det = s.dVet,
                    .dze = s.dVze,
                    .xi = g.xiy,
                    .et = g.ety,
                    .ze = g.zey,
                    .urf = q.URFV,
                    .sweeps = q.NSWPV,
                    .resid = s.resid_v,
                    .scale = s.scale_v,
                    .scale_start = s.scale_u};
        case Component::w:
            break;
    }
    return {.phi = s.w,
            .dxi = s.dWxi,
            .det = s.dWet,
            .dze = s.dWze,
            .xi = g.xiz,
            .et = g.etz,
            .ze = g.zez,
            .urf = q.URFW,
            .sweeps = q.NSWPW,
            .resid = s.resid_w,
            .scale = s.scale_w,
            .scale_start = s.scale_u};
}

}  // namespace torvex
