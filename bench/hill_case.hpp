#pragma once

#include <filesystem>
#include <string>

namespace torvex::bench {

// A Gaussian hill on level ground, 100 m high, half of that at a radius of 250 m, in a domain of
// 5 x 4 x 1.5 km with a first cell of 5 m and a roughness of 0.03 m, wind from the west.
struct HillCase {
    double min_dxy = 20;  // spacing within 500 m of the top; four times that far away [m]
    int turbulence_model = 1;
    int max_iterations = 1000;
    std::string solver_keys = {};  // more keys of NML_NUMERICAL_SOLVER
};

inline constexpr double hill_height = 100;
inline constexpr double hill_half_width = 250;

// Finest spacing that gives about that many cells.
double spacing_for(double cells);

// Writes case and maps into a directory; returns the path of the case file.
std::string write_hill_case(const HillCase& hill, const std::filesystem::path& directory);

}  // namespace torvex::bench
