// The passes of the conjugate gradients over the finest mesh of the multigrid solver.
//
//   (A z)_P = sum over the six faces of a (z_P - z_N)
//
// Sums over a row are built lane by lane in single precision and added up in double precision,
// always in the same order.

#include "solver/multigrid_products.hpp"

#include "solver/lane_sum.hpp"

namespace torvex {

namespace {

// action(first float of row (j,k) of every field..) for the rows k = 1..nk, and the sum of what it
// returns.
template <class OfRow>
double sum_of_rows(const MultigridLevel& level, const OfRow& of_row) {
    double sum = 0;
    for (int k = 1; k <= level.nk; ++k) {
        sum += static_cast<double>(of_row(k));
    }
    return sum;
}

template <bool with_q>
Products multiply_slab(const MultigridLevel& level, int j, const Field3& q, Field3& w) {
    Products sums;
    const int pitch = level.pitch;
    for (int k = 1; k <= level.nk; ++k) {
        const float* ae = line_row(level.ae, j, k);
        const float* an = line_row(level.an, j, k);
        const float* as = line_row(level.an, j - 1, k);
        const float* at = line_row(level.at, j, k);
        const float* ab = at - pitch;
        const float* z = line_row(level.z, j, k);
        const float* north = line_row(level.z, j + 1, k);
        const float* south = line_row(level.z, j - 1, k);
        const float* top = z + pitch;
        const float* bottom = z - pitch;
        const float* r = line_row(level.r, j, k);
        const float* old = line_row(q, j, k);
        float* product = line_row(w, j, k);
        Block zr{};
        Block zw{};
        Block zq{};
        for (int m = 0; m < pitch; m += block_cells) {
            const Block c = load<Block>(z + m);
            const Block sum = load<Block>(ae + m) * (c - load<Block>(z + m + 1)) +
                              load<Block>(ae + m - 1) * (c - load<Block>(z + m - 1)) +
                              load<Block>(an + m) * (c - load<Block>(north + m)) +
                              load<Block>(as + m) * (c - load<Block>(south + m)) +
                              load<Block>(at + m) * (c - load<Block>(top + m)) +
                              load<Block>(ab + m) * (c - load<Block>(bottom + m));
            store(product + m, sum);
            zr += c * load<Block>(r + m);
            zw += c * sum;
            if constexpr (with_q) {
                zq += c * load<Block>(old + m);
            }
        }
        const auto total = [](Block lanes) {
            LaneSum sum;
            sum.add(lanes, 0);
            return static_cast<double>(sum.total());
        };
        sums.zr += total(zr);
        sums.zw += total(zw);
        sums.zq += total(zq);
    }
    return sums;
}

}  // namespace

Products multiply(const MultigridLevel& level, int j, const Field3* q, Field3& w) {
    return q == nullptr ? multiply_slab<false>(level, j, w, w)
                        : multiply_slab<true>(level, j, *q, w);
}

double take_step(const MultigridLevel& level, int j, const Step& step, const Directions& d) {
    return sum_of_rows(level, [&](int k) {
        const float* z = line_row(d.z, j, k);
        const float* w = line_row(d.w, j, k);
        float* p = line_row(d.p, j, k);
        float* q = line_row(d.q, j, k);
        float* x = line_row(d.x, j, k);
        float* r = line_row(d.r, j, k);
        const auto [number, last, alpha, beta] = step;
        LaneSum sum;
        for (int m = 0; m < level.pitch; m += block_cells) {
            const Block before = load<Block>(p + m);
            const Block gain = last * before;
            store(x + m, number == 2 ? gain : load<Block>(x + m) + gain);
            store(p + m, load<Block>(z + m) + beta * before);
            const Block product = load<Block>(w + m) + beta * load<Block>(q + m);
            store(q + m, product);
            const Block rest = load<Block>(r + m) - alpha * product;
            store(r + m, rest);
            sum.add(magnitude(rest), m);
        }
        return sum.total();
    });
}

double take_first_step(const MultigridLevel& level, int j, float alpha, const Field3& q,
                       Field3& r) {
    return sum_of_rows(level, [&](int k) {
        const float* product = line_row(q, j, k);
        float* rest = line_row(r, j, k);
        LaneSum sum;
        for (int m = 0; m < level.pitch; m += block_cells) {
            const Block now = load<Block>(rest + m) - alpha * load<Block>(product + m);
            store(rest + m, now);
            sum.add(magnitude(now), m);
        }
        return sum.total();
    });
}

double take_off(const MultigridLevel& level, int j, float mean, Field3& r) {
    return sum_of_rows(level, [&](int k) {
        float* rest = line_row(r, j, k);
        LaneSum sum;
        rising_cells(level.ni, [&]<class V>(V, int m) {
            const V now = load<V>(rest + m) - mean;
            store(rest + m, now);
            sum.add(magnitude(now), m);
        });
        return sum.total();
    });
}

}  // namespace torvex
