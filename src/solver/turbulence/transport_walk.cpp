// The walk of the turbulence assembly through its planes.
//
// Node values of phi come from the three-stage interpolation: along i at the faces of each of the
// four rows around the node, along j in the two planes, along k between them. `level` holds the
// second stage in the plane last reached, `node` the third on its bottom. The faces of a plane need
// the nodes on its bottom and top as their sum and difference only; a face between two planes needs
// those of its two node rows.
//
// plain   tests/solver/reference/plain_turbulence

#include "solver/turbulence/transport_walk.hpp"

#include <utility>

#include "base/field.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/interpolation.hpp"

namespace torvex {

namespace {

FaceSide shifted(const FaceSide& x) {
    return {.vis = x.vis.shifted(1),
            .vol = x.vol.shifted(1),
            .den = x.den.shifted(1),
            .own = x.own.shifted(1),
            .first = x.first.shifted(1),
            .second = x.second.shifted(1)};
}

}  // namespace

TransportWalk::TransportWalk(const GridGeometry& g, FlowState& s, const Field3& phi, float sigma,
                             PlaneScratch& scratch, const LogFaces* log_faces, LogFlux flux)
    : g_(g),
      s_(s),
      phi_(phi),
      over_sigma_(1.0F / sigma),
      log_faces_(log_faces),
      flux_(flux),
      scratch_(scratch),
      phi_low_(named(PlaneScratch::phi_low)),
      phi_high_(named(PlaneScratch::phi_high)),
      sum_low_(named(PlaneScratch::sum_low)),
      sum_high_(named(PlaneScratch::sum_high)),
      difference_low_(named(PlaneScratch::difference_low)),
      difference_high_(named(PlaneScratch::difference_high)),
      cross_south_(named(PlaneScratch::cross_south)),
      cross_north_(named(PlaneScratch::cross_north)),
      products_low_(products(PlaneScratch::products_low)),
      products_high_(products(PlaneScratch::products_high)),
      products_top_(products(PlaneScratch::products_top)) {}

Row<float> TransportWalk::named(int name) {
    return row(scratch_.rows, name + 1);
}

ProductRows TransportWalk::products(int name) {
    return {.xi_xi = named(name),
            .et_et = named(name + 1),
            .ze_ze = named(name + 2),
            .xi_et = named(name + 3),
            .xi_ze = named(name + 4),
            .et_ze = named(name + 5)};
}

FaceSide TransportWalk::side(int j, int k, Row<float> own, Row<float> first,
                             Row<float> second) const {
    return {.vis = row(std::as_const(s_.vis), j, k),
            .vol = row(g_.vol, j, k),
            .den = row(std::as_const(s_.den), j, k),
            .own = own,
            .first = first,
            .second = second};
}

// On log faces both sides have the viscosity of the face.
void TransportWalk::take_log_law(Axis axis, int j, int k, TransportFaces& faces) {
    const auto vis = named(PlaneScratch::log_viscosity);
    if (log_faces_ != nullptr && log_face_viscosity(*log_faces_, g_, s_, flux_, axis, j, k, vis)) {
        faces.low.vis = vis;
        faces.high.vis = vis;
    }
}

// Makes phi_low_ row 1 of the plane above plane k.
void TransportWalk::first_node_row(int k) {
    to_i_faces(g_, phi_, 1, k + 1, phi_low_);
}

// Nodes of row j on top of plane k. Rows come in rising order.
void TransportWalk::next_node_row(int j, int k) {
    std::swap(sum_low_, sum_high_);
    std::swap(difference_low_, difference_high_);
    to_i_faces(g_, phi_, j + 1, k + 1, phi_high_);
    const auto fy = row(g_.fy, j, k + 1);
    const auto fz = row(g_.fz, j, k);
    const auto level = row(scratch_.level, j);
    const auto node = row(scratch_.node, j);
    const auto phi_low = phi_low_;
    const auto phi_high = phi_high_;
    const auto sum = sum_high_;
    const auto difference = difference_high_;
#pragma omp simd
    for (int i = 1; i <= g_.nx; ++i) {
        const float above = between(phi_low[i], phi_high[i], fy[i]);
        const float top = between(level[i], above, fz[i]);
        const float bottom = node[i];
        level[i] = above;
        node[i] = top;
        sum[i] = top + bottom;
        difference[i] = top - bottom;
    }
    std::swap(phi_low_, phi_high_);
}

// Faces between the rows j and j + 1. Nodes i - 1 and i lie at the ends of face i.
void TransportWalk::north_faces(int j, int k) {
    std::swap(cross_south_, cross_north_);
    const auto& low = products_low_;
    const auto& high = products_high_;
    TransportFaces faces{.factor = row(g_.fy, j, k),
                         .low = side(j, k, low.et_et, low.xi_et, low.et_ze),
                         .high = side(j + 1, k, high.et_et, high.xi_et, high.et_ze),
                         .flux = row(std::as_const(s_.flxV), j, k),
                         .a = sum_high_,
                         .b = sum_high_.shifted(-1),
                         .c = difference_high_,
                         .d = difference_high_.shifted(-1),
                         .to_high = row(s_.eq.an, j, k),
                         .to_low = row(s_.eq.as, j + 1, k),
                         .cross = cross_north_};
    take_log_law(Axis::j, j, k, faces);
    transport_faces(faces, over_sigma_, 2, g_.nx);
}

void TransportWalk::east_faces(int j, int k) {
    const FaceSide low = side(j, k, products_low_.xi_xi, products_low_.xi_et, products_low_.xi_ze);
    const TransportFaces faces{.factor = row(g_.fx, j, k),
                               .low = low,
                               .high = shifted(low),
                               .flux = row(std::as_const(s_.flxU), j, k),
                               .a = sum_high_,
                               .b = sum_low_,
                               .c = difference_high_,
                               .d = difference_low_,
                               .to_high = row(s_.eq.ae, j, k),
                               .to_low = row(s_.eq.aw, j, k).shifted(1),
                               .cross = named(PlaneScratch::cross_east)};
    transport_faces(faces, over_sigma_, 1, g_.nx);
}

// Faces between the planes k and k + 1. The products of the lower plane are in `low`.
void TransportWalk::top_faces(int j, int k, const ProductRows& low, Row<float> at, Row<float> ab,
                              Row<float> cross) {
    const auto north = row(std::as_const(scratch_.node), j);
    const auto south = row(std::as_const(scratch_.node), j - 1);
    const auto sum = named(PlaneScratch::node_sum);
    const auto difference = named(PlaneScratch::node_difference);
#pragma omp simd
    for (int i = 1; i <= g_.nx; ++i) {
        sum[i] = north[i] + south[i];
        difference[i] = north[i] - south[i];
    }
    zeta_products(g_, j, k + 1, products_top_);
    const auto& high = products_top_;
    TransportFaces faces{.factor = row(g_.fz, j, k),
                         .low = side(j, k, low.ze_ze, low.xi_ze, low.et_ze),
                         .high = side(j, k + 1, high.ze_ze, high.xi_ze, high.et_ze),
                         .flux = row(std::as_const(s_.flxW), j, k),
                         .a = sum,
                         .b = sum.shifted(-1),
                         .c = difference,
                         .d = difference.shifted(-1),
                         .to_high = at,
                         .to_low = ab,
                         .cross = cross};
    take_log_law(Axis::k, j, k, faces);
    transport_faces(faces, over_sigma_, 2, g_.nx);
}

void TransportWalk::start_below(int k) {
    for (int j = 1; j <= g_.ny; ++j) {
        to_i_faces(g_, phi_, j, k - 1, phi_low_);
        to_i_faces(g_, phi_, j + 1, k - 1, phi_high_);
        const auto fy = row(g_.fy, j, k - 1);
        const auto level = row(scratch_.level, j);
#pragma omp simd
        for (int i = 1; i <= g_.nx; ++i) {
            level[i] = between(phi_low_[i], phi_high_[i], fy[i]);
        }
    }
    first_node_row(k - 1);
    next_node_row(1, k - 1);
    for (int j = 2; j <= g_.ny; ++j) {
        next_node_row(j, k - 1);
        zeta_products(g_, j, k - 1, products_low_);
        top_faces(j, k - 1, products_low_, named(PlaneScratch::unused), row(s_.eq.ab, j, k),
                  row(scratch_.cross_bottom, j));
    }
}

void TransportWalk::start_plane(int k) {
    first_node_row(k);
    next_node_row(1, k);
    metric_products(g_, 1, k, products_low_);
    metric_products(g_, 2, k, products_high_);
    north_faces(1, k);
    std::swap(products_low_, products_high_);
}

Row<const float> TransportWalk::next_row(int j, int k, bool with_plane_above) {
    fetch_row(j + 2, k + 1, phi_, g_.fx, g_.fy);
    next_node_row(j, k);
    fetch_row(j + 1, k + 1, g_.fz, s_.vis, g_.vol, s_.den);
    fetch_row(j + 1, k, s_.flxU, s_.flxV, s_.flxW);
    metric_products(g_, j + 1, k, products_high_);
    north_faces(j, k);
    fetch_row(j + 1, k + 1, g_.xix, g_.xiy, g_.xiz, g_.etx, g_.ety, g_.etz, g_.zex, g_.zey, g_.zez);
    east_faces(j, k);
    fetch_row(j + 1, k, s_.eq.ae, s_.eq.aw, s_.eq.an, s_.eq.as, s_.eq.at, s_.eq.ab);
    top_faces(j, k, products_low_, row(s_.eq.at, j, k),
              with_plane_above ? row(s_.eq.ab, j, k + 1) : named(PlaneScratch::unused),
              named(PlaneScratch::cross_top));
    std::swap(products_low_, products_high_);

    const auto east = named(PlaneScratch::cross_east);
    const auto north = cross_north_;
    const auto south = cross_south_;
    const auto top = named(PlaneScratch::cross_top);
    const auto bottom = row(scratch_.cross_bottom, j);
    const auto cross = named(PlaneScratch::cross_balance);
#pragma omp simd
    for (int i = 2; i <= g_.nx; ++i) {
        cross[i] = east[i] - east[i - 1] + north[i] - south[i] + top[i] - bottom[i];
        bottom[i] = top[i];
    }
    return cross;
}

}  // namespace torvex
