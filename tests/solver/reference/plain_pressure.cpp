#include "solver/reference/plain_pressure.hpp"

#include <array>
#include <cmath>

namespace torvex::plain {

namespace {

Vector operator+(Vector a, Vector b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

Vector operator-(Vector a, Vector b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Vector operator*(double f, Vector a) {
    return {f * a.x, f * a.y, f * a.z};
}

double scalar(Vector a, Vector b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vector vector_product(Vector a, Vector b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double at(const Field3& X, Cell c) {
    return double(X(c.i, c.j, c.k));
}

Vector node(const GridGeometry& g, int i, int j, int k) {
    return {double(g.xn(i, j, k)), double(g.yn(i, j, k)), double(g.zn(i, j, k))};
}

Vector centre(const GridGeometry& g, Cell c) {
    return {at(g.xc, c), at(g.yc, c), at(g.zc, c)};
}

// The corners of a face in the order round it, so that the normal points to rising index.
std::array<Vector, 4> corners(const GridGeometry& g, Cell c, Face face) {
    const auto [i, j, k] = c;
    if (face == Face::east) {
        return {node(g, i, j - 1, k - 1), node(g, i, j, k - 1), node(g, i, j, k),
                node(g, i, j - 1, k)};
    }
    if (face == Face::north) {
        return {node(g, i - 1, j, k - 1), node(g, i - 1, j, k), node(g, i, j, k),
                node(g, i, j, k - 1)};
    }
    return {node(g, i - 1, j - 1, k), node(g, i, j - 1, k), node(g, i, j, k), node(g, i - 1, j, k)};
}

const Field3& weight(const GridGeometry& g, Face face) {
    return face == Face::east ? g.fx : (face == Face::north ? g.fy : g.fz);
}

struct Gradients {
    const Field3 &U, &V, &W;
};

Gradients gradients(const FlowState& s, Face face) {
    if (face == Face::east) {
        return {s.dUxi, s.dVxi, s.dWxi};
    }
    if (face == Face::north) {
        return {s.dUet, s.dVet, s.dWet};
    }
    return {s.dUze, s.dVze, s.dWze};
}

// X at the lower face minus X at the upper face of the cell.
double own_drop(const GridGeometry& g, const Field3& X, Cell c, Face face) {
    return at_face(g, X, previous(c, face), face) - at_face(g, X, c, face);
}

// One velocity component on a face.
double component(const GridGeometry& g, const Field3& q, const Field3& d, const Field3& p, Cell c,
                 Face face) {
    const Cell n = next(c, face);
    const double f = at(weight(g, face), c);
    const double stripped_here = at(q, c) - at(d, c) * own_drop(g, p, c, face);
    const double stripped_there = at(q, n) - at(d, n) * own_drop(g, p, n, face);
    const double compact = ((1 - f) * at(d, c) + f * at(d, n)) * (at(p, c) - at(p, n));
    return (1 - f) * stripped_here + f * stripped_there + compact;
}

struct Flow {
    double through;
    double sign;
};

std::array<Flow, 6> flows(const GridGeometry& g, const Field3& den, const Fluxes& flux, Cell c) {
    std::array<Flow, 6> all{};
    std::size_t n = 0;
    for (const Face face : {Face::east, Face::north, Face::top}) {
        const Field3& F =
            face == Face::east ? flux.east : (face == Face::north ? flux.north : flux.top);
        const Cell low = previous(c, face);
        all[n++] = {at_face(g, den, c, face) * at(F, c), 1};
        all[n++] = {at_face(g, den, low, face) * at(F, low), -1};
    }
    return all;
}

Vector gradient(const GridGeometry& g, const Field3& X, Cell c) {
    const double xi = -own_drop(g, X, c, Face::east);
    const double et = -own_drop(g, X, c, Face::north);
    const double ze = -own_drop(g, X, c, Face::top);
    const Vector sum = xi * Vector{at(g.xix, c), at(g.xiy, c), at(g.xiz, c)} +
                       et * Vector{at(g.etx, c), at(g.ety, c), at(g.etz, c)} +
                       ze * Vector{at(g.zex, c), at(g.zey, c), at(g.zez, c)};
    return (1 / at(g.vol, c)) * sum;
}

}  // namespace

Cell next(Cell c, Face face) {
    return {c.i + (face == Face::east), c.j + (face == Face::north), c.k + (face == Face::top)};
}

Cell previous(Cell c, Face face) {
    return {c.i - (face == Face::east), c.j - (face == Face::north), c.k - (face == Face::top)};
}

Vector twice_area(const GridGeometry& g, Cell c, Face face) {
    const auto [a, b, d, e] = corners(g, c, face);
    return vector_product(b - a, d - a) + vector_product(d - a, e - a);
}

double at_face(const GridGeometry& g, const Field3& X, Cell c, Face face) {
    const double f = at(weight(g, face), c);
    return (1 - f) * at(X, c) + f * at(X, next(c, face));
}

double interpolated_flux(const GridGeometry& g, const FlowState& s, Cell c, Face face) {
    const Gradients d = gradients(s, face);
    const Vector velocity{component(g, s.u, d.U, s.p, c, face),
                          component(g, s.v, d.V, s.p, c, face),
                          component(g, s.w, d.W, s.p, c, face)};
    return 0.5 * scalar(twice_area(g, c, face), velocity);
}

double coefficient(const GridGeometry& g, const FlowState& s, Cell c, Face face) {
    const Gradients d = gradients(s, face);
    const Vector d_face{at_face(g, d.U, c, face), at_face(g, d.V, c, face),
                        at_face(g, d.W, c, face)};
    return 0.5 * scalar(twice_area(g, c, face), d_face);
}

double boundary_flux(const GridGeometry& g, const FlowState& s, Cell c, Face face, Cell from) {
    return 0.5 * scalar(twice_area(g, c, face), {at(s.u, from), at(s.v, from), at(s.w, from)});
}

double imbalance(const GridGeometry& g, const Field3& den, const Fluxes& flux, Cell c) {
    double sum = 0;
    for (const auto [through, sign] : flows(g, den, flux, c)) {
        sum += sign * through;
    }
    return sum;
}

double throughput(const GridGeometry& g, const Field3& den, const Fluxes& flux, Cell c) {
    double sum = 0;
    for (const auto [through, sign] : flows(g, den, flux, c)) {
        sum += std::abs(through);
    }
    return sum;
}

double residual(const GridGeometry& g, const FlowState& s, const Field3& pp, Cell c) {
    const auto [i, j, k] = c;
    double r = s.eq.su(i, j, k);
    const auto add = [&](Cell at_low, Face face, Cell neighbour) {
        // No correction passes the boundary.
        if (neighbour.i < 2 || neighbour.i > g.nx || neighbour.j < 2 || neighbour.j > g.ny ||
            neighbour.k < 2 || neighbour.k > g.nz) {
            return;
        }
        const double a = at_face(g, s.den, at_low, face) * coefficient(g, s, at_low, face);
        r += a * (at(pp, neighbour) - at(pp, c));
    };
    for (const Face face : {Face::east, Face::north, Face::top}) {
        add(c, face, next(c, face));
        add(previous(c, face), face, previous(c, face));
    }
    return r;
}

Vector velocity_change(const GridGeometry& g, const FlowState& s, const Field3& pp, Cell c) {
    Vector change{0, 0, 0};
    for (const Face face : {Face::east, Face::north, Face::top}) {
        const Gradients d = gradients(s, face);
        const double drop = own_drop(g, pp, c, face);
        change = change + drop * Vector{at(d.U, c), at(d.V, c), at(d.W, c)};
    }
    return change;
}

double flux_change(const GridGeometry& g, const FlowState& s, const Field3& pp, Cell c, Face face) {
    return coefficient(g, s, c, face) * (at(pp, c) - at(pp, next(c, face)));
}

double extra_flux(const GridGeometry& g, const FlowState& s, const Field3& pp, Cell c, Face face) {
    const Vector area = twice_area(g, c, face);
    const Vector e = (1 / std::sqrt(scalar(area, area))) * area;
    const auto [r1, r2, r3, r4] = corners(g, c, face);
    const Vector r_f = 0.25 * (r1 + r2 + r3 + r4);
    const auto rise_to_foot = [&](Cell cell) {
        const Vector r = centre(g, cell);
        const Vector foot = r_f + scalar(r - r_f, e) * e;
        return scalar(gradient(g, pp, cell), foot - r);
    };
    return coefficient(g, s, c, face) * (rise_to_foot(c) - rise_to_foot(next(c, face)));
}

}  // namespace torvex::plain
