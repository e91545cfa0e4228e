#include <algorithm>

#include "base/edit.hpp"
#include "canopy/canopy_factors.hpp"
#include "mesh/vertical_levels.hpp"
#include "prep/direction_canopy_file.hpp"

namespace torvex {

namespace {

void tell(PrepCase& prep, const std::string& text) {
    console("   - " + text);
    prep.log.timed(" " + text);
}

std::string counted(int count, const char* what) {
    return count == 0 ? "" : ", " + std::to_string(count) + " " + what;
}

float tallest(const SetOnMesh& on) {
    float height = 0;
    for (const Ring<CanopyPiece>& list : on.columns.lists) {
        for (std::size_t n = 0; n < list.size(); ++n) {
            height = std::max(height, list[n].attributes.h);
        }
    }
    return height;
}

void report_set(PrepCase& prep, const SetOnMesh& on, const std::string& wd) {
    const CanopySource& source = *on.source;
    const int outside = static_cast<int>(source.entities.size()) - on.used + source.out_of_reach;
    tell(prep, wd + source.set.name + ": polygons read " + std::to_string(source.polygons) +
                   ", used " + std::to_string(on.used) + counted(outside, "outside the mesh") +
                   counted(source.beyond_radius, "beyond shp_or_radius") +
                   counted(source.missing_heights, "without a height") +
                   counted(source.null_shapes, "without a shape") +
                   counted(source.deleted_rows, "deleted"));
    tell(prep, wd + source.set.name + ": plan area inside the mesh" + edit::F(on.plan_area, 18, 1) +
                   " m2, cover times area of the columns" + edit::F(on.cover_area, 18, 1) + " m2");
}

}  // namespace

void report_direction_canopy(PrepCase& prep, const DirectionCanopy& canopy, int iwd) {
    const std::string wd = "WD " + prep.wd_tag[static_cast<std::size_t>(iwd - 1)] + ": ";
    float height = 0;
    for (const SetOnMesh& on : canopy.sets) {
        report_set(prep, on, wd);
        height = std::max(height, tallest(on));
    }
    const CanopyRecords& records = canopy.records;
    long cells = 0;
    float greatest = 0;
    for (std::size_t n = 0; n < records.gp_density.size(); ++n) {
        const float phi = records.gp_density.data()[n];
        cells += phi > 0 ? 1 : 0;
        greatest = std::max(
            greatest, drag_density(records.gp_cf.data()[n], phi, records.gp_length.data()[n]));
    }
    tell(prep, wd + "greatest height" + edit::F(height, 9, 2) + " m, cells with density " +
                   std::to_string(cells) + ", greatest drag density" + edit::E(greatest, 12, 4) +
                   " 1/m");
    if (canopy.used() == 0) {
        prep.log.warn(wd + "no polygon lies inside the mesh; the canopy file holds no canopy.");
        return;
    }
    const Line1& z_line = prep.lines.z_line;
    const float constant = z_line(top_constant_level(z_line, prep.settings.CONSTANT_DZ_HEIGHT));
    if (height > constant) {
        prep.log.warn("A height of" + edit::F(height, 9, 2) +
                      " m exceeds the layers of constant height, which end at" +
                      edit::F(constant, 9, 2) + " m.");
    }
    if (height > 0 && height <= z_line(2)) {
        prep.log.warn("The tallest entity ends inside the first layer of the mesh, which ends at" +
                      edit::F(z_line(2), 9, 2) +
                      " m, where a canopy has no sources of tke and ted; use a smaller MIN_DZ.");
    }
}

}  // namespace torvex
