#pragma once

#include <string>

#include "run/whole_case.hpp"

namespace torvex::test {

// A level-ground case of 10 km with the equilibrium layer, coarse along the wind and narrow.
struct LevelGround {
    double z0 = 0.03;       // roughness length [m]
    double first_cell = 5;  // height of the first layer [m]
    double ratio = 1.2;     // growth of the layers
    int model = 1;
    bool accelerated = false;
};

void PrintTo(const LevelGround& ground, std::ostream* out);
CaseItems case_of(const LevelGround& ground);

// What 10 km of level ground do to the layer, against its inflow: the wind within 1 % at 10, 50,
// 100 and 200 m and within 2 % in the ground cell, tke within 5 %, and the cells 2 to 5 within 1.5
// % of the log law of the ground cell's friction velocity.
void expect_level(const Solution& s, const LevelGround& ground);

}  // namespace torvex::test
