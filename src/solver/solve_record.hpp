#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace torvex {

// What the solution of one linear system came to.
struct SolveRecord {
    int n = 1;     // the sweep or cycle that met the stop ratio; one more than allowed if none did
    float r0 = 0;  // residual sum that the stop test compares with
    float r1 = 0;  // residual sum behind the last sweep or cycle, 0 if none was made
    float a = 0;   // r1/r0, 0 likewise
};

// The solutions that one routine made, in their order.
using SolveRecords = std::vector<SolveRecord>;

// "   u: n=  3, ru0= ..., ru1= ..., a= ..." of the label "   u"; the letter of the residual sums is
// the first of the label.
std::string solve_line(std::string_view label, const SolveRecord& record);

}  // namespace torvex
