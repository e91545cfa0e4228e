#pragma once

#include <functional>
#include <string>

#include "mesh/grid_geometry.hpp"
#include "run/run_fixture.hpp"
#include "solver/flow_state.hpp"

namespace torvex::test {

// Height or roughness [m] at metres east and north of the centre of the test cases.
using Ground = std::function<double(double east, double north)>;

inline double level(double, double) {
    return 0;
}

// A round hill of the shape cos^2, at half its height `half_width` from its middle. Its steepest
// slope, also there, is height*pi/(4 half_width).
Ground cosine_hill(double height, double half_width, double east = 0, double north = 0);

// A map of points*points values, `spacing` metres apart, round the centre of the test cases.
std::string map_of(const Ground& ground, int points, double spacing);

// What a direction has left in its files: the nodes and centres of the grid without its metric, and
// u, v, w, p, tke, ted, vis, pp, z0 and the fluxes of the flow.
struct Solution {
    GridGeometry grid;
    FlowState flow;
    int outer_count = 0;
};

// The column of cells nearest to a place in mesh axes.
struct Column {
    int i = 2, j = 2;
};
Column column_at(const Solution& s, double x, double y);

// Height of a cell centre above the ground of its column.
double height(const Solution& s, const Column& at, int k);

// A field at a height above the ground of a column, linear in the logarithm of the height.
double value_above(const Solution& s, const Field3& field, const Column& at, double height);

// Net volume out of the domain over the volume that enters at the inflow.
double mass_imbalance(const Solution& s);

// Whole small cases, solved by the program and read back from its files.
class WholeCase : public RunTest {
 protected:
    // Maps of the ground and its roughness. Without a call: the level maps of RunTest.
    void write_ground(const Ground& elevation, const Ground& roughness = roughness_of_grass,
                      int points = 161, double spacing = 75) const;

    // Solves the case and expects its only direction to converge.
    Solution converged(const CaseItems& items, const std::string& tag = "270_0") const;

    // What the direction with a tag has stored, under the prefix of its run.
    Solution stored(const std::string& tag = "270_0", const std::string& prefix = {}) const;

    static double roughness_of_grass(double, double) { return 0.03; }
};

// A mesh of 38 x 30 x 21 cells round the centre, the finest ones 75 m wide and 5 m high, with wind
// from the west and at most 300 iterations; `more` may override it.
CaseItems hill_case(const CaseItems& more = {});

}  // namespace torvex::test
