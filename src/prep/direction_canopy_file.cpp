#include "prep/direction_canopy_file.hpp"

#include <algorithm>
#include <cmath>

#include "canopy/canopy_roughness.hpp"
#include "canopy/clip_entities_to_cells.hpp"
#include "canopy/cmCombGPs.hpp"
#include "canopy/shape/polygon_clip.hpp"
#include "maps/load_maps.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/make_mesh.hpp"
#include "mesh/vertical_levels.hpp"
#include "roughness/sample_roughness.hpp"

namespace torvex {

namespace {

// The area of the polygons inside the mesh, by its outline alone.
double area_inside_mesh(const std::vector<CanopyEntity>& entities, const MeshLines& lines,
                        bool exclude_donut_shape) {
    const auto at = [](const Line1& line, int n) { return static_cast<double>(line(n)); };
    const PlanPoint low{at(lines.x_line, 1), at(lines.y_line, 1)};
    const PlanPoint high{at(lines.x_line, lines.nx), at(lines.y_line, lines.ny)};
    double sum = 0;
    for (const CanopyEntity& entity : entities) {
        const std::size_t parts = entity.part_start.size();
        for (std::size_t part = 0; part < parts; ++part) {
            const auto first = static_cast<std::size_t>(entity.part_start[part]);
            const std::size_t end = part + 1 < parts
                                        ? static_cast<std::size_t>(entity.part_start[part + 1])
                                        : entity.x.size();
            const Polygon ring = polygon_of_ring(entity.x, entity.y, first, end);
            const bool hole = parts >= 2 && ring_turn(ring) <= 0;
            const double area = std::abs(polygon_area(polygon_clip(ring, low, high)));
            if (!hole) {
                sum += area;
            } else if (!exclude_donut_shape) {
                sum -= area;
            }
        }
    }
    return sum;
}

double cover_area(const ColumnLists& columns) {
    double sum = 0;
    for (const Ring<CanopyPiece>& list : columns.lists) {
        for (std::size_t n = 0; n < list.size(); ++n) {
            sum += list[n].area;
        }
    }
    return sum;
}

int entities_with_a_piece(const ColumnLists& columns, std::size_t entities) {
    std::vector<bool> seen(entities, false);
    for (const Ring<CanopyPiece>& list : columns.lists) {
        for (std::size_t n = 0; n < list.size(); ++n) {
            seen[static_cast<std::size_t>(list[n].entity)] = true;
        }
    }
    return static_cast<int>(std::ranges::count(seen, true));
}

GridParameters parameters_of(const SetOnMesh& on, const std::vector<CanopyEntity>& entities,
                             const LayerLevels& levels, const CaseSettings& settings,
                             const MeshLines& lines, float angle) {
    if (on.source->method == CanopyMethod::LU) {
        return cmCalcGP_LU(on.columns, levels);
    }
    const Array2<double> S = column_areas(lines.x_line, lines.y_line);
    const std::vector<float>& directions = settings.shape.fa_dirs;
    if (!settings.shape.calc_fa || directions.empty()) {
        return cmCalcGP_ZEN(on.columns, levels, entities, S);
    }
    const float front = directions[nearest_front(directions, angle)];
    const FrontalAreas areas =
        cmCalcFA_ZEN(on.columns, levels, frontal_extents(entities, angle, {front}));
    return cmCalcGP_ZEN(on.columns, levels, entities, S, &areas.gp_frontal.front());
}

CanopyRecords empty_records(const MeshLines& lines) {
    CanopyRecords records;
    for (Field3* field : {&records.gp_cf, &records.gp_density, &records.gp_length}) {
        field->allocate(lines.ni, lines.nj, lines.nk);
    }
    records.gp_z0.allocate(lines.ni, lines.nj);
    return records;
}

}  // namespace

int DirectionCanopy::used() const {
    int sum = 0;
    for (const SetOnMesh& on : sets) {
        sum += on.used;
    }
    return sum;
}

DirectionCanopy make_direction_canopy(PrepCase& prep, const std::vector<CanopySource>& sources,
                                      int iwd) {
    const CaseSettings& settings = prep.settings;
    const MeshLines& lines = prep.lines;
    const float angle = settings.WIND_DIRECTION_ANGLE(iwd);
    const std::string& tag = prep.wd_tag[static_cast<std::size_t>(iwd - 1)];

    DirectionCanopy canopy;
    const DirectionMaps maps = load_maps(settings, iwd, prep.maps, prep.log);
    MAKE_MESH(settings, lines, maps, iwd, prep.log, canopy.grid);
    XYZ2XYZC(canopy.grid);

    const int k_c = top_constant_level(lines.z_line, settings.CONSTANT_DZ_HEIGHT);
    const LayerLevels levels(lines.z_line, k_c, canopy.grid.zn);
    canopy.records = empty_records(lines);
    for (const CanopySource& source : sources) {
        SetOnMesh& on = canopy.sets.emplace_back();
        on.source = &source;
        const std::vector<CanopyEntity> entities = on_mesh(source, centre_rotation(angle));
        on.columns = clip_entities_to_cells(entities, lines.x_line, lines.y_line,
                                            settings.shape.exclude_donut_shape);
        on.gp = parameters_of(on, entities, levels, settings, lines, angle);
        on.used = entities_with_a_piece(on.columns, entities.size());
        on.plan_area = area_inside_mesh(entities, lines, settings.shape.exclude_donut_shape);
        on.cover_area = cover_area(on.columns);
        cmCombGPs(on.gp, canopy.records);
    }

    const RoughnessPass pass{settings, lines, iwd, tag, prep.log};
    sample_roughness(pass, maps, canopy.grid, canopy.records.gp_z0);
    canopy.map_z0 = canopy.records.gp_z0;
    const ColumnLists* columns[2] = {nullptr, nullptr};
    for (std::size_t n = 0; n < canopy.sets.size() && n < 2; ++n) {
        columns[n] = &canopy.sets[n].columns;
    }
    canopy_roughness(columns, canopy.records.gp_z0);
    return canopy;
}

}  // namespace torvex
