#include "results/contour_grid.hpp"

#include "base/edit.hpp"
#include "base/whole_file.hpp"

namespace torvex {

void write_contour_grid(const std::string& path, const ContourGrid& grid) {
    const Field2& values = grid.values;
    std::string text = "DSAA\n";
    text += edit::list(values.ni(), values.nj()) + '\n';
    text += edit::list(grid.x_min, grid.x_max) + '\n';
    text += edit::list(grid.y_min, grid.y_max) + '\n';
    text += grid.range;
    text += '\n';
    for (int j = 1; j <= values.nj(); ++j) {
        edit::ListLine row;
        for (int i = 1; i <= values.ni(); ++i) {
            row << values(i, j);
        }
        text += row.text() + '\n';
    }
    write_text_file_whole(path, text);
}

}  // namespace torvex
