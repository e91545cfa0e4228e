#include "solver/reference/plain_momentum.hpp"

#include <algorithm>
#include <cmath>

namespace torvex::plain {

namespace {

DoubleField doubled(const Field3& x) {
    DoubleField y(x.ni(), x.nj(), x.nk());
    std::copy_n(x.data(), x.size(), y.data());
    return y;
}

// Face values by the three interpolation factors; x is a field or a function of i, j, k.
template <class X>
double east(const GridGeometry& g, const X& x, int i, int j, int k) {
    const auto f = double(g.fx(i, j, k));
    return (1.0 - f) * double(x(i, j, k)) + f * double(x(i + 1, j, k));
}
template <class X>
double north(const GridGeometry& g, const X& x, int i, int j, int k) {
    const auto f = double(g.fy(i, j, k));
    return (1.0 - f) * double(x(i, j, k)) + f * double(x(i, j + 1, k));
}
template <class X>
double top(const GridGeometry& g, const X& x, int i, int j, int k) {
    const auto f = double(g.fz(i, j, k));
    return (1.0 - f) * double(x(i, j, k)) + f * double(x(i, j, k + 1));
}
template <class X>
double corner(const GridGeometry& g, const X& x, int i, int j, int k) {
    const auto fz = double(g.fz(i, j, k));
    const auto fy = double(g.fy(i, j, k));
    const auto fy_up = double(g.fy(i, j, k + 1));
    return (1.0 - fz) * ((1.0 - fy) * east(g, x, i, j, k) + fy * east(g, x, i, j + 1, k)) +
           fz * ((1.0 - fy_up) * east(g, x, i, j, k + 1) + fy_up * east(g, x, i, j + 1, k + 1));
}

// The face of cell (i,j,k) on the high side of a direction.
template <class X>
double high_face(const GridGeometry& g, Direction l, const X& x, int i, int j, int k) {
    switch (l) {
        case Direction::xi:
            return east(g, x, i, j, k);
        case Direction::et:
            return north(g, x, i, j, k);
        case Direction::ze:
            break;
    }
    return top(g, x, i, j, k);
}

// f at the high face less f at the low face, which is the high face of the cell below.
template <class F>
double difference(Direction l, const F& f, int i, int j, int k) {
    switch (l) {
        case Direction::xi:
            return f(i, j, k) - f(i - 1, j, k);
        case Direction::et:
            return f(i, j, k) - f(i, j - 1, k);
        case Direction::ze:
            break;
    }
    return f(i, j, k) - f(i, j, k - 1);
}

Vector vector_of(const GridGeometry& g, Direction l, int i, int j, int k) {
    switch (l) {
        case Direction::xi:
            return {double(g.xix(i, j, k)), double(g.xiy(i, j, k)), double(g.xiz(i, j, k))};
        case Direction::et:
            return {double(g.etx(i, j, k)), double(g.ety(i, j, k)), double(g.etz(i, j, k))};
        case Direction::ze:
            break;
    }
    return {double(g.zex(i, j, k)), double(g.zey(i, j, k)), double(g.zez(i, j, k))};
}

double scalar_product(const Vector& p, const Vector& q) {
    return p[0] * q[0] + p[1] * q[1] + p[2] * q[2];
}

std::size_t index(int component) {
    return static_cast<std::size_t>(component);
}

// Viscosity over volume at the high face of a direction.
double viscosity_over_volume(const Momentum& m, Direction l, int i, int j, int k) {
    return high_face(m.g, l, m.s.vis, i, j, k) / high_face(m.g, l, m.g.vol, i, j, k);
}

// Difference of x along direction d over the high face of direction l, from the corners of the
// face if d lies in it, else from the cells on its two sides.
double face_difference(const Momentum& m, Direction l, Direction d, const DoubleField& x, int i,
                       int j, int k) {
    const auto c = [&](int a, int b, int e) { return corner(m.g, x, a, b, e); };
    switch (l) {
        case Direction::xi:
            switch (d) {
                case Direction::xi:
                    return x(i + 1, j, k) - x(i, j, k);
                case Direction::et:
                    return c(i, j, k) + c(i, j, k - 1) - c(i, j - 1, k) - c(i, j - 1, k - 1);
                case Direction::ze:
                    return c(i, j, k) + c(i, j - 1, k) - c(i, j, k - 1) - c(i, j - 1, k - 1);
            }
            break;
        case Direction::et:
            switch (d) {
                case Direction::xi:
                    return c(i, j, k) + c(i, j, k - 1) - c(i - 1, j, k) - c(i - 1, j, k - 1);
                case Direction::et:
                    return x(i, j + 1, k) - x(i, j, k);
                case Direction::ze:
                    return c(i, j, k) + c(i - 1, j, k) - c(i, j, k - 1) - c(i - 1, j, k - 1);
            }
            break;
        case Direction::ze:
            switch (d) {
                case Direction::xi:
                    return c(i, j, k) + c(i, j - 1, k) - c(i - 1, j, k) - c(i - 1, j - 1, k);
                case Direction::et:
                    return c(i, j, k) + c(i - 1, j, k) - c(i, j - 1, k) - c(i - 1, j - 1, k);
                case Direction::ze:
                    return x(i, j, k + 1) - x(i, j, k);
            }
            break;
    }
    return 0;
}

double mass_flux_east(const Momentum& m, int i, int j, int k) {
    return east(m.g, m.s.den, i, j, k) * double(m.s.flxU(i, j, k));
}
double mass_flux_north(const Momentum& m, int i, int j, int k) {
    return north(m.g, m.s.den, i, j, k) * double(m.s.flxV(i, j, k));
}
double mass_flux_top(const Momentum& m, int i, int j, int k) {
    return top(m.g, m.s.den, i, j, k) * double(m.s.flxW(i, j, k));
}

double diffusion(const Momentum& m, Direction l, int i, int j, int k) {
    const auto square = [&](int a, int b, int c) {
        const Vector v = vector_of(m.g, l, a, b, c);
        return scalar_product(v, v);
    };
    return high_face(m.g, l, m.s.vis, i, j, k) * high_face(m.g, l, square, i, j, k) /
           high_face(m.g, l, m.g.vol, i, j, k);
}

// East term less west term of the deferred convection along one line of cells; n is the cell, last
// the last cell of the line.
template <class Phi, class Flux>
double deferred_line(double eta, const Phi& phi, const Flux& flux, int n, int last) {
    const double dW = (phi(n) - phi(n - 1)) * (n == 2 ? 2.0 : 1.0);
    const double dE = (phi(n + 1) - phi(n)) * (n == last ? 2.0 : 1.0);
    const double dWW = n == 2 ? 0.0 : phi(n - 1) - phi(n - 2);
    const double dEE = n == last ? 0.0 : phi(n + 2) - phi(n + 1);
    const auto split = [](double F) {
        const double s = F >= 0.0 ? 1.0 : -1.0;
        return std::array{0.5 * (1.0 + s) * F, 0.5 * (1.0 - s) * F};
    };
    double east_term = 0;
    if (n != last) {
        const auto [plus, minus] = split(flux(n));
        east_term = ((1.0 - eta) * dW + (1.0 + eta) * dE) * plus -
                    ((1.0 + eta) * dE + (1.0 - eta) * dEE) * minus;
    }
    double west_term = 0;
    if (n != 2) {
        const auto [plus, minus] = split(flux(n - 1));
        west_term = ((1.0 - eta) * dWW + (1.0 + eta) * dW) * plus -
                    ((1.0 + eta) * dW + (1.0 - eta) * dE) * minus;
    }
    return east_term - west_term;
}

// The wall of a cell: ghost index, area vector across it and the four nodes of its face.
struct Wall {
    int i, j, k;
    int ig, jg, kg;
    Direction across;
    std::array<std::array<int, 3>, 4> nodes;
    double z0;
};

void wall_shear(Momentum& m, int component, const Wall& w) {
    const GridGeometry& g = m.g;
    const Vector area = vector_of(g, w.across, w.ig, w.jg, w.kg);
    const double size = std::sqrt(scalar_product(area, area));
    const Vector n{area[0] / size, area[1] / size, area[2] / size};
    Vector mean{};
    for (const auto& [a, b, c] : w.nodes) {
        mean[0] += 0.25 * double(g.xn(a, b, c));
        mean[1] += 0.25 * double(g.yn(a, b, c));
        mean[2] += 0.25 * double(g.zn(a, b, c));
    }
    const Vector to_centre{double(g.xc(w.i, w.j, w.k)) - mean[0],
                           double(g.yc(w.i, w.j, w.k)) - mean[1],
                           double(g.zc(w.i, w.j, w.k)) - mean[2]};
    const double d = std::abs(scalar_product(to_centre, n));
    Vector D{};
    for (int c = 0; c < 3; ++c) {
        const DoubleField& x = m.velocity[index(c)];
        D[index(c)] = x(w.i, w.j, w.k) - x(w.ig, w.jg, w.kg);
    }
    double T = 0;
    switch (component) {
        case 0:
            T = (1.0 - n[0] * n[0]) * D[0] - n[0] * n[1] * D[1] - n[0] * n[2] * D[2];
            break;
        case 1:
            T = -n[0] * n[1] * D[0] + (1.0 - n[1] * n[1]) * D[1] - n[1] * n[2] * D[2];
            break;
        default:
            T = -n[0] * n[2] * D[0] - n[1] * n[2] * D[1] + (1.0 - n[2] * n[2]) * D[2];
            break;
    }
    const double cmu4 = std::sqrt(std::sqrt(double(m.settings.CMU)));
    const double tke = std::abs(double(m.s.tke(w.i, w.j, w.k)));
    m.su(w.i, w.j, w.k) -= double(m.s.den(w.i, w.j, w.k)) * cmu4 * std::sqrt(tke) * 0.41 /
                           std::log(d / w.z0) * (double(g.vol(w.ig, w.jg, w.kg)) / d) * T;
}

void top_boundary(Momentum& m, int component) {
    const GridGeometry& g = m.g;
    const bool wall = m.settings.WIND_TUNNEL_MODE > 0;
    DoubleField& phi = m.velocity[index(component)];
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            if (wall) {
                m.at(i, j, g.nz) = 0;
                const int n = g.nz;
                wall_shear(m, component,
                           {i,
                            j,
                            g.nz,
                            i,
                            j,
                            g.nk,
                            Direction::ze,
                            {{{i, j, n}, {i - 1, j, n}, {i, j - 1, n}, {i - 1, j - 1, n}}},
                            double(m.settings.WIND_TUNNEL_Z0)});
                if (component == 0) {
                    phi(i, j, g.nk) = 0;
                }
            } else if (component == 0) {
                m.at(i, j, g.nz) = 0;
                phi(i, j, g.nk) = phi(i, j, g.nz);
            }
        }
    }
}

void ground_boundary(Momentum& m, int component) {
    const GridGeometry& g = m.g;
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            m.ab(i, j, 2) = 0;
            wall_shear(m, component,
                       {i,
                        j,
                        2,
                        i,
                        j,
                        1,
                        Direction::ze,
                        {{{i, j, 1}, {i - 1, j, 1}, {i, j - 1, 1}, {i - 1, j - 1, 1}}},
                        double(m.s.z0(i, j))});
        }
    }
}

void side_boundaries(Momentum& m, int component) {
    const GridGeometry& g = m.g;
    DoubleField& phi = m.velocity[index(component)];
    const auto z0 = double(m.settings.WIND_TUNNEL_Z0);
    for (int k = 2; k <= g.nz; ++k) {
        for (int i = 2; i <= g.nx; ++i) {
            if (m.settings.WIND_TUNNEL_MODE >= 2) {
                const int n = g.ny;
                m.an(i, g.ny, k) = 0;
                wall_shear(m, component,
                           {i,
                            g.ny,
                            k,
                            i,
                            g.nj,
                            k,
                            Direction::et,
                            {{{i, n, k}, {i - 1, n, k}, {i, n, k - 1}, {i - 1, n, k - 1}}},
                            z0});
                m.as(i, 2, k) = 0;
                wall_shear(m, component,
                           {i,
                            2,
                            k,
                            i,
                            1,
                            k,
                            Direction::et,
                            {{{i, 1, k}, {i - 1, 1, k}, {i, 1, k - 1}, {i - 1, 1, k - 1}}},
                            z0});
                if (component != 1) {
                    phi(i, g.nj, k) = 0;
                    phi(i, 1, k) = 0;
                }
            } else if (component != 1) {
                m.as(i, 2, k) = 0;
                phi(i, 1, k) = phi(i, 2, k);
                m.an(i, g.ny, k) = 0;
                phi(i, g.nj, k) = phi(i, g.ny, k);
            }
        }
    }
}

// Area vector of the outflow face: half the cross product of its diagonals.
Vector outflow_area(const GridGeometry& g, int j, int k) {
    const auto node = [&](int b, int c) {
        return Vector{double(g.xn(g.nx, b, c)), double(g.yn(g.nx, b, c)), double(g.zn(g.nx, b, c))};
    };
    const Vector p = node(j, k);
    const Vector q = node(j - 1, k - 1);
    const Vector r = node(j - 1, k);
    const Vector t = node(j, k - 1);
    const Vector a{p[0] - q[0], p[1] - q[1], p[2] - q[2]};
    const Vector b{r[0] - t[0], r[1] - t[1], r[2] - t[2]};
    return {0.5 * (a[1] * b[2] - a[2] * b[1]), 0.5 * (a[2] * b[0] - a[0] * b[2]),
            0.5 * (a[0] * b[1] - a[1] * b[0])};
}

void outflow(Momentum& m, int component) {
    const GridGeometry& g = m.g;
    DoubleField& phi = m.velocity[index(component)];
    double r = 0;
    if (component == 0) {
        double A = 0;
        double B = 0;
        for (int j = 2; j <= g.ny; ++j) {
            for (int k = 2; k <= g.nz; ++k) {
                const Vector S = outflow_area(g, j, k);
                const auto den = double(m.s.den(g.nx, j, k));
                A += den * scalar_product(S, {m.velocity[0](g.nx, j, k), m.velocity[1](g.nx, j, k),
                                              m.velocity[2](g.nx, j, k)});
                B += den * scalar_product(S, {1.0, 0.0, 0.0});
            }
        }
        r = (double(m.s.outflow_mass) - A) / B;
    }
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            phi(g.ni, j, k) = phi(g.nx, j, k) + r;
        }
    }
    for (int k = 2; k <= g.nz; ++k) {
        phi(g.ni, 1, k) = phi(g.ni, 2, k);
        phi(g.ni, g.nj, k) = phi(g.ni, g.ny, k);
    }
}

double neighbours(const Momentum& m, const DoubleField& x, int i, int j, int k) {
    return m.ae(i, j, k) * x(i + 1, j, k) + m.aw(i, j, k) * x(i - 1, j, k) +
           m.an(i, j, k) * x(i, j + 1, k) + m.as(i, j, k) * x(i, j - 1, k) +
           m.at(i, j, k) * x(i, j, k + 1) + m.ab(i, j, k) * x(i, j, k - 1);
}

bool is_pinned(const Momentum& m, int i, int j, int k) {
    return float(m.sp(i, j, k)) == -1.0e25F;
}

template <class Cell>
void interior(const GridGeometry& g, const Cell& cell) {
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                cell(i, j, k);
            }
        }
    }
}

double residual_sum(const Momentum& m, const DoubleField& x) {
    double sum = 0;
    interior(m.g, [&](int i, int j, int k) {
        if (!is_pinned(m, i, j, k)) {
            sum += std::abs(neighbours(m, x, i, j, k) + m.su(i, j, k) - m.ap(i, j, k) * x(i, j, k));
        }
    });
    return sum;
}

void sweep(Momentum& m, DoubleField& x) {
    for (int ck = 0; ck <= 1; ++ck) {
        for (int cj = 0; cj <= 1; ++cj) {
            for (int k = 2 + ck; k <= m.g.nz; k += 2) {
                for (int j = 2 + cj; j <= m.g.ny; j += 2) {
                    for (int i = 2; i <= m.g.nx; ++i) {
                        x(i, j, k) = (neighbours(m, x, i, j, k) + m.su(i, j, k)) / m.ap(i, j, k);
                    }
                }
            }
        }
    }
}

}  // namespace

Momentum start(const CaseSettings& settings, const GridGeometry& g, const FlowState& s) {
    Momentum m{
        settings, g,  s, {doubled(s.u), doubled(s.v), doubled(s.w)}, {}, {}, {}, {}, {}, {}, {},
        {},       {}, {}};
    for (DoubleField* x : {&m.ae, &m.aw, &m.an, &m.as, &m.at, &m.ab, &m.ap, &m.su, &m.sp}) {
        x->allocate(g.ni, g.nj, g.nk);
    }
    for (DoubleField& x : m.gradient) {
        x.allocate(g.ni, g.nj, g.nk);
    }
    m.resid = {double(s.resid_u), double(s.resid_v), double(s.resid_w)};
    m.scale = {double(s.scale_u), double(s.scale_v), double(s.scale_w)};
    return m;
}

double cross_diffusion(const Momentum& m, int component, int i, int j, int k) {
    double sum = 0;
    for (const Direction l : directions) {
        for (const Direction d : directions) {
            if (d == l) {
                continue;
            }
            const auto product = [&](int a, int b, int c) {
                return scalar_product(vector_of(m.g, l, a, b, c), vector_of(m.g, d, a, b, c));
            };
            const auto term = [&](int a, int b, int c) {
                return viscosity_over_volume(m, l, a, b, c) * high_face(m.g, l, product, a, b, c) *
                       0.5 * face_difference(m, l, d, m.velocity[index(component)], a, b, c);
            };
            sum += difference(l, term, i, j, k);
        }
    }
    return sum;
}

double transposed_stress(const Momentum& m, int component, int i, int j, int k) {
    double sum = 0;
    for (const Direction l : directions) {
        for (const Direction d : directions) {
            const auto term = [&](int a, int b, int c) {
                double over_components = 0;
                for (int n = 0; n < 3; ++n) {
                    const auto product = [&](int p, int q, int r) {
                        return vector_of(m.g, d, p, q, r)[index(component)] *
                               vector_of(m.g, l, p, q, r)[index(n)];
                    };
                    over_components += face_difference(m, l, d, m.velocity[index(n)], a, b, c) *
                                       high_face(m.g, l, product, a, b, c);
                }
                return viscosity_over_volume(m, l, a, b, c) * over_components *
                       (d == l ? 1.0 : 0.5);
            };
            sum += difference(l, term, i, j, k);
        }
    }
    return sum;
}

double pressure_gradient(const Momentum& m, int component, int i, int j, int k) {
    double sum = 0;
    for (const Direction l : directions) {
        const auto face = [&](int a, int b, int c) { return high_face(m.g, l, m.s.p, a, b, c); };
        sum -= difference(l, face, i, j, k) * vector_of(m.g, l, i, j, k)[index(component)];
    }
    return sum;
}

double deferred_convection(const Momentum& m, int component, int i, int j, int k) {
    const DoubleField& x = m.velocity[index(component)];
    const FlowState& s = m.s;
    const bool mass = component == 0;
    const auto eta = double(m.settings.ETA);
    const double Z =
        deferred_line(
            eta, [&](int n) { return x(n, j, k); },
            [&](int n) { return mass ? mass_flux_east(m, n, j, k) : double(s.flxU(n, j, k)); }, i,
            m.g.nx) +
        deferred_line(
            eta, [&](int n) { return x(i, n, k); },
            [&](int n) { return mass ? mass_flux_north(m, i, n, k) : double(s.flxV(i, n, k)); }, j,
            m.g.ny) +
        deferred_line(
            eta, [&](int n) { return x(i, j, n); },
            [&](int n) { return mass ? mass_flux_top(m, i, j, n) : double(s.flxW(i, j, n)); }, k,
            m.g.nz);
    return -double(m.settings.RATIO) * 0.25 * Z;
}

void neighbour_coefficients(Momentum& m) {
    interior(m.g, [&](int i, int j, int k) {
        m.ae(i, j, k) =
            std::max(-mass_flux_east(m, i, j, k), 0.0) + diffusion(m, Direction::xi, i, j, k);
        m.aw(i, j, k) = std::max(mass_flux_east(m, i - 1, j, k), 0.0) +
                        diffusion(m, Direction::xi, i - 1, j, k);
        m.an(i, j, k) =
            std::max(-mass_flux_north(m, i, j, k), 0.0) + diffusion(m, Direction::et, i, j, k);
        m.as(i, j, k) = std::max(mass_flux_north(m, i, j - 1, k), 0.0) +
                        diffusion(m, Direction::et, i, j - 1, k);
        m.at(i, j, k) =
            std::max(-mass_flux_top(m, i, j, k), 0.0) + diffusion(m, Direction::ze, i, j, k);
        m.ab(i, j, k) =
            std::max(mass_flux_top(m, i, j, k - 1), 0.0) + diffusion(m, Direction::ze, i, j, k - 1);
    });
}

void sources(Momentum& m, int component) {
    interior(m.g, [&](int i, int j, int k) {
        for (const Direction l : directions) {
            const auto slot = index(3 * component + static_cast<int>(l));
            m.gradient[slot](i, j, k) = vector_of(m.g, l, i, j, k)[index(component)];
        }
        m.sp(i, j, k) = 0;
        m.su(i, j, k) =
            cross_diffusion(m, component, i, j, k) + transposed_stress(m, component, i, j, k) +
            pressure_gradient(m, component, i, j, k) + deferred_convection(m, component, i, j, k);
    });
}

void canopy(Momentum& m) {
    if (m.settings.canopy.canopy_mode <= 0) {
        return;
    }
    interior(m.g, [&](int i, int j, int k) {
        double square = 0;
        for (const DoubleField& x : m.velocity) {
            square += x(i, j, k) * x(i, j, k);
        }
        m.sp(i, j, k) -= double(m.g.vol(i, j, k)) * double(m.s.den(i, j, k)) *
                         double(m.s.gp_d(i, j, k)) * std::sqrt(square);
    });
}

void boundaries(Momentum& m, int component, int skip_sides) {
    top_boundary(m, component);
    ground_boundary(m, component);
    if (skip_sides != 0) {
        return;
    }
    side_boundaries(m, component);
    outflow(m, component);
}

void relax(Momentum& m, int component) {
    const std::array urf{m.settings.URFU, m.settings.URFV, m.settings.URFW};
    const auto factor = double(urf[index(component)]);
    const DoubleField& x = m.velocity[index(component)];
    interior(m.g, [&](int i, int j, int k) {
        m.ap(i, j, k) = (m.ae(i, j, k) + m.aw(i, j, k) + m.an(i, j, k) + m.as(i, j, k) +
                         m.at(i, j, k) + m.ab(i, j, k) - m.sp(i, j, k)) /
                        factor;
        for (int l = 0; l < 3; ++l) {
            m.gradient[index(3 * component + l)](i, j, k) /= m.ap(i, j, k);
        }
        m.su(i, j, k) += (1.0 - factor) * m.ap(i, j, k) * x(i, j, k);
    });
}

void reference_sums(Momentum& m, int component) {
    m.resid[index(component)] = residual_sum(m, m.velocity[index(component)]);
    double sum = component == 0 ? 0.0 : m.scale[0];
    interior(m.g, [&](int i, int j, int k) {
        double square = 0;
        for (const DoubleField& x : m.velocity) {
            square += x(i, j, k) * x(i, j, k);
        }
        sum += std::abs(m.ap(i, j, k) * std::sqrt(square));
    });
    m.scale[index(component)] = sum;
}

void solve(Momentum& m, int component) {
    const std::array count{m.settings.NSWPU, m.settings.NSWPV, m.settings.NSWPW};
    DoubleField& x = m.velocity[index(component)];
    m.r0 = m.resid[index(component)];
    m.r1 = 0;
    m.a = 0;
    m.n = 1;
    while (m.n <= count[index(component)]) {
        sweep(m, x);
        m.r1 = residual_sum(m, x);
        m.a = m.r1 / m.r0;
        if (0.1 > m.a) {
            break;
        }
        ++m.n;
    }
}

void equation(Momentum& m, int component, int iter, int interval, int skip_sides) {
    if (component == 0) {
        neighbour_coefficients(m);
    }
    sources(m, component);
    canopy(m);
    boundaries(m, component, skip_sides);
    relax(m, component);
    if (iter % interval == 0) {
        reference_sums(m, component);
    }
    solve(m, component);
}

}  // namespace torvex::plain
