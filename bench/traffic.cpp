#include "traffic.hpp"

#include <algorithm>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>

namespace torvex::bench {

namespace {

constexpr int most_sweeps = 10;        // NSWPU..NSWPE and NSWPP of the case
constexpr double sweep_bytes = 48;     // coefficients 28, su 8, phi 8, res 4
constexpr double residual_bytes = 48;  // coefficients 28, su 8, sp 8, phi 4

// The number behind "n=", as the sweeps done: a loop that ran out tells one more.
int sweeps_of(const std::string& line) {
    const std::size_t at = line.find("n=");
    return std::min(std::stoi(line.substr(at + 2)), most_sweeps);
}

// Assembly and preparation of an equation, its sweeps, the residual behind the last one.
double equation(double assembly, int sweeps) {
    return assembly + sweep_bytes * sweeps + residual_bytes;
}

// Faces 100, equation 88, one sweep, velocity and flux correction 120, first residual 44, factors
// 56; then the cycles: SIP, image and products, combination, residual.
double pressure(int cycles) {
    constexpr double matrix = 16;  // ae, an, at, ap: it is symmetric
    constexpr double later_sweep = matrix + 4 + 28 + 8 + 8;
    constexpr double first_sweep = later_sweep - matrix - 4;  // phi is 0 before it
    double bytes = 100 + 88 + sweep_bytes + 120 + 44 + 56;
    for (int cycle = 1; cycle <= cycles; ++cycle) {
        const int stored = std::min(4, cycle);
        bytes += first_sweep + 6 * later_sweep;
        bytes += matrix + 8 + 4 * stored;
        bytes += 8 + 4 * stored;
        bytes += matrix + 16;
    }
    return bytes;
}

}  // namespace

std::array<double, routines> compulsory_bytes(const std::filesystem::path& convergence_log,
                                              int behind) {
    constexpr std::array<std::pair<std::string_view, Routine>, 6> labels{
        {{" u: n=", Routine::CALCU},
         {" v: n=", Routine::CALCV},
         {" w: n=", Routine::CALCW},
         {" p: n=", Routine::CALCP},
         {" k: n=", Routine::CALCKE},
         {" e: n=", Routine::CALCED}}};
    constexpr std::array<double, 6> assembly{208, 184, 184, 0, 196, 180};
    constexpr double viscosity = 20;

    std::array<double, routines> bytes{};
    std::ifstream log(convergence_log);
    int iteration = 0;
    for (std::string line; std::getline(log, line);) {
        for (std::size_t n = 0; n < labels.size(); ++n) {
            const auto& [label, routine] = labels.at(n);
            if (line.find(label) == std::string::npos) {
                continue;
            }
            iteration += n == 0 ? 1 : 0;
            if (iteration > behind) {
                bytes.at(static_cast<std::size_t>(routine)) +=
                    routine == Routine::CALCP ? pressure(sweeps_of(line))
                                              : equation(assembly.at(n), sweeps_of(line));
            }
        }
    }
    bytes.at(static_cast<std::size_t>(Routine::CALCVIS)) = viscosity * (iteration - behind);
    return bytes;
}

}  // namespace torvex::bench
