// The parent of a nested run, read from restart.info, vpkeout_NNNNN.tuf and xyz.tuf.
//
// The lines along and across the wind tell the mesh of another case; another centre leaves them as
// they are and shows in the ground. So the parent's ground is compared with this case's map round
// the centre, where the parent flattens nothing.

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/record_file.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "canopy/canopy_file.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/grid.hpp"
#include "mesh/ground_height.hpp"
#include "mesh/rotation.hpp"
#include "nest/parent.hpp"
#include "nest/parent_column.hpp"
#include "results/finite_fields.hpp"
#include "results/mesh_column.hpp"
#include "results/restart_info.hpp"

namespace torvex {

namespace {

constexpr const char* rerun = "run the parent case to its end again in this directory";
constexpr const char* same_case =
    "a child keeps the centre, the maps, the directions and all horizontal mesh keys of its parent";
constexpr ReadCodes parent_codes{.open = 184, .id = 184, .extents = 184, .fix = rerun};

constexpr float ground_tolerance = 1.0F;   // of the parent's ground against the map [m]
constexpr float height_tolerance = 0.01F;  // of column heights before a warning [-]

std::string number(float value, int decimals) {
    return std::string(trimmed(edit::F(value, 14, decimals)));
}

std::string cell_text(int i, int j, int k) {
    return "(" + std::to_string(i) + ", " + std::to_string(j) + ", " + std::to_string(k) + ")";
}

[[noreturn]] void stop_not_finite(std::string_view what, int i, int j, int k,
                                  const std::string& file) {
    stop(184, std::string(what) + " of " + cell_text(i, j, k) + " is no finite number", file,
         "the parent diverged or its file is damaged: run it again");
}

[[noreturn]] void stop_other_mesh(const std::string& how, const std::string& file) {
    stop(184, "parent mesh differs from this case: " + how, file, same_case);
}

// The planes of the file, at every level, against the lines set aside.
void compare_planes(const NestPass& pass, const GridGeometry& g, const std::string& file) {
    const float tolerance = 0.001F * pass.settings.MIN_DXY;
    const auto check = [&](const char* axis, int n, float found, float expected) {
        if (!(std::fabs(found - expected) <= tolerance)) {
            stop_other_mesh(std::string(axis) + " plane " + std::to_string(n) + " stands at " +
                                number(found, 3) + " m, this case has " + number(expected, 3) +
                                " m",
                            file);
        }
    };
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            for (int i = 1; i <= g.nx; ++i) {
                check("x", i, g.xn(i, j, k), pass.lines.x_line(i));
                check("y", j, g.yn(i, j, k), pass.lines.y_line(j));
            }
        }
    }
}

void check_levels(const GridGeometry& g, const std::string& file) {
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            for (int i = 1; i <= g.nx; ++i) {
                if (!std::isfinite(g.zn(i, j, k))) {
                    stop_not_finite("z", i, j, k, file);
                }
                if (k > 1 && !(g.zn(i, j, k) > g.zn(i, j, k - 1))) {
                    stop(184, "node " + cell_text(i, j, k) + " does not lie above the one below it",
                         file, rerun);
                }
            }
        }
    }
}

void compare_ground(const NestPass& pass, const GridGeometry& g, const std::string& file) {
    const MeshRotation rotation = mesh_rotation(pass.angle);
    const float radius = pass.lines.unchanged_radius;
    for (int j = 1; j <= g.ny; ++j) {
        for (int i = 1; i <= g.nx; ++i) {
            const float x = pass.lines.x_line(i);
            const float y = pass.lines.y_line(j);
            if (x * x + y * y > radius * radius) {
                continue;
            }
            const std::optional<float> ground =
                ground_height(pass.settings.canopy, pass.maps, rotation, x, y);
            if (!ground || !(std::fabs(g.zn(i, j, 1) - *ground) <= ground_tolerance)) {
                stop(184,
                     "the parent's ground is " + number(g.zn(i, j, 1), 1) + " m high at x = " +
                         number(x, 1) + " m, y = " + number(y, 1) + " m, the map of this case " +
                         (ground ? number(*ground, 1) + " m" : "does not reach there"),
                     file + ", " + pass.settings.BASIC_H_FILE, same_case);
            }
        }
    }
}

void read_mesh(const NestPass& pass, const Extents& cells, Parent& parent) {
    const std::string file = parent.stem + std::string(xyz_name);
    const Extents nodes{.ni = cells.ni - 1, .nj = cells.nj - 1, .nk = cells.nk - 1};
    check_xyz(file, nodes, parent_codes);
    if (nodes.ni != pass.lines.x_line.size() || nodes.nj != pass.lines.y_line.size()) {
        stop_other_mesh("it has " + std::to_string(nodes.ni) + " x " + std::to_string(nodes.nj) +
                            " planes, this case has " + std::to_string(pass.lines.x_line.size()) +
                            " x " + std::to_string(pass.lines.y_line.size()),
                        file);
    }
    GridGeometry& g = parent.grid;
    allocate_nodes(g, nodes.ni, nodes.nj, nodes.nk);
    read_xyz(file, g.xn, g.yn, g.zn, parent_codes);
    compare_planes(pass, g, file);
    check_levels(g, file);
    compare_ground(pass, g, file);
    XYZ2XYZC(g);
    GRID(g);
    for (Field3* metric : {&g.vol, &g.xix, &g.xiy, &g.xiz, &g.etx, &g.ety, &g.etz, &g.zex, &g.zey,
                           &g.zez, &g.fy, &g.fz}) {
        metric->release();
    }
}

void fill_ted_from_length(float CMU, const std::string& file, FlowState& s) {
    const float cmu34 = std::pow(CMU, 0.75F);
    for (int k = 2; k <= s.lm.nk(); ++k) {
        for (int j = 1; j <= s.lm.nj(); ++j) {
            for (int i = 1; i <= s.lm.ni(); ++i) {
                if (!(s.lm(i, j, k) > 0.0F)) {
                    stop(184, "the mixing length of " + cell_text(i, j, k) + " is not above 0",
                         file, rerun);
                }
                const float tke = std::max(s.tke(i, j, k), 0.0F);
                s.ted(i, j, k) = cmu34 * std::sqrt(tke) * tke / s.lm(i, j, k);
            }
        }
    }
}

void read_result(const NestPass& pass, const Extents& cells, Parent& parent) {
    // Fluxes, viscosity and pressure correction follow from the rest and are not kept.
    FlowState& flow = parent.flow;
    allocate(flow, start_fields, cells.ni, cells.nj, cells.nk);
    allocate(flow, length_fields, cells.ni, cells.nj, cells.nk);
    parent.result = read_vpkeout(parent.file, whatever_is_stored, flow, parent_codes);
    if (const auto bad = first_not_finite(flow)) {
        stop_not_finite(bad->field, bad->i, bad->j, bad->k, parent.file);
    }
    if (parent.result.id == 122) {
        fill_ted_from_length(pass.settings.CMU, parent.file, flow);
    }
    // Of the length fields those of the child's own kind stay.
    const bool same_kind = parent.result.id == result_id(pass.settings.TURBULENCE_MODEL);
    const std::size_t kept = same_kind ? further_fields(parent.result.id).size() : 0;
    for (const FlowField& field : length_fields.subspan(kept)) {
        (flow.*field.member).release();
    }
}

// The counts in the header of a canopy file; nothing if it has none.
std::optional<Extents> canopy_counts(const std::string& path) {
    RecordReader file;
    std::int32_t id = 0;
    Extents e;
    if (!file.open(path) || !file.read(id) || id != canopy_file_id ||
        !file.read(e.ni, e.nj, e.nk)) {
        return std::nullopt;
    }
    return e;
}

void look_at_canopy(const NestPass& pass, const Extents& cells, const std::string& stem) {
    console("Calling cmOpenCalcPara in nest_bc_set..");
    const std::string path = stem + std::string(canopy_file_name);
    const std::optional<Extents> counts = canopy_counts(path);
    if (!counts) {
        pass.warn(path + ": no canopy of the parent can be read there.");
    } else if (*counts != cells) {
        pass.warn(path + ": the canopy is not on the parent's mesh.");
    }
}

// Over one ground tops that are alike mean columns that are alike, and the other way round; where
// the two meshes see the ground differently, one of both is enough.
void warn_of_other_tops(const NestPass& pass, const GridGeometry& parent) {
    struct Top {
        float level;   // above the datum of the map [m]
        float height;  // of the column [m]
    };
    const auto top_of = [](const GridGeometry& g) {
        const ColumnPlace centre = column_place({.x = 0.0F, .y = 0.0F}, g);
        return Top{g.zc(centre.x.i, centre.y.i, g.nk), column_height(g, centre.x.i, centre.y.i)};
    };
    const Top p = top_of(parent);
    const Top child = top_of(pass.grid);
    const float apart =
        std::min(std::fabs(p.level - child.level), std::fabs(p.height - child.height));
    if (!(apart <= height_tolerance * p.height)) {
        pass.warn("the columns of the parent are " + number(p.height, 1) +
                  " m high, those of the child " + number(child.height, 1) +
                  " m: heights are drawn together so that the tops meet.");
    }
}

}  // namespace

void NestPass::tell(const std::string& text) const {
    log.timed(" WD " + edit::F(angle, 5, 1) + ": " + text);
}

void NestPass::warn(const std::string& text, const std::string& reminder) const {
    log.warn("WD " + edit::F(angle, 5, 1) + ": " + text, reminder);
}

Parent read_parent(const NestPass& pass, const std::string& stem) {
    Parent parent;
    parent.stem = stem;
    const std::string info_file = stem + std::string(file_names::restart_info);
    const std::optional<RestartInfo> info = read_restart_info(info_file);
    if (!info) {
        stop(183, "the parent's iteration count cannot be read", info_file, rerun);
    }
    parent.file = newest_result_path(stem, info->outer_count);
    console("   - Open vpkeout " + parent.file);
    const Extents cells = read_extents(parent.file, parent_codes);
    if (std::min({cells.ni, cells.nj, cells.nk}) < 3) {
        stop(184, "the result has no cells inside its boundaries", parent.file, rerun);
    }
    read_mesh(pass, cells, parent);
    read_result(pass, cells, parent);
    if (pass.settings.canopy_on()) {
        look_at_canopy(pass, cells, stem);
    }
    warn_of_other_tops(pass, parent.grid);
    return parent;
}

}  // namespace torvex
