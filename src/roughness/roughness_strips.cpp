#include "roughness/roughness_strips.hpp"

#include <algorithm>

#include "base/assertion.hpp"
#include "roughness/roughness_mean.hpp"

namespace torvex {

namespace {

void require_marks(const MeshLines& lines) {
    require(lines.i_centre - lines.n_up == 1 && lines.i_centre + lines.n_down == lines.nx &&
                lines.j_centre - lines.n_side == 1 && lines.j_centre + lines.n_side == lines.ny,
            "marks of the mesh lines that are not those of the lines");
}

// Cells i_from..i_to, j_from..j_to.
struct Block {
    int i_from, i_to;
    int j_from, j_to;

    bool empty() const { return i_from > i_to || j_from > j_to; }
};

double distance(const Line1& line, int from, int to) {
    return static_cast<double>(line(to)) - static_cast<double>(line(from));
}

double mean_R(const MeshLines& lines, const Field2& z0, const Block& block, double area) {
    double sum = 0.0;
    for (int j = block.j_from; j <= block.j_to; ++j) {
        const double dy = distance(lines.y_line, j - 1, j);
        for (int i = block.i_from; i <= block.i_to; ++i) {
            sum += R(z0(i, j)) * distance(lines.x_line, i - 1, i) * dy;
        }
    }
    return sum / area;
}

void put(const Block& block, float value, Field2& z0) {
    for (int j = block.j_from; j <= block.j_to; ++j) {
        for (int i = block.i_from; i <= block.i_to; ++i) {
            z0(i, j) = value;
        }
    }
}

void smear(const MeshLines& lines, const Block& block, double area, Field2& z0) {
    if (!block.empty()) {
        put(block, Z(mean_R(lines, z0, block, area)), z0);
    }
}

}  // namespace

void smear_sides(const MeshLines& lines, Field2& z0) {
    require_marks(lines);
    const int south = lines.j_centre - lines.n_blend_side;
    const int north = lines.j_centre + lines.n_blend_side;
    const int edge = lines.j_centre + lines.n_side;
    const double W = distance(lines.y_line, north, edge);
    for (int i = 2; i <= lines.nx; ++i) {
        const double area = W * distance(lines.x_line, i - 1, i);
        smear(lines, {i, i, 2, south}, area, z0);
        smear(lines, {i, i, north + 1, edge}, area, z0);
    }
}

void smear_downwind(const MeshLines& lines, Field2& z0) {
    require_marks(lines);
    const int blend = lines.i_centre + lines.n_blend_down;
    const int edge = lines.i_centre + lines.n_down;
    const double length = distance(lines.x_line, blend, edge);
    for (int j = 2; j <= lines.ny; ++j) {
        const double area = distance(lines.y_line, j - 1, j) * length;
        smear(lines, {blend + 1, edge, j, j}, area, z0);
    }
}

void repeat_on_ghost_ring(Field2& z0) {
    const int ni = z0.ni();
    const int nj = z0.nj();
    for (int j = 2; j < nj; ++j) {
        z0(1, j) = z0(2, j);
        z0(ni, j) = z0(ni - 1, j);
    }
    for (int i = 1; i <= ni; ++i) {
        z0(i, 1) = z0(i, 2);
        z0(i, nj) = z0(i, nj - 1);
    }
}

float upwind_mean(const MeshLines& lines, const Field2& z0) {
    require_marks(lines);
    const int edge = lines.i_centre - lines.n_up;
    const int blend = std::max(lines.i_centre - lines.n_blend_up, edge + 1);
    const double A = distance(lines.x_line, edge, blend) * distance(lines.y_line, 1, lines.ny);
    return Z(mean_R(lines, z0, {2, blend, 2, lines.ny}, A));
}

void stamp_upwind(const CaseSettings& settings, const MeshLines& lines, float z_up, Field2& z0) {
    int last = lines.i_centre - lines.n_blend_up;
    if (settings.USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN) {
        last = std::max(last, lines.i_centre - lines.n_inner - 1);
    }
    if (settings.USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN) {
        last = lines.nx;
    }
    put({2, last, 2, lines.ny}, z_up, z0);
}

}  // namespace torvex
