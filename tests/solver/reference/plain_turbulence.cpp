#include "solver/reference/plain_turbulence.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace torvex::plain {

namespace {

constexpr double kappa = 0.41;
constexpr double tiny = 1.0e-15;
constexpr double big = 1.0e25;

template <class From>
Array doubles(const From& x) {
    Array out(x.ni(), x.nj(), x.nk());
    for (std::size_t n = 0; n < x.size(); ++n) {
        out.data()[n] = static_cast<double>(x.data()[n]);
    }
    return out;
}

Array2<double> doubles(const Field2& x) {
    Array2<double> out(x.ni(), x.nj());
    for (std::size_t n = 0; n < x.size(); ++n) {
        out.data()[n] = static_cast<double>(x.data()[n]);
    }
    return out;
}

struct Vec {
    double x, y, z;
};
double dot(Vec a, Vec b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

// One equation being built.
struct Equation {
    Variable variable;
    const CaseSettings& set;
    const GridGeometry& g;
    State& s;
    Array& phi;
    double sigma, c_mu, urf;
    int sweeps;
    double sweep_factor;
    double& resid;
    double& scale;

    // Interpolation to the east, north and top face of (i,j,k).
    template <class Q>
    double east(Q q, int i, int j, int k) const {
        const auto f = static_cast<double>(g.fx(i, j, k));
        return (1 - f) * q(i, j, k) + f * q(i + 1, j, k);
    }
    template <class Q>
    double north(Q q, int i, int j, int k) const {
        const auto f = static_cast<double>(g.fy(i, j, k));
        return (1 - f) * q(i, j, k) + f * q(i, j + 1, k);
    }
    template <class Q>
    double top(Q q, int i, int j, int k) const {
        const auto f = static_cast<double>(g.fz(i, j, k));
        return (1 - f) * q(i, j, k) + f * q(i, j, k + 1);
    }

    Vec xi(int i, int j, int k) const { return vector(g.xix, g.xiy, g.xiz, i, j, k); }
    Vec et(int i, int j, int k) const { return vector(g.etx, g.ety, g.etz, i, j, k); }
    Vec ze(int i, int j, int k) const { return vector(g.zex, g.zey, g.zez, i, j, k); }
    static Vec vector(const Field3& x, const Field3& y, const Field3& z, int i, int j, int k) {
        return {static_cast<double>(x(i, j, k)), static_cast<double>(y(i, j, k)),
                static_cast<double>(z(i, j, k))};
    }

    // phi at the corner in the sense of the signs (+1 or -1) of cell (i,j,k).
    double C(int i, int j, int k, int si, int sj, int sk) const {
        const int a = si > 0 ? i : i - 1;
        const int b = sj > 0 ? j : j - 1;
        const int c = sk > 0 ? k : k - 1;
        const auto in_row = [&](int jj, int kk) {
            const auto f = static_cast<double>(g.fx(a, jj, kk));
            return (1 - f) * phi(a, jj, kk) + f * phi(a + 1, jj, kk);
        };
        const auto in_level = [&](int kk) {
            const auto f = static_cast<double>(g.fy(a, b, kk));
            return (1 - f) * in_row(b, kk) + f * in_row(b + 1, kk);
        };
        const auto f = static_cast<double>(g.fz(a, b, c));
        return (1 - f) * in_level(c) + f * in_level(c + 1);
    }
};

double cross_diffusion(const Equation& e, int i, int j, int k) {
    const State& s = e.s;
    const auto vol = [&](int a, int b, int c) { return static_cast<double>(e.g.vol(a, b, c)); };
    const auto vis = [&](int a, int b, int c) { return s.vis(a, b, c); };
    const auto Xxe = [&](int a, int b, int c) { return dot(e.xi(a, b, c), e.et(a, b, c)); };
    const auto Xxz = [&](int a, int b, int c) { return dot(e.xi(a, b, c), e.ze(a, b, c)); };
    const auto Xez = [&](int a, int b, int c) { return dot(e.et(a, b, c), e.ze(a, b, c)); };
    const auto C = [&](int si, int sj, int sk) { return e.C(i, j, k, si, sj, sk); };
    double sum = 0;
    for (const int sign : {1, -1}) {
        {
            const int f = sign > 0 ? i : i - 1;
            const double H = 0.5 * e.east(vis, f, j, k) / e.east(vol, f, j, k);
            sum += sign * H *
                   (e.east(Xxe, f, j, k) *
                        (C(sign, 1, 1) + C(sign, 1, -1) - C(sign, -1, 1) - C(sign, -1, -1)) +
                    e.east(Xxz, f, j, k) *
                        (C(sign, 1, 1) + C(sign, -1, 1) - C(sign, 1, -1) - C(sign, -1, -1)));
        }
        {
            const int f = sign > 0 ? j : j - 1;
            const double H = 0.5 * e.north(vis, i, f, k) / e.north(vol, i, f, k);
            sum += sign * H *
                   (e.north(Xxe, i, f, k) *
                        (C(1, sign, 1) + C(1, sign, -1) - C(-1, sign, 1) - C(-1, sign, -1)) +
                    e.north(Xez, i, f, k) *
                        (C(1, sign, 1) + C(-1, sign, 1) - C(1, sign, -1) - C(-1, sign, -1)));
        }
        {
            const int f = sign > 0 ? k : k - 1;
            const double H = 0.5 * e.top(vis, i, j, f) / e.top(vol, i, j, f);
            sum += sign * H *
                   (e.top(Xxz, i, j, f) *
                        (C(1, 1, sign) + C(1, -1, sign) - C(-1, 1, sign) - C(-1, -1, sign)) +
                    e.top(Xez, i, j, f) *
                        (C(1, 1, sign) + C(-1, 1, sign) - C(1, -1, sign) - C(-1, -1, sign)));
        }
    }
    return sum;
}

void coefficients(const Equation& e, int i, int j, int k) {
    State& s = e.s;
    const auto vol = [&](int a, int b, int c) { return static_cast<double>(e.g.vol(a, b, c)); };
    const auto vis = [&](int a, int b, int c) { return s.vis(a, b, c); };
    const auto den = [&](int a, int b, int c) { return s.den(a, b, c); };
    const auto Gxi = [&](int a, int b, int c) { return dot(e.xi(a, b, c), e.xi(a, b, c)); };
    const auto Get = [&](int a, int b, int c) { return dot(e.et(a, b, c), e.et(a, b, c)); };
    const auto Gze = [&](int a, int b, int c) { return dot(e.ze(a, b, c), e.ze(a, b, c)); };
    const auto at_east = [&](int f) {
        return e.east(vis, f, j, k) / e.sigma * e.east(Gxi, f, j, k) / e.east(vol, f, j, k);
    };
    const auto at_north = [&](int f) {
        return e.north(vis, i, f, k) / e.sigma * e.north(Get, i, f, k) / e.north(vol, i, f, k);
    };
    const auto at_top = [&](int f) {
        return e.top(vis, i, j, f) / e.sigma * e.top(Gze, i, j, f) / e.top(vol, i, j, f);
    };
    s.ae(i, j, k) = at_east(i) + std::max(-e.east(den, i, j, k) * s.flxU(i, j, k), 0.0);
    s.aw(i, j, k) = at_east(i - 1) + std::max(e.east(den, i - 1, j, k) * s.flxU(i - 1, j, k), 0.0);
    s.an(i, j, k) = at_north(j) + std::max(-e.north(den, i, j, k) * s.flxV(i, j, k), 0.0);
    s.as(i, j, k) =
        at_north(j - 1) + std::max(e.north(den, i, j - 1, k) * s.flxV(i, j - 1, k), 0.0);
    s.at(i, j, k) = at_top(k) + std::max(-e.top(den, i, j, k) * s.flxW(i, j, k), 0.0);
    s.ab(i, j, k) = at_top(k - 1) + std::max(e.top(den, i, j, k - 1) * s.flxW(i, j, k - 1), 0.0);
}

double production(const Equation& e, int i, int j, int k) {
    const State& s = e.s;
    // Gradient of a velocity component, times the volume.
    const auto gradient = [&](const Array& q) {
        const auto at = [&](int a, int b, int c) { return q(a, b, c); };
        const double d_xi = e.east(at, i, j, k) - e.east(at, i - 1, j, k);
        const double d_et = e.north(at, i, j, k) - e.north(at, i, j - 1, k);
        const double d_ze = e.top(at, i, j, k) - e.top(at, i, j, k - 1);
        const Vec x = e.xi(i, j, k);
        const Vec n = e.et(i, j, k);
        const Vec z = e.ze(i, j, k);
        return Vec{x.x * d_xi + n.x * d_et + z.x * d_ze, x.y * d_xi + n.y * d_et + z.y * d_ze,
                   x.z * d_xi + n.z * d_et + z.z * d_ze};
    };
    const Vec u = gradient(s.u);
    const Vec v = gradient(s.v);
    const Vec w = gradient(s.w);
    const auto vol = static_cast<double>(e.g.vol(i, j, k));
    const double mut = s.vis(i, j, k) - static_cast<double>(e.set.VISCOS);
    const double c = mut / (vol * vol) / s.den(i, j, k);
    const double S2 = 2 * u.x * u.x + 2 * v.y * v.y + 2 * w.z * w.z + (u.y + v.x) * (u.y + v.x) +
                      (v.z + w.y) * (v.z + w.y) + (w.x + u.z) * (w.x + u.z);
    if (e.variable == Variable::tke && e.set.TURBULENCE_MODEL == 3) {
        const double O2 =
            (u.y - v.x) * (u.y - v.x) + (v.z - w.y) * (v.z - w.y) + (w.x - u.z) * (w.x - u.z);
        return std::sqrt(O2) * (std::sqrt(S2) * c);
    }
    return S2 * c;
}

void sources(const Equation& e, int i, int j, int k) {
    State& s = e.s;
    const auto vol = static_cast<double>(e.g.vol(i, j, k));
    const double den = s.den(i, j, k);
    const double mut = s.vis(i, j, k) - static_cast<double>(e.set.VISCOS);
    const double cross = cross_diffusion(e, i, j, k);
    if (e.variable == Variable::ted) {
        const auto CE1 = static_cast<double>(e.set.CE1);
        const auto CE2 = static_cast<double>(e.set.CE2);
        s.su(i, j, k) = cross + vol * den * den * (CE1 * e.c_mu) * s.gen(i, j, k) * s.tke(i, j, k) /
                                    (mut + tiny);
        s.sp(i, j, k) = -vol * den * den * (e.c_mu * CE2) * s.tke(i, j, k) / (mut + tiny);
        return;
    }
    s.gen(i, j, k) = production(e, i, j, k);
    s.su(i, j, k) = cross + vol * (den * s.gen(i, j, k));
    s.sp(i, j, k) = -vol * (e.c_mu * den * den * std::abs(e.phi(i, j, k))) / (mut + tiny);
}

void canopy(const Equation& e) {
    State& s = e.s;
    const auto beta_p = static_cast<double>(e.set.canopy.beta_p);
    const auto cpe1 = static_cast<double>(e.set.canopy.cpe1);
    const double ramp = s.canopy_source_factor;
    for (int k = 3; k <= e.g.nz; ++k) {
        for (int j = 2; j <= e.g.ny; ++j) {
            for (int i = 2; i <= e.g.nx; ++i) {
                const double V =
                    std::sqrt(s.u(i, j, k) * s.u(i, j, k) + s.v(i, j, k) * s.v(i, j, k) +
                              s.w(i, j, k) * s.w(i, j, k));
                const auto vol = static_cast<double>(e.g.vol(i, j, k));
                const double drag = s.den(i, j, k) * s.gp_d(i, j, k);
                if (e.variable == Variable::tke) {
                    s.su(i, j, k) += beta_p * drag * V * V * V * vol * ramp;
                    s.sp(i, j, k) += -(drag * s.gp_k(i, j, k) * V) * vol * ramp;
                } else {
                    s.su(i, j, k) += cpe1 * beta_p * drag * V * V * V * s.ted(i, j, k) /
                                     (0 + s.tke(i, j, k)) * vol * ramp;
                    s.sp(i, j, k) += -(drag * s.gp_e(i, j, k) * V) * vol * ramp;
                }
            }
        }
    }
}

void wall_planes(const Equation& e) {
    State& s = e.s;
    const GridGeometry& g = e.g;
    const int mode = e.set.WIND_TUNNEL_MODE;
    const auto clear = [&](int i, int j, int k) {
        s.su(i, j, k) -= s.den(i, j, k) * s.gen(i, j, k) * static_cast<double>(g.vol(i, j, k));
        s.sp(i, j, k) = 0;
    };
    for (int i = 2; i <= g.nx; ++i) {
        for (int j = 2; j <= g.ny; ++j) {
            clear(i, j, 2);
            if (mode >= 1) {
                clear(i, j, g.nz);
            }
        }
        for (int k = 3; k <= g.nz - 1 && mode >= 2; ++k) {
            clear(i, 2, k);
            clear(i, g.ny, k);
        }
    }
}

struct WallPlace {
    int i, j, k;     // the cell
    int ig, jg, kg;  // the place beyond the wall
    std::array<std::array<int, 3>, 4> nodes;
    bool across_j;  // a side wall
    double z0w;
};

void wall_cell(const Equation& e, const WallPlace& p, Array& towards) {
    State& s = e.s;
    const GridGeometry& g = e.g;
    Vec n = p.across_j ? e.et(p.ig, p.jg, p.kg) : e.ze(p.ig, p.jg, p.kg);
    const double length = std::sqrt(dot(n, n));
    n = {n.x / length, n.y / length, n.z / length};
    Vec m{0, 0, 0};
    for (const auto& node : p.nodes) {
        m.x += 0.25 * static_cast<double>(g.xn(node[0], node[1], node[2]));
        m.y += 0.25 * static_cast<double>(g.yn(node[0], node[1], node[2]));
        m.z += 0.25 * static_cast<double>(g.zn(node[0], node[1], node[2]));
    }
    const int i = p.i;
    const int j = p.j;
    const int k = p.k;
    const Vec c = Equation::vector(g.xc, g.yc, g.zc, i, j, k);
    const double d = std::abs(dot({c.x - m.x, c.y - m.y, c.z - m.z}, n));
    const double L1 = std::log(d / p.z0w);
    const double L2 = std::log(2 * d / p.z0w);
    const double cmu34 = std::pow(e.c_mu, 0.75);
    const double cmu4 = std::sqrt(std::sqrt(e.c_mu));
    const auto vol = static_cast<double>(g.vol(i, j, k));
    towards(i, j, k) = 0;
    if (e.variable == Variable::ted) {
        const double tke = std::abs(s.tke(i, j, k));
        s.su(i, j, k) = big * (cmu34 / kappa * L2 / (2 * d)) * (std::sqrt(tke) * tke);
        s.sp(i, j, k) = -big;
    } else {
        const Vec U{s.u(i, j, k), s.v(i, j, k), s.w(i, j, k)};
        const double Vt = std::sqrt(std::max(dot(U, U) - dot(U, n) * dot(U, n), 0.0));
        const double root = std::sqrt(std::abs(e.phi(i, j, k)));
        const double den = s.den(i, j, k);
        s.su(i, j, k) +=
            std::abs(den * Vt * cmu4 * root * kappa / L1 * Vt) * vol / (2 * d * L1) * L2;
        s.sp(i, j, k) = -(cmu34 * den * root / kappa * L2 / (2 * d)) * vol;
    }
    e.phi(p.ig, p.jg, p.kg) = e.phi(i, j, k);
}

void level_wall(const Equation& e, int i, int j, bool top) {
    const GridGeometry& g = e.g;
    const int n = top ? g.nz : 1;
    const WallPlace p{i,
                      j,
                      top ? g.nz : 2,
                      i,
                      j,
                      top ? g.nz + 1 : 1,
                      {{{i, j, n}, {i - 1, j, n}, {i - 1, j - 1, n}, {i, j - 1, n}}},
                      false,
                      top ? static_cast<double>(e.set.WIND_TUNNEL_Z0) : e.s.z0(i, j)};
    wall_cell(e, p, top ? e.s.at : e.s.ab);
}

void side_wall(const Equation& e, int i, int k, bool north) {
    const GridGeometry& g = e.g;
    const int n = north ? g.ny : 1;
    const WallPlace p{i,
                      north ? g.ny : 2,
                      k,
                      i,
                      north ? g.ny + 1 : 1,
                      k,
                      {{{i, n, k}, {i, n, k - 1}, {i - 1, n, k}, {i - 1, n, k - 1}}},
                      true,
                      static_cast<double>(e.set.WIND_TUNNEL_Z0)};
    wall_cell(e, p, north ? e.s.an : e.s.as);
}

void boundary(const Equation& e, int skip_sides) {
    State& s = e.s;
    const GridGeometry& g = e.g;
    Array& phi = e.phi;
    const int mode = e.set.WIND_TUNNEL_MODE;
    const auto each_column = [&](auto action) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                action(i, j);
            }
        }
    };
    if (mode > 0) {
        each_column([&](int i, int j) { level_wall(e, i, j, true); });
    } else if (e.variable != Variable::ted) {
        each_column([&](int i, int j) {
            s.at(i, j, g.nz) = 0;
            phi(i, j, g.nk) = phi(i, j, g.nz);
        });
    }
    each_column([&](int i, int j) { level_wall(e, i, j, false); });
    if (skip_sides != 0) {
        return;
    }
    for (int k = 2; k <= g.nz; ++k) {
        if (mode <= 1) {
            for (int i = 2; i <= g.ni; ++i) {
                s.an(i, g.ny, k) = 0;
                phi(i, g.nj, k) = phi(i, g.ny, k);
                s.as(i, 2, k) = 0;
                phi(i, 1, k) = phi(i, 2, k);
            }
        } else {
            for (int i = 2; i <= g.nx; ++i) {
                side_wall(e, i, k, true);
            }
            for (int i = 2; i <= g.nx; ++i) {
                side_wall(e, i, k, false);
            }
        }
    }
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            phi(g.ni, j, k) = phi(g.nx, j, k);
        }
    }
    for (int k = 2; k <= g.nz; ++k) {
        phi(g.ni, 1, k) = phi(g.ni, 2, k);
        phi(g.ni, g.nj, k) = phi(g.ni, g.ny, k);
    }
}

template <class Action>
void inner_cells(const GridGeometry& g, Action action) {
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                action(i, j, k);
            }
        }
    }
}

double residual(const Equation& e, int i, int j, int k) {
    const State& s = e.s;
    const Array& x = e.phi;
    return s.ae(i, j, k) * x(i + 1, j, k) + s.aw(i, j, k) * x(i - 1, j, k) +
           s.an(i, j, k) * x(i, j + 1, k) + s.as(i, j, k) * x(i, j - 1, k) +
           s.at(i, j, k) * x(i, j, k + 1) + s.ab(i, j, k) * x(i, j, k - 1) + s.su(i, j, k) -
           s.ap(i, j, k) * x(i, j, k);
}

double residual_sum(const Equation& e) {
    double sum = 0;
    inner_cells(e.g, [&](int i, int j, int k) {
        sum += e.s.sp(i, j, k) == -big ? 0.0 : std::abs(residual(e, i, j, k));
    });
    return sum;
}

void sweep(const Equation& e) {
    for (const int ck : {0, 1}) {
        for (const int cj : {0, 1}) {
            for (int k = 2 + ck; k <= e.g.nz; k += 2) {
                for (int j = 2 + cj; j <= e.g.ny; j += 2) {
                    for (int i = 2; i <= e.g.nx; ++i) {
                        e.phi(i, j, k) += e.sweep_factor * residual(e, i, j, k) / e.s.ap(i, j, k);
                    }
                }
            }
        }
    }
}

Equation equation(Variable variable, const CaseSettings& set, const GridGeometry& g, State& s) {
    const auto d = [](float x) { return static_cast<double>(x); };
    switch (variable) {
        case Variable::tke:
            return {variable,   set,         g,         s,   s.tke,     d(set.SIGK),
                    d(set.CMU), d(set.URFK), set.NSWPK, 1.1, s.resid_k, s.scale_k};
        case Variable::ted:
            return {variable,   set,         g,         s,   s.ted,     d(set.SIGE),
                    d(set.CMU), d(set.URFE), set.NSWPE, 1.0, s.resid_e, s.scale_e};
        default:
            return {variable,      set,         g,         s,   s.tkl,       d(set.KL_SIGMA_K),
                    d(set.KL_CMU), d(set.URFK), set.NSWPK, 1.1, s.resid_klm, s.scale_klm};
    }
}

}  // namespace

State copy_of(const FlowState& f) {
    State s;
    s.u = doubles(f.u);
    s.v = doubles(f.v);
    s.w = doubles(f.w);
    s.tke = doubles(f.tke);
    s.ted = doubles(f.ted);
    s.tkl = doubles(f.tkl);
    s.vis = doubles(f.vis);
    s.viskl = doubles(f.viskl);
    s.den = doubles(f.den);
    s.lm = doubles(f.lm);
    s.flxU = doubles(f.flxU);
    s.flxV = doubles(f.flxV);
    s.flxW = doubles(f.flxW);
    s.gen = doubles(f.gen);
    s.z0 = doubles(f.z0);
    s.gp_d = doubles(f.gp_d);
    s.gp_k = doubles(f.gp_k);
    s.gp_e = doubles(f.gp_e);
    for (Array* a : {&s.ae, &s.aw, &s.an, &s.as, &s.at, &s.ab, &s.ap, &s.su, &s.sp}) {
        a->allocate(s.u.ni(), s.u.nj(), s.u.nk());
    }
    s.canopy_source_factor = static_cast<double>(f.canopy_source_factor);
    s.resid_k = static_cast<double>(f.resid_k);
    s.resid_e = static_cast<double>(f.resid_e);
    s.resid_klm = static_cast<double>(f.resid_klm);
    s.scale_k = static_cast<double>(f.scale_k);
    s.scale_e = static_cast<double>(f.scale_e);
    s.scale_klm = static_cast<double>(f.scale_klm);
    return s;
}

Outcome solve(Variable variable, const CaseSettings& set, const GridGeometry& g, State& s,
              const Iteration& iteration, Until until) {
    const Equation e = equation(variable, set, g, s);
    inner_cells(g, [&](int i, int j, int k) {
        coefficients(e, i, j, k);
        sources(e, i, j, k);
    });
    Outcome out;
    if (until == Until::assembled) {
        return out;
    }
    if (set.canopy.canopy_mode > 0 && variable != Variable::tkl) {
        canopy(e);
    }
    if (variable != Variable::ted) {
        wall_planes(e);
    }
    boundary(e, iteration.skip_sides);
    if (until == Until::bounded) {
        return out;
    }
    inner_cells(g, [&](int i, int j, int k) {
        s.ap(i, j, k) = (s.ae(i, j, k) + s.aw(i, j, k) + s.an(i, j, k) + s.as(i, j, k) +
                         s.at(i, j, k) + s.ab(i, j, k) - s.sp(i, j, k)) /
                        e.urf;
        s.su(i, j, k) += (1 - e.urf) * s.ap(i, j, k) * e.phi(i, j, k);
    });
    if (until == Until::relaxed) {
        return out;
    }
    if (iteration.iter % iteration.interval == 0) {
        e.resid = residual_sum(e);
        e.scale = 0;
        inner_cells(
            g, [&](int i, int j, int k) { e.scale += std::abs(s.ap(i, j, k) * e.phi(i, j, k)); });
    }
    out.r0 = e.resid;
    for (int count = 1; count <= e.sweeps; ++count) {
        sweep(e);
        out.r1 = residual_sum(e);
        out.a = out.r1 / out.r0;
        if (out.a < 0.1) {
            break;
        }
        ++out.n;
    }
    if (variable != Variable::ted) {
        for (int k = 2; k <= g.nz; ++k) {
            for (int j = 1; j <= g.ny; ++j) {
                for (int i = 1; i <= g.nx; ++i) {
                    e.phi(i, j, k) = std::max(e.phi(i, j, k), tiny);
                }
            }
        }
    }
    return out;
}

void mixing_length(const CaseSettings& set, const GridGeometry& g, State& s, const Array& energy) {
    const auto zn = [&](int i, int j, int k) { return static_cast<double>(g.zn(i, j, k)); };
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            const auto h = [&](int k) {
                return static_cast<double>(g.zc(i, j, k)) - static_cast<double>(g.zc(i, j, 1));
            };
            double S1 = 0;
            double S2 = 0;
            for (int k = 2; k <= g.nz; ++k) {
                const double dz =
                    0.25 *
                    ((zn(i - 1, j - 1, k) + zn(i, j - 1, k) + zn(i - 1, j - 1, k) + zn(i, j, k)) -
                     (zn(i - 1, j - 1, k - 1) + zn(i, j - 1, k - 1) + zn(i - 1, j, k - 1) +
                      zn(i, j, k - 1)));
                const double q = std::sqrt(2 * energy(i, j, k));
                S1 += q * h(k) * dz;
                S2 += q * dz;
            }
            const double L0 = static_cast<double>(set.KL_ALPHA) * S1 / S2;
            for (int k = 2; k <= g.nz; ++k) {
                s.lm(i, j, k) = 0.4 * h(k) / (0.4 * h(k) / L0 + 1);
            }
        }
    }
}

void viscosity(const CaseSettings& set, const GridGeometry& g, State& s) {
    const auto CMU = static_cast<double>(set.CMU);
    const auto KL_CMU = static_cast<double>(set.KL_CMU);
    const auto VISCOS = static_cast<double>(set.VISCOS);
    const auto urf = static_cast<double>(set.URFVIS);
    const auto ratio = static_cast<double>(set.RATIO_KL);
    const auto fresh = [&](double c, double den, double k, double eps) {
        return c * den * k * k / (eps + tiny) + VISCOS;
    };
    inner_cells(g, [&](int i, int j, int k) {
        const double den = s.den(i, j, k);
        const double tke = s.tke(i, j, k);
        double& vis = s.vis(i, j, k);
        double eps = 0;
        if (set.TURBULENCE_MODEL == 2) {
            eps = std::pow(CMU, 0.75) * std::sqrt(tke) * tke / s.lm(i, j, k);
        } else {
            eps = s.ted(i, j, k);
        }
        vis = urf * fresh(CMU, den, tke, eps) + (1 - urf) * vis;
        if (set.TURBULENCE_MODEL == 4) {
            const double tkl = s.tkl(i, j, k);
            const double e = std::pow(KL_CMU, 0.75) * std::sqrt(tkl) * tkl / s.lm(i, j, k);
            double& viskl = s.viskl(i, j, k);
            viskl = urf * fresh(KL_CMU, den, tkl, e) + (1 - urf) * viskl;
            vis = (1 - ratio) * vis + ratio * viskl;
        }
    });
    const auto boundary_of = [&](Array& x) {
        for (int k = 1; k <= g.nk; ++k) {
            for (int i = 1; i <= g.ni; ++i) {
                x(i, 1, k) = x(i, 2, k);
                x(i, g.nj, k) = x(i, g.ny, k);
            }
        }
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                x(i, j, 1) = VISCOS;
            }
        }
        for (int k = 2; k <= g.nz; ++k) {
            for (int j = 2; j <= g.ny; ++j) {
                x(g.ni, j, k) = x(g.nx, j, k);
            }
        }
    };
    boundary_of(s.vis);
    if (set.TURBULENCE_MODEL == 4) {
        boundary_of(s.viskl);
    }
}

}  // namespace torvex::plain
