#pragma once

#include <array>

#include "base/field.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

// Stored corrections that RCM combines.
inline constexpr int stored_corrections = 4;

// Work arrays of RCM and SIP, of the extents of the unknown.
struct RcmWork {
    Field3 rhs;                                         // right side of SIP, residual of RCM
    Field3 lb, lw, ls, lpr, un, ue, ut;                 // factors of SIP
    Matrix matrix = Matrix::general;                    // what SIP found when it made the factors
    Field3 w;                                           // SIP's residual, then its correction
    std::array<Field3, stored_corrections> correction;  // of RCM, the newest first
    std::array<Field3, stored_corrections> image;       // the matrix times each correction

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
