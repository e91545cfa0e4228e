#include "run/check_fields.hpp"

#include <cmath>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

void check_coordinate(const Field3& x, const char* name, const std::string& file, int code) {
    for (int k = 1; k <= x.nk(); ++k) {
        for (int j = 1; j <= x.nj(); ++j) {
            for (int i = 1; i <= x.ni(); ++i) {
                if (!std::isfinite(x(i, j, k))) {
                    stop(code,
                         "node (" + std::to_string(i) + ", " + std::to_string(j) + ", " +
                             std::to_string(k) + "): " + name + " is no finite number",
                         file, "start the direction afresh with RESTART_FLAG = 0");
                }
            }
        }
    }
}

// All columns but `margin` of them along the edge.
std::optional<std::string> fault_of_columns(const Field2& z0, int margin) {
    for (int j = 1 + margin; j <= z0.nj() - margin; ++j) {
        for (int i = 1 + margin; i <= z0.ni() - margin; ++i) {
            if (!(z0(i, j) > 0.0F) || !std::isfinite(z0(i, j))) {
                return "cell (" + std::to_string(i) + ", " + std::to_string(j) +
                       "): the roughness length is " +
                       std::string(trimmed(edit::E(z0(i, j), 12, 4))) +
                       " m, expected a finite value above 0";
            }
        }
    }
    return std::nullopt;
}

}  // namespace

void check_roughness(const Field2& z0, const std::string& file, int code) {
    if (const auto fault = fault_of_columns(z0, 0)) {
        stop(code, *fault, file);
    }
}

std::optional<std::string> fault_of_inner_roughness(const Field2& z0) {
    return fault_of_columns(z0, 1);
}

void check_nodes(const GridGeometry& grid, const std::string& file, int code) {
    check_coordinate(grid.xn, "x", file, code);
    check_coordinate(grid.yn, "y", file, code);
    check_coordinate(grid.zn, "z", file, code);
}

}  // namespace torvex
