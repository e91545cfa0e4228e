// SIP: Stone's strongly implicit procedure for the seven-point system, here the inner solver of the
// pressure correction.
//
// reads   ae..ab, ap, rhs; phi beside the range
// writes  phi in the range
// order   factors and forward pass for k, j, i rising, backward pass for k, j, i falling
// ref     Stone (1968)

#include "solver/sip.hpp"

#include "solver/seven_point.hpp"

namespace torvex {

void SipWork::fit(int ni, int nj, int nk) {
    if (w.ni() == ni && w.nj() == nj && w.nk() == nk) {
        return;
    }
    for (Field3* field : {&lb, &lw, &ls, &lpr, &un, &ue, &ut, &w}) {
        field->allocate(ni, nj, nk);
    }
}

void sip_factors(const CellRange& range, const LinearSystem& eq, float alpha, SipWork& work) {
    work.fit(eq.ap.ni(), eq.ap.nj(), eq.ap.nk());
    auto& [lb, lw, ls, lpr, un, ue, ut, w] = work;
    for (int k = range.k1; k <= range.k2; ++k) {
        for (int j = range.j1; j <= range.j2; ++j) {
            for (int i = range.i1; i <= range.i2; ++i) {
                const bool west = i > range.i1;
                const bool south = j > range.j1;
                const bool below = k > range.k1;
                const float un_b = below ? un(i, j, k - 1) : 0.0F;
                const float ue_b = below ? ue(i, j, k - 1) : 0.0F;
                const float ut_b = below ? ut(i, j, k - 1) : 0.0F;
                const float un_w = west ? un(i - 1, j, k) : 0.0F;
                const float ue_w = west ? ue(i - 1, j, k) : 0.0F;
                const float ut_w = west ? ut(i - 1, j, k) : 0.0F;
                const float un_s = south ? un(i, j - 1, k) : 0.0F;
                const float ue_s = south ? ue(i, j - 1, k) : 0.0F;
                const float ut_s = south ? ut(i, j - 1, k) : 0.0F;
                const float b = -eq.ab(i, j, k) / (1.0F + alpha * (un_b + ue_b));
                const float a = -eq.aw(i, j, k) / (1.0F + alpha * (un_w + ut_w));
                const float s = -eq.as(i, j, k) / (1.0F + alpha * (ue_s + ut_s));
                const float P1 = b * un_b + a * un_w;
                const float P2 = b * ue_b + s * ue_s;
                const float P3 = a * ut_w + s * ut_s;
                const float pivot = 1.0F / (eq.ap(i, j, k) + alpha * (P1 + P2 + P3) - b * ut_b -
                                            a * ue_w - s * un_s);
                lb(i, j, k) = b;
                lw(i, j, k) = a;
                ls(i, j, k) = s;
                lpr(i, j, k) = pivot;
                un(i, j, k) = (-eq.an(i, j, k) - alpha * P1) * pivot;
                ue(i, j, k) = (-eq.ae(i, j, k) - alpha * P2) * pivot;
                ut(i, j, k) = (-eq.at(i, j, k) - alpha * P3) * pivot;
            }
        }
    }
}

void SIP(const CellRange& range, const LinearSystem& eq, const Field3& rhs, Field3& phi, int nsweep,
         SipWork& work) {
    const auto& [lb, lw, ls, lpr, un, ue, ut, unused] = work;
    Field3& w = work.w;
    for (int sweep = 0; sweep < nsweep; ++sweep) {
        for (int k = range.k1; k <= range.k2; ++k) {
            for (int j = range.j1; j <= range.j2; ++j) {
                for (int i = range.i1; i <= range.i2; ++i) {
                    const float w_b = k > range.k1 ? w(i, j, k - 1) : 0.0F;
                    const float w_s = j > range.j1 ? w(i, j - 1, k) : 0.0F;
                    const float w_w = i > range.i1 ? w(i - 1, j, k) : 0.0F;
                    const float r = seven_point(eq, phi, i, j, k) + rhs(i, j, k);
                    w(i, j, k) = (r - lb(i, j, k) * w_b - lw(i, j, k) * w_w - ls(i, j, k) * w_s) *
                                 lpr(i, j, k);
                }
            }
        }
        for (int k = range.k2; k >= range.k1; --k) {
            for (int j = range.j2; j >= range.j1; --j) {
                for (int i = range.i2; i >= range.i1; --i) {
                    const float w_n = j < range.j2 ? w(i, j + 1, k) : 0.0F;
                    const float w_e = i < range.i2 ? w(i + 1, j, k) : 0.0F;
                    const float w_t = k < range.k2 ? w(i, j, k + 1) : 0.0F;
                    w(i, j, k) += -un(i, j, k) * w_n - ue(i, j, k) * w_e - ut(i, j, k) * w_t;
                    phi(i, j, k) += w(i, j, k);
                }
            }
        }
    }
}

}  // namespace torvex
