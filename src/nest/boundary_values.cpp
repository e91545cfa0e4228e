// The parent's flow on the side, inflow and outflow planes of a child.
//
// A boundary cell of the child at the height h above its ground takes bilinear values of the four
// parent columns round it, each linear between the parent's levels at the height h' above that
// column's own ground (HeightMap), so that a child whose ground is sharper still finds the flow
// near the ground near the ground. Below the first cell centre of the parent, at h2,
//
//   u, v, w    = (u, v, w)(h2) ln((h' + z0)/z0)/ln((h2 + z0)/z0)     z0 of the child
//   ted        = ted(h2) h2/h'      lm = lm(h2) h'/h2                the rest as at h2
//
// which are the laws of the layer in equilibrium above a rough wall. Levels of the child:
//
//   k = 1      u = v = w = 0, the rest copies k = 2 (p too)
//   k = nk     w = 0: nothing passes the top
//   vis        = CMU DENSIT tke^2/(ted + TINY) + VISCOS, k >= 2

#include "nest/boundary_values.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "base/assertion.hpp"
#include "nest/parent_column.hpp"
#include "results/mesh_column.hpp"
#include "solver/constants.hpp"

namespace torvex {

namespace {

// What becomes of a quantity below the first cell centre of the parent.
enum class NearGround { logarithmic, constant, inverse, proportional };

struct CarriedField {
    const Field3& from;
    Field3& to;
    NearGround law;
};

float wall_factor(NearGround law, const ColumnLevel& at, float z0) {
    switch (law) {
        case NearGround::logarithmic:
            return std::log((at.h + z0) / z0) / std::log((at.h_first + z0) / z0);
        case NearGround::inverse:
            return at.h_first / at.h;
        case NearGround::proportional:
            return at.h / at.h_first;
        case NearGround::constant:
            break;
    }
    return 1.0F;
}

// The four parent columns round a boundary column of the child, (i,j), (i+1,j), (i+1,j+1), (i,j+1).
struct Columns {
    ColumnPlace place;
    std::array<std::array<int, 2>, 4> ij;
    std::array<HeightMap, 4> heights;
};

Columns columns_round(const NestPass& pass, const GridGeometry& parent, int i, int j) {
    const GridGeometry& child = pass.grid;
    Columns c;
    c.place = column_place({.x = child.xc(i, j, 1), .y = child.yc(i, j, 1)}, parent);
    require(c.place.inside(), "a boundary cell of the child outside the parent");
    const int ip = c.place.x.i;
    const int jp = c.place.y.i;
    c.ij = {{{ip, jp}, {ip + 1, jp}, {ip + 1, jp + 1}, {ip, jp + 1}}};
    const float Hchild = column_height(child, i, j);
    for (std::size_t n = 0; n < 4; ++n) {
        c.heights.at(n) = height_map(pass.settings.CONSTANT_DZ_HEIGHT,
                                     column_height(parent, c.ij.at(n)[0], c.ij.at(n)[1]), Hchild);
    }
    return c;
}

std::array<ColumnLevel, 4> levels_at(const GridGeometry& parent, const Columns& c, float h) {
    std::array<ColumnLevel, 4> levels;
    for (std::size_t n = 0; n < 4; ++n) {
        const auto [ip, jp] = c.ij.at(n);
        levels.at(n) = level_at(parent, ip, jp, c.heights.at(n)(h));
    }
    return levels;
}

float carried(const CarriedField& field, const Columns& c, const std::array<ColumnLevel, 4>& levels,
              float z0) {
    std::array<float, 4> q{};
    for (std::size_t n = 0; n < 4; ++n) {
        const auto [ip, jp] = c.ij.at(n);
        const ColumnLevel& at = levels.at(n);
        q.at(n) = value_at(field.from, ip, jp, at);
        if (at.below_first()) {
            q.at(n) *= wall_factor(field.law, at, z0);
        }
    }
    return bilinear(c.place.x.w, c.place.y.w, q[0], q[1], q[2], q[3]);
}

void finish_column(const CaseSettings& settings, int i, int j, FlowState& s) {
    const int nk = s.u.nk();
    for (Field3* q : {&s.u, &s.v, &s.w}) {
        (*q)(i, j, 1) = 0.0F;
    }
    s.w(i, j, nk) = 0.0F;
    for (int k = 2; k <= nk; ++k) {
        float& tke = s.tke(i, j, k);
        tke = std::max(tke, TINY);
        s.vis(i, j, k) = settings.CMU * settings.DENSIT * (tke * tke) / (s.ted(i, j, k) + TINY) +
                         settings.VISCOS;
    }
    for (Field3* q : {&s.tke, &s.ted, &s.p}) {
        (*q)(i, j, 1) = (*q)(i, j, 2);
    }
    for (int k = 1; k <= nk; ++k) {
        s.pp(i, j, k) = 0.0F;
    }
}

}  // namespace

void set_boundary_values(const NestPass& pass, const Parent& parent, FlowState& s) {
    std::vector<CarriedField> fields{{parent.flow.u, s.u, NearGround::logarithmic},
                                     {parent.flow.v, s.v, NearGround::logarithmic},
                                     {parent.flow.w, s.w, NearGround::logarithmic},
                                     {parent.flow.p, s.p, NearGround::constant},
                                     {parent.flow.tke, s.tke, NearGround::constant},
                                     {parent.flow.ted, s.ted, NearGround::inverse}};
    std::vector<Field3*> lengths;
    const auto carry_length = [&](const Field3& from, Field3& to, NearGround law) {
        if (from.size() > 0 && to.size() > 0) {
            fields.push_back({from, to, law});
            lengths.push_back(&to);
        }
    };
    carry_length(parent.flow.lm, s.lm, NearGround::proportional);
    carry_length(parent.flow.tkl, s.tkl, NearGround::constant);
    carry_length(parent.flow.viskl, s.viskl, NearGround::constant);

    const GridGeometry& g = pass.grid;
    for (int j = 1; j <= g.nj; ++j) {
        const bool side = j == 1 || j == g.nj;
        for (int i = 1; i <= g.ni; i += side ? 1 : g.ni - 1) {
            const Columns c = columns_round(pass, parent.grid, i, j);
            for (int k = 2; k <= g.nk; ++k) {
                const float h = g.zc(i, j, k) - g.zc(i, j, 1);
                const std::array<ColumnLevel, 4> levels = levels_at(parent.grid, c, h);
                for (const CarriedField& field : fields) {
                    field.to(i, j, k) = carried(field, c, levels, s.z0(i, j));
                }
            }
            finish_column(pass.settings, i, j, s);
            for (Field3* length : lengths) {
                (*length)(i, j, 1) = (*length)(i, j, 2);
            }
        }
    }
}

}  // namespace torvex
