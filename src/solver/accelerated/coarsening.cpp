#include "solver/accelerated/coarsening.hpp"

#include <algorithm>

#include "mesh/cell_geometry.hpp"
#include "mesh/grid.hpp"

namespace torvex {

CoarseLine coarse_line(int nodes, Ends ends) {
    const int kept = ends == Ends::kept && nodes > 4 ? 1 : 0;  // cells at each end
    const int pairs = std::max(1, (nodes - 1 - 2 * kept) / 2);
    CoarseLine line;
    line.node = {0, 1};
    if (kept != 0) {
        line.node.push_back(2);
    }
    for (int n = 1; n < pairs; ++n) {
        line.node.push_back(1 + kept + 2 * n);
    }
    if (kept != 0) {
        line.node.push_back(nodes - 1);
    }
    line.node.push_back(nodes);
    line.nodes = static_cast<int>(line.node.size()) - 1;
    const auto centre = [&line](int cell) {
        return 0.5F * static_cast<float>(line.first(cell) + line.last(cell));
    };
    line.low.resize(CoarseLine::at(nodes + 2));
    line.weight.resize(CoarseLine::at(nodes + 2));
    for (int n = 2; n <= nodes; ++n) {
        int low = 2;
        while (low < line.nodes && centre(low + 1) <= static_cast<float>(n)) {
            ++low;
        }
        // In front of the first centre and behind the last one the nearest value holds.
        const bool inside = centre(low) <= static_cast<float>(n) && low < line.nodes;
        line.low[CoarseLine::at(n)] = inside ? low : std::max(2, std::min(low, line.nodes) - 1);
        if (inside) {
            line.weight[CoarseLine::at(n)] =
                (static_cast<float>(n) - centre(low)) / (centre(low + 1) - centre(low));
        } else {
            const bool behind = low == line.nodes && line.nodes > 2;
            line.weight[CoarseLine::at(n)] =
                behind && static_cast<float>(n) >= centre(low) ? 1.0F : 0.0F;
        }
    }
    for (const auto& [ghost, beside] : {std::pair{1, 2}, std::pair{nodes + 1, nodes}}) {
        line.low[CoarseLine::at(ghost)] = line.low[CoarseLine::at(beside)];
        line.weight[CoarseLine::at(ghost)] = line.weight[CoarseLine::at(beside)];
    }
    line.below.resize(CoarseLine::at(nodes + 1));
    line.part.resize(CoarseLine::at(nodes + 1));
    for (int n = 1; n <= nodes; ++n) {
        int below = 1;
        while (below + 1 < line.nodes && line.node[CoarseLine::at(below + 1)] <= n) {
            ++below;
        }
        const int from = line.node[CoarseLine::at(below)];
        const int to = line.node[CoarseLine::at(below + 1)];
        line.below[CoarseLine::at(n)] = below;
        line.part[CoarseLine::at(n)] = static_cast<float>(n - from) / static_cast<float>(to - from);
    }
    return line;
}

void make_coarse_mesh(const GridGeometry& fine, const Coarsening& by, GridGeometry& coarse) {
    allocate_nodes(coarse, by.i.nodes, by.j.nodes, fine.nz);
    for (int k = 1; k <= fine.nz; ++k) {
        for (int j = 1; j <= coarse.ny; ++j) {
            for (int i = 1; i <= coarse.nx; ++i) {
                const int fi = by.i.node[CoarseLine::at(i)];
                const int fj = by.j.node[CoarseLine::at(j)];
                coarse.xn(i, j, k) = fine.xn(fi, fj, k);
                coarse.yn(i, j, k) = fine.yn(fi, fj, k);
                coarse.zn(i, j, k) = fine.zn(fi, fj, k);
            }
        }
    }
    XYZ2XYZC(coarse);
    GRID(coarse);
}

}  // namespace torvex
