#pragma once

#include <array>

#include "base/field.hpp"
#include "solver/linear_system.hpp"
#include "solver/lsq_weights.hpp"
#include "solver/sip.hpp"

namespace torvex {

// Fields of RCM: the stored corrections and their images under the matrix, newest first.
struct RcmWork {
    std::array<Field3, stored_corrections> correction;
    std::array<Field3, stored_corrections> image;
    Field3 rhs;
    SipWork sip;

    void fit(int ni, int nj, int nk);
};

struct RcmResult {
    int n = 1;     // the cycle at which it stopped, the count plus one if it ran out
    float r1 = 0;  // last sum of |residual|
    float a = 0;   // r1 over the first sum
};

// The residual cutting method on eq for phi, at most `ncycle` cycles, until the sum of |residual|
// is below 0.1 of r0, the sum that the caller found.
RcmResult RCM(const CellRange& range, const LinearSystem& eq, Field3& phi, int ncycle, float r0,
              RcmWork& work);

}  // namespace torvex
