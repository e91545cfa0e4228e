#include "results/canopy_plane_files.hpp"

#include <cstdint>
#include <functional>
#include <string_view>

#include "base/edit.hpp"
#include "base/whole_file.hpp"

namespace torvex {

namespace {

using edit::E;
using edit::I;

void for_each_point(const Field2& plane, const std::function<void(int, int)>& visit) {
    for (int j = 1; j <= plane.nj(); ++j) {
        for (int i = 1; i <= plane.ni(); ++i) {
            visit(i, j);
        }
    }
}

void append_scalars(std::string_view name, const Field2& values, std::string& text) {
    text += "\nSCALARS ";
    text += name;
    text += " float 1\nLOOKUP_TABLE default\n";
    for_each_point(values, [&](int i, int j) { text += E(values(i, j), 16, 8) + '\n'; });
}

}  // namespace

void write_canopy_vtk(const std::string& path, const PlacedCanopyPlane& canopy) {
    const int ni = canopy.x.ni();
    const int nj = canopy.x.nj();
    const std::string count = I(static_cast<std::int64_t>(ni) * nj, 18);
    std::string text =
        "# vtk DataFile Version 2.0\n"
        "TORVEX Calculation Results By Ilse Marov\n"
        "ASCII\n"
        "\n"
        "DATASET STRUCTURED_GRID\n";
    text += "DIMENSIONS" + I(ni, 6) + I(nj, 6) + I(1, 6) + '\n';
    text += "POINTS" + count + " float\n";
    for_each_point(canopy.x, [&](int i, int j) {
        text += E(canopy.x(i, j), 16, 8) + E(canopy.y(i, j), 16, 8) + E(canopy.z(i, j), 16, 8);
        text += '\n';
    });
    text += "\nPOINT_DATA" + count + '\n';
    append_scalars("Cf", canopy.plane.cf, text);
    append_scalars("pd", canopy.plane.pd, text);
    append_scalars("rls", canopy.plane.rls, text);
    write_text_file_whole(path, text);
}

void write_canopy_tecplot(const std::string& path, const PlacedCanopyPlane& canopy) {
    std::string text = "variables = x, y, cf, pd, rls\n";
    text += "zone f=point, i=" + I(canopy.x.ni(), 3) + ", j=" + I(canopy.x.nj(), 3) + '\n';
    for_each_point(canopy.x, [&](int i, int j) {
        for (const Field2* values :
             {&canopy.x, &canopy.y, &canopy.plane.cf, &canopy.plane.pd, &canopy.plane.rls}) {
            text += E((*values)(i, j), 16, 8);
        }
        text += '\n';
    });
    write_text_file_whole(path, text);
}

}  // namespace torvex
