// The canopy of every direction of a case as texts for viewers: each layer that has any, and the
// sum over the height. The points are the cell centres in the frame of the wind, ghosts included;
// a layer stands at its own height, the sum on the ground.

#include <array>
#include <filesystem>
#include <optional>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "canopy/canopy_file.hpp"
#include "canopy/ccd_planes.hpp"
#include "maps/conversion/vectorize_roughness.hpp"
#include "maps/local_metric.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/make_mesh.hpp"
#include "mesh/rotation.hpp"
#include "prep/entries.hpp"
#include "prep/prep_case.hpp"
#include "results/canopy_plane_files.hpp"

namespace torvex {

namespace {

constexpr const char* usage = "usage: torvex-prep export [/f CASE_FILE] vtk|tecplot|shp [all]";

enum class Form { vtk, tecplot, shapefile };

struct Request {
    std::string case_file;
    Form form = Form::vtk;
    bool all = false;  // a shapefile of all columns
};

Request parse(std::vector<std::string> arguments) {
    Request request;
    request.case_file = take_case_file(arguments);
    if (arguments.empty()) {
        stop(102, "export in which form?", {}, usage);
    }
    if (arguments[0] == "vtk") {
        request.form = Form::vtk;
    } else if (arguments[0] == "tecplot") {
        request.form = Form::tecplot;
    } else if (arguments[0] == "shp") {
        request.form = Form::shapefile;
    } else {
        stop(102, "unknown form \"" + arguments[0] + "\"", {}, usage);
    }
    if (arguments.size() > 1) {
        request.all = request.form == Form::shapefile && arguments[1] == "all";
        const std::size_t known = request.all ? 2 : 1;
        if (arguments.size() > known) {
            stop(102, "unknown argument \"" + arguments[known] + "\"", {}, usage);
        }
    }
    return request;
}

// A direction's mesh with its canopy.
struct DirectionCanopy {
    GridGeometry grid;
    CanopyRecords records;
};

void make_direction_mesh(PrepCase& prep, int iwd, GridGeometry& grid) {
    const DirectionMaps maps = load_maps(prep.settings, iwd, prep.maps, prep.log);
    MAKE_MESH(prep.settings, prep.lines, maps, iwd, prep.log, grid);
    XYZ2XYZC(grid);
}

// Heights of the cells, mean of the four node columns round each; ghost columns take the column
// beside them.
Field3 thickness(const GridGeometry& grid) {
    Field3 dz(grid.ni, grid.nj, grid.nk);
    for (int k = 2; k <= grid.nz; ++k) {
        for (int j = 1; j <= grid.nj; ++j) {
            for (int i = 1; i <= grid.ni; ++i) {
                const int a = std::clamp(i, 2, grid.nx);
                const int b = std::clamp(j, 2, grid.ny);
                float sum = 0.0F;
                for (const int m : {a - 1, a}) {
                    for (const int n : {b - 1, b}) {
                        sum += grid.zn(m, n, k) - grid.zn(m, n, k - 1);
                    }
                }
                dz(i, j, k) = 0.25F * sum;
            }
        }
    }
    return dz;
}

Field2 plane_of(const Field3& field, int k) {
    Field2 plane(field.ni(), field.nj());
    for (int j = 1; j <= field.nj(); ++j) {
        for (int i = 1; i <= field.ni(); ++i) {
            plane(i, j) = field(i, j, k);
        }
    }
    return plane;
}

bool has_canopy(const CanopyPlane& plane) {
    return std::any_of(plane.pd.data(), plane.pd.data() + plane.pd.size(),
                       [](float pd) { return pd > 0.0F; });
}

void write_plane(const std::string& stem, Form form, const DirectionCanopy& canopy,
                 const CanopyPlane& plane, int k) {
    const Field2 x = plane_of(canopy.grid.xc, k);
    const Field2 y = plane_of(canopy.grid.yc, k);
    const Field2 z = plane_of(canopy.grid.zc, k);
    const PlacedCanopyPlane placed{x, y, z, plane};
    if (form == Form::vtk) {
        write_canopy_vtk(stem + ".vtk", placed);
    } else {
        write_canopy_tecplot(stem + ".dat", placed);
    }
}

// Layers that are empty are left out; the number in a name is that of the layer in the file.
int write_planes(const std::string& stem, Form form, const DirectionCanopy& canopy) {
    int written = 0;
    for (int k = 1; k <= canopy.grid.nk; ++k) {
        const CanopyPlane layer = CCD_EXTRACT_K(canopy.records, k);
        if (has_canopy(layer)) {
            write_plane(stem + "ccd-k" + edit::I(k, 3, 3), form, canopy, layer, k);
            ++written;
        }
    }
    constexpr int ground = 1;
    write_plane(stem + "ccd-sum", form, canopy, CCD_SUM_K(canopy.records, thickness(canopy.grid)),
                ground);
    return written + 1;
}

// Top of the highest cell with canopy above the ground of its column; 0 without any.
float canopy_height(const DirectionCanopy& canopy, const Field3& dz, int i, int j) {
    float top = 0.0F;
    float height = 0.0F;
    for (int k = 2; k <= canopy.grid.nz; ++k) {
        top += dz(i, j, k);
        if (canopy.records.gp_density(i, j, k) > 0.0F) {
            height = top;
        }
    }
    return height;
}

// The columns of the mesh on the earth, turned back from the frame of the wind.
RoughnessColumns columns_on_earth(const PrepCase& prep, int iwd, const DirectionCanopy& canopy) {
    const CaseSettings& settings = prep.settings;
    const GridGeometry& grid = canopy.grid;
    const MeshRotation turn = mesh_rotation(settings.WIND_DIRECTION_ANGLE(iwd));
    const MetresPerMinute metres = metres_per_minute(settings.cent_lat_min, settings.GS);
    const Field3 dz = thickness(grid);
    const CanopyPlane sum = CCD_SUM_K(canopy.records, dz);

    RoughnessColumns columns;
    columns.corner_lon.allocate(grid.nx, grid.ny);
    columns.corner_lat.allocate(grid.nx, grid.ny);
    columns.land_use_id.allocate(grid.nx - 1, grid.ny - 1);
    columns.height.allocate(grid.nx - 1, grid.ny - 1);
    columns.rls.allocate(grid.nx - 1, grid.ny - 1);
    for (int j = 1; j <= grid.ny; ++j) {
        for (int i = 1; i <= grid.nx; ++i) {
            const MapPoint at = turn.on_map(grid.xn(i, j, 1), grid.yn(i, j, 1));
            columns.corner_lon(i, j) =
                settings.cent_lon_min + static_cast<double>(at.X) / static_cast<double>(metres.lon);
            columns.corner_lat(i, j) =
                settings.cent_lat_min + static_cast<double>(at.Y) / static_cast<double>(metres.lat);
        }
    }
    for (int j = 2; j <= grid.ny; ++j) {
        for (int i = 2; i <= grid.nx; ++i) {
            columns.height(i - 1, j - 1) = canopy_height(canopy, dz, i, j);
            columns.rls(i - 1, j - 1) = sum.rls(i, j);
        }
    }
    return columns;
}

void write_shapefile(const PrepCase& prep, int iwd, bool all, const DirectionCanopy& canopy) {
    const RoughnessColumns columns = columns_on_earth(prep, iwd, canopy);
    const std::string stem = prep.restart_stem(iwd);
    const int cs = prep.settings.shape.shp_def_cs;
    if (all) {
        vectorizeRoughness22(stem + "ccd-all.shp", cs, columns);
    } else {
        vectorizeRoughness2(stem + "ccd.shp", cs, columns);
    }
}

void export_direction(PrepCase& prep, int iwd, const Request& request) {
    const std::string stem = prep.restart_stem(iwd);
    const std::string path = stem + std::string(canopy_file_name);
    DirectionCanopy canopy;
    make_direction_mesh(prep, iwd, canopy.grid);
    Field3 gp_d;
    Field3 gp_k;
    Field3 gp_e;
    read_canopy_file(path, prep.settings.canopy, canopy.records,
                     {canopy.grid.ni, canopy.grid.nj, canopy.grid.nk, gp_d, gp_k, gp_e});
    int files = 1;
    if (request.form == Form::shapefile) {
        write_shapefile(prep, iwd, request.all, canopy);
    } else {
        files = write_planes(stem, request.form, canopy);
    }
    const std::string told = path + ": " + std::to_string(files) + " files written";
    console("   - " + told);
    prep.log.timed(" " + told);
}

}  // namespace

int prep_export(std::vector<std::string> arguments) {
    const Request request = parse(std::move(arguments));
    PrepCase prep;
    open_prep_case(request.case_file, "export", prep);
    int found = 0;
    for (int iwd = 1; iwd <= prep.settings.N_WIND_DIRECTION; ++iwd) {
        const std::string path = prep.restart_stem(iwd) + std::string(canopy_file_name);
        if (std::filesystem::exists(path)) {
            export_direction(prep, iwd, request);
            ++found;
        } else {
            prep.log.warn(path + " is not there: its direction is left out.");
        }
    }
    if (found == 0) {
        stop(1, "no direction of the case has a canopy file", prep.file.name,
             "prepare them first: torvex-prep canopy");
    }
    return 0;
}

}  // namespace torvex
