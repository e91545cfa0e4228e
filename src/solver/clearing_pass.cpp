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
#include "solver/flow_fields.hpp"

namespace torvex {

void clearing_pass(const CaseSettings& settings, FlowState& s) {
    require(s.den.size() > 0 && s.eq.su.size() == s.den.size(), "the arrays come before the pass");
    for (const FlowField& field : flow_fields) {
        if (field.kept == Kept::no) {
            (s.*field.member).fill(0.0F);
        }
    }
    s.den.fill(settings.DENSIT);
    for (const auto field : system_fields) {
        (s.eq.*field).fill(0.0F);
    }
    s.eq.su.fill(0.0);
    s.eq.sp.fill(0.0);
}

}  // namespace torvex
