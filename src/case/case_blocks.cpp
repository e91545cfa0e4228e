#include "case/case_blocks.hpp"

#include <string>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "case/case_keys.hpp"
#include "case/keyed_block.hpp"

namespace torvex {

namespace {

bool may_be_left_out(std::string_view nest_key) {
    return nest_key == "nest_mode" || nest_key.starts_with("nest_bc_");
}

const CaseKey& key_of(const CaseGroup& block, std::string_view name) {
    for (const CaseKey& key : block.keys) {
        if (key.name == name) {
            return key;
        }
    }
    stop(1, "no key " + std::string(name) + " in block &" + std::string(block.name));
}

std::string triple(const Triple& angle) {
    return edit::list(angle(1), angle(2), angle(3));
}

void report_nest_points(const CaseText& file, const NestPoints& nest, RunLog& log) {
    log.line("OPEN: " + file.name);
    log.line("READING.../");
    log.line("DONE.");
    log.line("CLOSE: " + file.name);
    log.line("site name: " + nest.label);
    log.line("logitude:" + triple(nest.lon));
    log.line("latitude:" + triple(nest.lat));
    log.line("n_x_div:" + edit::list(nest.n_x_div));
    log.line("n_y_div:" + edit::list(nest.n_y_div));
    log.line("c2xmax" + edit::list(nest.c2xmax));
    log.line("c2ymax" + edit::list(nest.c2ymax));
}

void list_frontal_directions(const ShapeParameters& shape) {
    std::string line = " frontalarea ndir:";
    for (int n = 1; n <= shape.fa_ndir; ++n) {
        const float direction = shape.fa_dirs[static_cast<std::size_t>(n - 1)];
        line += (n > 1 ? ", dir(" : "dir(") + std::to_string(n) + ")=" + edit::F(direction, 7, 2);
    }
    console(line);
}

}  // namespace

void read_nest_points(const CaseText& file, CaseSettings& settings, RunLog& log) {
    if (!file.available) {
        stop(100, "the case file cannot be opened for the block nest_points", file.name,
             "leave the case file in its place while a run starts");
    }
    const CaseGroup& block = keyed_block("nest_points");
    read_table_key(file, block.name, key_of(block, "nest_mode"), settings);
    if (!settings.nested()) {
        return;
    }
    for (const CaseKey& key : block.keys) {
        const KeyStatus status = read_table_key(file, block.name, key, settings);
        if (status != KeyStatus::read && !may_be_left_out(key.name)) {
            stop(185, "block &nest_points: key " + std::string(key.name) + " is missing", file.name,
                 "a nested run needs all keys of the block but nest_bc_distr and nest_bc_ofix");
        }
    }
    report_nest_points(file, settings.nest, log);
}

void read_canopy_parameters(const CaseText& file, CaseSettings& settings) {
    const CaseGroup& block = keyed_block("canopy_parameters");
    for (const CaseKey& key : block.keys) {
        read_table_key(file, block.name, key, settings);
    }
    const CanopyParameters& canopy = settings.canopy;
    if (canopy.canopy_mode != 0 && canopy.canopy_mode != 1) {
        stop(1,
             "block &canopy_parameters: canopy_mode is " + std::to_string(canopy.canopy_mode) +
                 ", expected 0 or 1",
             file.name);
    }
    if (canopy.modify_terrain && !(canopy.modify_circle_range > 0)) {
        stop(1,
             "block &canopy_parameters: modify_terrain is on, but modify_circle_range is not above "
             "0",
             file.name, "give the radius of the circle in metres, or switch modify_terrain off");
    }
}

void read_shape_parameters(const CaseText& file, CaseSettings& settings) {
    const CaseGroup& block = keyed_block("shp_parameters");
    ShapeParameters& shape = settings.shape;
    for (const CaseKey& key : block.keys) {
        const bool of_frontal_area = key.name == "fa_ndir" || key.name == "fa_read_dirs";
        const bool unused = (of_frontal_area && !shape.calc_fa) ||
                            (key.name == "fa_dirs" && !(shape.calc_fa && shape.fa_read_dirs));
        if (!unused) {
            read_table_key(file, block.name, key, settings);
        }
    }
    if (!shape.calc_fa) {
        return;
    }
    if (shape.fa_ndir < 1) {
        const std::string text = "ERROR at reading nm shp_paramters misc.";
        console(text);
        stop(1, text, file.name, "calc_fa is on: give fa_ndir, at least 1");
    }
    const auto count = static_cast<std::size_t>(shape.fa_ndir);
    if (shape.fa_read_dirs) {
        if (shape.fa_dirs.size() != count) {
            stop(1,
                 "block &shp_parameters: fa_dirs holds " + std::to_string(shape.fa_dirs.size()) +
                     " value(s), expected fa_ndir = " + std::to_string(shape.fa_ndir),
                 file.name);
        }
    } else {
        if (shape.fa_ndir > max_directions) {
            stop(1,
                 "block &shp_parameters: fa_ndir is " + std::to_string(shape.fa_ndir) +
                     ", expected at most " + std::to_string(max_directions),
                 file.name);
        }
        for (int n = 0; n < shape.fa_ndir; ++n) {
            shape.fa_dirs.push_back(static_cast<float>(n) * 360.0F /
                                    static_cast<float>(shape.fa_ndir));
        }
    }
    list_frontal_directions(shape);
}

void read_user_domain(const CaseText& file, CaseSettings& settings) {
    if (settings.TORVEX_MODE == 0) {
        return;
    }
    const CaseGroup& block = keyed_block("user_domain");
    for (const CaseKey& key : block.keys) {
        read_table_key(file, block.name, key, settings);
    }
}

}  // namespace torvex
