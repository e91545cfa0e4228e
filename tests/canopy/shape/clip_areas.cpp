// The clipper as a filter, to be held against another one: reads a text, writes areas to standard
// output, one a line.
//
//   clip_areas rectangles FILE   records: x_low y_low x_high y_high rings; for each ring its number
//                                of points, then x y of each. Area of the first ring in the
//                                rectangle less that of the others.
//   clip_areas mesh FILE         records: number of x lines, the lines; the same for y; then for
//                                each polygon its number of points and x y of each. Area of all
//                                pieces of each cell, i fastest.

#include <cmath>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "base/edit.hpp"
#include "base/list_input.hpp"
#include "base/text_file.hpp"
#include "canopy/clip_entities_to_cells.hpp"
#include "canopy/shape/polygon_clip.hpp"

namespace torvex {
namespace {

struct Points {
    std::vector<double> x, y;
};

Points read_points(ListInput& input) {
    int count = 0;
    input.read(count);
    Points points;
    for (int n = 0; n < count; ++n) {
        double x = 0;
        double y = 0;
        input.read(x, y);
        points.x.push_back(x);
        points.y.push_back(y);
    }
    return points;
}

void tell(double area) {
    std::cout << edit::E(area, 26, 17) << '\n';
}

void clip_to_rectangles(ListInput& input) {
    PlanPoint low;
    PlanPoint high;
    int rings = 0;
    while (!input.at_end() && input.read(low.x, low.y, high.x, high.y, rings)) {
        double area = 0;
        for (int n = 0; n < rings; ++n) {
            const Points p = read_points(input);
            const Polygon ring = polygon_of_ring(p.x, p.y, 0, p.x.size());
            area += (n == 0 ? 1 : -1) * std::abs(polygon_area(polygon_clip(ring, low, high)));
        }
        tell(area);
    }
}

Line1 read_line(ListInput& input) {
    int count = 0;
    input.read(count);
    Line1 line(count);
    for (int n = 1; n <= count; ++n) {
        input.read(line(n));
    }
    return line;
}

void clip_to_mesh(ListInput& input) {
    const Line1 x_line = read_line(input);
    const Line1 y_line = read_line(input);
    std::vector<CanopyEntity> entities;
    while (!input.at_end()) {
        Points p = read_points(input);
        CanopyEntity& entity = entities.emplace_back();
        entity.part_start = {0};
        entity.x = std::move(p.x);
        entity.y = std::move(p.y);
    }
    const ColumnLists columns = clip_entities_to_cells(entities, x_line, y_line, false);
    for (int j = 2; j <= y_line.size(); ++j) {
        for (int i = 2; i <= x_line.size(); ++i) {
            tell(columns.sums(i, j));
        }
    }
}

}  // namespace
}  // namespace torvex

int main(int argc, char** argv) {
    const std::optional<std::string> text =
        argc == 3 ? torvex::read_text_file(argv[2]) : std::nullopt;
    if (!text) {
        std::cerr << "usage: clip_areas rectangles|mesh FILE\n";
        return 1;
    }
    torvex::ListInput input(*text);
    if (std::string(argv[1]) == "mesh") {
        torvex::clip_to_mesh(input);
    } else {
        torvex::clip_to_rectangles(input);
    }
    return 0;
}
