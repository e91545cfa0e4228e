// The tests of a mesh that was not made here. In every interior cell the nodes are finite and the
// determinant vol = a . (b x c) of the vectors between opposite face centres is above 0: the cell
// is right-handed and not turned inside out. In every column all cells lie above the ground, since
// inflow and mixing length are functions of that height. The plane i = 1 takes in a wind along +x.
//
// reads   xn, yn, zn, zc, vol, xix
// order   cells are walked k, j, i; the first bad one is told

#include "mesh/check_given_mesh.hpp"

#include <cmath>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

constexpr const char* fix =
    "x points downwind and y to the left of it; i runs along x, j along y, k upwards";

std::string cell_name(int i, int j, int k) {
    return "cell (" + std::to_string(i) + ", " + std::to_string(j) + ", " + std::to_string(k) + ")";
}

[[noreturn]] void refuse(const std::string& file, int i, int j, int k, const std::string& what) {
    stop(1, cell_name(i, j, k) + " of the given mesh: " + what, file, fix);
}

std::string shown(float value) {
    return std::string(trimmed(edit::E(value, 12, 4)));
}

bool has_finite_nodes(const GridGeometry& g, int i, int j, int k) {
    for (const Field3* r : {&g.xn, &g.yn, &g.zn}) {
        for (int n = 0; n < 8; ++n) {
            if (!std::isfinite((*r)(i - n % 2, j - n / 2 % 2, k - n / 4))) {
                return false;
            }
        }
    }
    return true;
}

void check_cell(const GridGeometry& g, const std::string& file, int i, int j, int k) {
    const float vol = g.vol(i, j, k);
    if (vol > 0.0F && std::isfinite(vol) && has_finite_nodes(g, i, j, k)) {
        return;
    }
    if (!has_finite_nodes(g, i, j, k)) {
        refuse(file, i, j, k, "a coordinate of its nodes is not a finite number");
    }
    if (!std::isfinite(vol)) {
        refuse(file, i, j, k, "its volume is beyond the range of single precision");
    }
    refuse(file, i, j, k, "its determinant is " + shown(vol) + " m3, expected a value above 0");
}

void check_heights(const GridGeometry& g, const std::string& file) {
    for (int k = 2; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const float h = g.zc(i, j, k) - g.zc(i, j, 1);
                if (!(h > 0.0F)) {
                    refuse(file, i, j, k,
                           "it lies " + shown(h) +
                               " m above the ground of its column, expected a "
                               "height above 0");
                }
            }
        }
    }
}

// The sum tells; single faces may look aside.
void check_inflow_plane(const GridGeometry& g, const std::string& file) {
    double area = 0;
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            area += static_cast<double>(g.xix(1, j, k));
        }
    }
    if (!(area > 0.0)) {
        stop(1,
             "the plane i = 1 of the given mesh does not face the wind: its area across +x is " +
                 shown(static_cast<float>(area)) + " m2",
             file, fix);
    }
}

}  // namespace

void check_given_mesh(const GridGeometry& g, const std::string& file) {
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                check_cell(g, file, i, j, k);
            }
        }
    }
    check_heights(g, file);
    check_inflow_plane(g, file);
}

}  // namespace torvex
