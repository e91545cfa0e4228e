// The clearing pass at the head of the outer iteration.
//
// reads   DENSIT
// writes  den = DENSIT, and 0 in the linear system, gen, dUxi..dWze, coefXi, coefEt, coefZe; all
//         cells, boundary included
//
// The fields (u .. vis, the fluxes, the k-l arrays) are left alone: a resumed direction has them
// from its files.

#include "solver/clearing_pass.hpp"

#include "base/assertion.hpp"

namespace torvex {

void clearing_pass(const CaseSettings& settings, FlowState& s) {
    require(s.den.size() > 0 && s.eq.su.size() == s.den.size(), "the arrays come before the pass");
    s.den.fill(settings.DENSIT);

    LinearSystem& eq = s.eq;
    for (Field3* field : {&eq.ae, &eq.aw, &eq.an, &eq.as, &eq.at, &eq.ab, &eq.ap, &eq.res}) {
        field->fill(0.0F);
    }
    eq.su.fill(0.0);
    eq.sp.fill(0.0);
    for (Field3* field : {&s.gen, &s.dUxi, &s.dUet, &s.dUze, &s.dVxi, &s.dVet, &s.dVze, &s.dWxi,
                          &s.dWet, &s.dWze, &s.coefXi, &s.coefEt, &s.coefZe}) {
        field->fill(0.0F);
    }
}

}  // namespace torvex
