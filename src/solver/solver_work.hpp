#pragma once

#include <array>

#include "base/field.hpp"
#include "solver/momentum_work.hpp"
#include "solver/system_rows.hpp"
#include "solver/turbulence/transport_scratch.hpp"

namespace torvex {

// Stored corrections that RCM combines.
inline constexpr int stored_corrections = 4;

// Work arrays of RCM and SIP, cell-sized, allocated once per wind direction, and the scratch of the
// momentum and turbulence equations, which they make themselves.
struct SolverWork {
    Field3 rhs;                                         // right side of SIP, residual of RCM
    Field3 lb, lw, ls, lpr, un, ue, ut;                 // factors of SIP
    Matrix matrix = Matrix::general;                    // what SIP found when it made the factors
    Field3 w;                                           // SIP's residual, then its correction
    std::array<Field3, stored_corrections> correction;  // of RCM, the newest first
    std::array<Field3, stored_corrections> image;       // the matrix times each correction
    MomentumWork momentum;
    TransportScratch transport;

    void allocate(int ni, int nj, int nk) {
        for (Field3* field : {&rhs, &lb, &lw, &ls, &lpr, &un, &ue, &ut, &w}) {
            field->allocate(ni, nj, nk);
        }
        for (Field3& field : correction) {
            field.allocate(ni, nj, nk);
        }
        for (Field3& field : image) {
            field.allocate(ni, nj, nk);
        }
    }
};

}  // namespace torvex
