#include "solver/pressure_cases.hpp"

#include <random>
#include <utility>

namespace torvex {

namespace {

// Metric components over the central coefficients of the three momentum equations.
void set_gradient_coefficients(PressureCase& c, const Field3& ap_u, const Field3& ap_v,
                               const Field3& ap_w) {
    const GridGeometry& g = c.g;
    FlowState& s = c.s;
    for_interior(g, [&](int i, int j, int k) {
        s.dUxi(i, j, k) = g.xix(i, j, k) / ap_u(i, j, k);
        s.dUet(i, j, k) = g.etx(i, j, k) / ap_u(i, j, k);
        s.dUze(i, j, k) = g.zex(i, j, k) / ap_u(i, j, k);
        s.dVxi(i, j, k) = g.xiy(i, j, k) / ap_v(i, j, k);
        s.dVet(i, j, k) = g.ety(i, j, k) / ap_v(i, j, k);
        s.dVze(i, j, k) = g.zey(i, j, k) / ap_v(i, j, k);
        s.dWxi(i, j, k) = g.xiz(i, j, k) / ap_w(i, j, k);
        s.dWet(i, j, k) = g.etz(i, j, k) / ap_w(i, j, k);
        s.dWze(i, j, k) = g.zez(i, j, k) / ap_w(i, j, k);
    });
}

}  // namespace

void fill_random(Field3& x, double low, double high, unsigned seed) {
    std::mt19937 random(seed);
    for (std::size_t n = 0; n < x.size(); ++n) {
        const double even = static_cast<double>(random()) / 4294967295.0;
        x.data()[n] = static_cast<float>(low + (high - low) * even);
    }
}

PressureCase resting_case(GridGeometry mesh, float den, float ap) {
    PressureCase c{with_metrics(std::move(mesh)), {}};
    allocate_fields(c.s, c.g, 1);
    c.s.den.fill(den);
    const Field3 all_ap(c.g.ni, c.g.nj, c.g.nk, ap);
    set_gradient_coefficients(c, all_ap, all_ap, all_ap);
    return c;
}

PressureCase random_case(GridGeometry mesh, unsigned seed) {
    PressureCase c = resting_case(std::move(mesh));
    for (Field3* x : {&c.s.u, &c.s.v, &c.s.w, &c.s.p}) {
        fill_random(*x, -1.0, 1.0, ++seed);
    }
    fill_random(c.s.den, 0.8, 1.2, ++seed);
    Field3 ap_u(c.g.ni, c.g.nj, c.g.nk);
    Field3 ap_v = ap_u;
    Field3 ap_w = ap_u;
    for (Field3* x : {&ap_u, &ap_v, &ap_w}) {
        fill_random(*x, 1.0, 3.0, ++seed);
    }
    set_gradient_coefficients(c, ap_u, ap_v, ap_w);
    return c;
}

GridGeometry shaken_hill(Planes n, unsigned seed) {
    GridGeometry g = hill_mesh(n);
    const auto fifth = [](double length, int planes) { return 0.2 * length / (planes - 1); };
    // The levels are drawn together to 0.6 of the mean spacing at the ground, less over the hill.
    shake(g, {fifth(3.0, n.nx), fifth(3.0, n.ny), fifth(0.8, n.nz)}, seed);
    return g;
}

void set_velocity(FlowState& s, float u, float v, float w) {
    s.u.fill(u);
    s.v.fill(v);
    s.w.fill(w);
}

}  // namespace torvex
