#include "mesh/vertical_levels.hpp"

#include <cmath>
#include <string>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "mesh/integer_power.hpp"

namespace torvex {

namespace {

struct LevelCount {
    int nz = 0;
    int n_const = 0;  // layers of constant height MIN_DZ
};

void check_layer_keys(const CaseSettings& settings) {
    if (!(settings.MIN_DZ > 0.0F) || !std::isfinite(settings.MIN_DZ)) {
        stop(1, "MIN_DZ must be above 0 m", "key MIN_DZ", "give the height of the lowest layer");
    }
    if (!(settings.MESH_VRATIO > 0.0F) || !std::isfinite(settings.MESH_VRATIO)) {
        stop(1, "MESH_VRATIO must be above 0", "key MESH_VRATIO",
             "give the growth factor of layer heights, such as 1.15");
    }
}

void check_level_limit(int k, float z_top) {
    if (k > most_levels) {
        stop(1,
             "more than " + std::to_string(most_levels) +
                 " levels are needed to reach the domain top of" + edit::F(z_top, 10, 1) + " m",
             "keys MIN_DZ, MESH_VRATIO, MIN_DZ_HEIGHT",
             "raise MIN_DZ or use a MESH_VRATIO above 1");
    }
}

LevelCount count_levels(const CaseSettings& settings, float z_top) {
    const float MIN_DZ = settings.MIN_DZ;
    LevelCount count;
    float acc = 0.0F;
    int k = 2;
    if (settings.MIN_DZ_HEIGHT > MIN_DZ) {
        // Addition n belongs to level n + 1; the one that exceeds the height is taken back.
        for (acc = MIN_DZ; !(acc > settings.MIN_DZ_HEIGHT); acc += MIN_DZ) {
            check_level_limit(++k, z_top);
        }
        acc -= MIN_DZ;
        count.n_const = k - 1;
    }
    for (;;) {
        acc += integer_power(settings.MESH_VRATIO, k - count.n_const - 1) * MIN_DZ;
        if (acc > z_top) {
            break;
        }
        check_level_limit(++k, z_top);
    }
    count.nz = k;
    return count;
}

Line1 fill_levels(const CaseSettings& settings, const LevelCount& count) {
    Line1 z_line(count.nz);
    for (int k = 2; k <= count.nz; ++k) {
        const int q = k - count.n_const - 2;
        const float height =
            q < 0 ? settings.MIN_DZ : integer_power(settings.MESH_VRATIO, q) * settings.MIN_DZ;
        z_line(k) = z_line(k - 1) + height;
        if (!(z_line(k) > z_line(k - 1))) {
            stop(1, "layer " + std::to_string(k - 1) + " has no height left", "key MESH_VRATIO",
                 "use a MESH_VRATIO of 1 or above");
        }
    }
    return z_line;
}

void scale_top(int k_c, float z_top, Line1& z_line) {
    const int nz = z_line.size();
    if (k_c == nz) {
        return;
    }
    const float base = z_line(k_c);
    const float last = z_line(nz);
    for (int k = k_c + 1; k < nz; ++k) {
        z_line(k) = base + (z_line(k) - base) * (z_top - base) / (last - base);
    }
    z_line(nz) = z_top;
}

}  // namespace

int top_constant_level(const Line1& z_line, float CONSTANT_DZ_HEIGHT) {
    int k_c = 0;
    for (int k = 1; k <= z_line.size() && k_c == 0; ++k) {
        k_c = z_line(k) >= CONSTANT_DZ_HEIGHT ? k + 1 : 0;
    }
    if (k_c == 0 || k_c > z_line.size()) {
        stop(152,
             "the levels end too low for a CONSTANT_DZ_HEIGHT of" +
                 edit::F(CONSTANT_DZ_HEIGHT, 10, 1) + " m",
             "keys CONSTANT_DZ_HEIGHT, MAX_Z",
             "lower CONSTANT_DZ_HEIGHT, or raise the domain top well above it");
    }
    return k_c;
}

void make_vertical_levels(const CaseSettings& settings, float z_top, MeshLines& lines) {
    check_layer_keys(settings);
    const LevelCount count = count_levels(settings, z_top);
    lines.z_line = fill_levels(settings, count);
    lines.nz = count.nz;
    const int k_c = top_constant_level(lines.z_line, settings.CONSTANT_DZ_HEIGHT);
    scale_top(k_c, z_top, lines.z_line);
    if (settings.USE_TFTB && !(lines.z_line(lines.nz) > lines.z_line(lines.nz - 1))) {
        // Over a top that follows the ground nothing later would notice layers turned over.
        stop(152, "the layers of constant height reach above the terrain-following top",
             "keys CONSTANT_DZ_HEIGHT, MAX_Z", "lower CONSTANT_DZ_HEIGHT or raise MAX_Z");
    }
}

}  // namespace torvex
