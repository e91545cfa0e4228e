#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "mesh/grid_geometry.hpp"

namespace torvex {

// Every second node line along one axis. A coarse cell takes two fine ones, the last one that is
// not kept three where their number is odd. All lists are told from 1; cells 2.. are the interior,
// the cells before and behind it stand on the boundary of both meshes.
struct CoarseLine {
    int nodes = 0;              // coarse node lines
    std::vector<int> node;      // the fine node line of coarse line N
    std::vector<int> low;       // fine cell n lies between the coarse cells low[n] and low[n] + 1
    std::vector<float> weight;  // and takes that part of the higher one
    std::vector<int> below;     // fine node line n lies at or behind coarse line below[n]
    std::vector<float> part;    // and goes that part of the way to the next one

    int first(int cell) const { return cell == 1 ? 1 : node[at(cell - 1)] + 1; }
    int last(int cell) const {
        return cell == 1 ? 1 : (cell == nodes + 1 ? node[at(nodes)] + 1 : node[at(cell)]);
    }
    static std::size_t at(int n) { return static_cast<std::size_t>(n); }
};

// What becomes of the cells at both ends of a line.
enum class Ends : std::uint8_t { joined, kept };

// From `nodes` fine node lines. With the ends kept the first and the last cell stay as they are.
CoarseLine coarse_line(int nodes, Ends ends = Ends::joined);

struct Coarsening {
    CoarseLine i, j;
};

// The coarse mesh: nodes, centres and metric; all node planes along k are kept.
void make_coarse_mesh(const GridGeometry& fine, const Coarsening& by, GridGeometry& coarse);

}  // namespace torvex
