#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

// Factors and work residual of SIP, all ni*nj*nk.
struct SipWork {
    Field3 lb, lw, ls, lpr, un, ue, ut;
    Field3 w;

    void fit(int ni, int nj, int nk);
};

// The incomplete factors of the matrix; neighbours outside the range count as zero.
void sip_factors(const CellRange& range, const LinearSystem& eq, float alpha, SipWork& work);

// Sweeps of Stone's strongly implicit procedure on A phi = rhs, from the phi given.
void SIP(const CellRange& range, const LinearSystem& eq, const Field3& rhs, Field3& phi, int nsweep,
         SipWork& work);

}  // namespace torvex
