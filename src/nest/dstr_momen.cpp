// dstrMomen: the momentum of the parent's faces on the inflow plane of the child.
//
// The plane i = 1 lies on the node plane I of the parent, between its cells I and I+1. A parent
// face there covers the child faces whose centre lies in its interval of y and whose height h',
// which h of the child stands for (HeightMap of the face's own column), lies in its layer. With q_p
// the parent's value on the face, from the cells on either side,
//
//   q_p = (1 - fx) q(I) + fx q(I+1)
//
// and A the area of a child face across the wind, half the x part of the cross product of its
// diagonals:
//
//   nest_bc_distr = 0   u, v, w = q_p on every child face
//   otherwise           u = s u,  s = u_p sum(A)/sum(u A), held within 0.5 .. 2; 1 where
//                                 |sum(u A)| < 1e-6 sum(A)
//                       v = v + v_p - sum(v A)/sum(A), w alike, since these cross zero
//
// so that the child keeps the shape of the interpolated flow and the momentum of the parent's face.
// The parent's own area stays out: levels of the child need not tile the parent's layers.
//
// reads   the parent's u, v, w, fx, nodes; xn..zn, zc of the child
// writes  u, v, w on i = 1, j = 2..ny, k = 2..nz
// Sums run in double precision, j outer and k inner.

#include "nest/dstr_momen.hpp"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "base/assertion.hpp"
#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "nest/parent_column.hpp"
#include "results/bracket.hpp"
#include "solver/face_area.hpp"

namespace torvex {

namespace {

struct ChildFace {
    int j = 0;
    int k = 0;
    double A = 0;  // across the wind [m2]
};
using Covered = std::vector<ChildFace>;

ChildFace child_face(const GridGeometry& g, int j, int k) {
    const auto A = static_cast<double>(east_area(g, 1, j, k).x);
    if (!(A > 0.0)) {
        const std::string text = "[dstrMomen] ERROR: Divide by Zero.";
        console(text);
        stop(1, text,
             "inflow face (1, " + std::to_string(j) + ", " + std::to_string(k) + ") of the child",
             "check MIN_DZ and the divisions of the block nest_points");
    }
    return {j, k, A};
}

// Heights of the layer borders of the parent's faces in row jp on node plane I, ground at 0.
Line1 layer_borders(const GridGeometry& p, int I, int jp) {
    const auto height = [&](int k) { return 0.5F * (p.zn(I, jp - 1, k) + p.zn(I, jp, k)); };
    Line1 borders(p.nz);
    for (int k = 1; k <= p.nz; ++k) {
        borders(k) = height(k) - height(1);
    }
    return borders;
}

// For each layer kp = 2..nz of the parent the child faces of row j that it covers. What rounding
// puts above the top belongs to the uppermost layer.
void add_row(const NestPass& pass, const Line1& borders, int j, std::vector<Covered>& layers) {
    const GridGeometry& g = pass.grid;
    const int n = borders.size();
    const HeightMap heights =
        height_map(pass.settings.CONSTANT_DZ_HEIGHT, borders(n), column_height(g, 1, j));
    for (int k = 2; k <= g.nz; ++k) {
        const float h = heights(g.zc(1, j, k) - g.zc(1, j, 1));
        const int below = bracket(h, borders);
        const int kp = below < 1 ? n : std::min(below, n - 1) + 1;
        layers[static_cast<std::size_t>(kp)].push_back(child_face(g, j, k));
    }
}

struct Sums {
    double A = 0;
    double qA = 0;
};

Sums sums_over(const Covered& faces, const Field3& q) {
    Sums sums;
    for (const ChildFace& f : faces) {
        sums.A += f.A;
        sums.qA += static_cast<double>(q(1, f.j, f.k)) * f.A;
    }
    return sums;
}

void scale(const Covered& faces, double u_p, Field3& u) {
    constexpr double still = 1.0e-6;  // mean speed that counts as none [m/s]
    const Sums sums = sums_over(faces, u);
    if (std::fabs(sums.qA) < still * sums.A) {
        return;
    }
    const double s = std::clamp(u_p * sums.A / sums.qA, 0.5, 2.0);
    for (const ChildFace& f : faces) {
        u(1, f.j, f.k) = static_cast<float>(s * static_cast<double>(u(1, f.j, f.k)));
    }
}

void shift(const Covered& faces, double q_p, Field3& q) {
    const Sums sums = sums_over(faces, q);
    const double change = q_p - sums.qA / sums.A;
    for (const ChildFace& f : faces) {
        q(1, f.j, f.k) = static_cast<float>(static_cast<double>(q(1, f.j, f.k)) + change);
    }
}

void assign(const Covered& faces, float q_p, Field3& q) {
    for (const ChildFace& f : faces) {
        q(1, f.j, f.k) = q_p;
    }
}

void spread(int nest_bc_distr, const Covered& faces, const Parent& parent, int I, int jp, int kp,
            FlowState& s) {
    if (faces.empty()) {
        return;
    }
    const float fx = parent.grid.fx(I, jp, kp);
    const auto on_face = [&](const Field3& q) {
        return (1.0F - fx) * q(I, jp, kp) + fx * q(I + 1, jp, kp);
    };
    if (nest_bc_distr == 0) {
        assign(faces, on_face(parent.flow.u), s.u);
        assign(faces, on_face(parent.flow.v), s.v);
        assign(faces, on_face(parent.flow.w), s.w);
    } else {
        scale(faces, static_cast<double>(on_face(parent.flow.u)), s.u);
        shift(faces, static_cast<double>(on_face(parent.flow.v)), s.v);
        shift(faces, static_cast<double>(on_face(parent.flow.w)), s.w);
    }
}

// The node plane of the parent that the child's inflow plane lies on.
int parent_plane(const ParentLines& lines, float x) {
    const int I = bracket(x, lines.x_line);
    require(I >= 1, "the inflow plane of the child outside the parent");
    return I;
}

}  // namespace

void dstrMomen(const NestPass& pass, const Parent& parent, FlowState& s) {
    const GridGeometry& g = pass.grid;
    const GridGeometry& p = parent.grid;
    const int I = parent_plane(pass.lines, g.xn(1, 1, 1));
    int j = 2;
    for (int jp = 2; jp <= p.ny; ++jp) {
        const Line1 borders = layer_borders(p, I, jp);
        std::vector<Covered> layers(static_cast<std::size_t>(p.nz) + 1);
        while (j <= g.ny && g.yc(1, j, 1) < pass.lines.y_line(jp)) {
            if (g.yc(1, j, 1) >= pass.lines.y_line(jp - 1)) {
                add_row(pass, borders, j, layers);
            }
            ++j;
        }
        for (int kp = 2; kp <= p.nz; ++kp) {
            spread(pass.settings.nest.nest_bc_distr, layers[static_cast<std::size_t>(kp)], parent,
                   I, jp, kp, s);
        }
    }
}

}  // namespace torvex
