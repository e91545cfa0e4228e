#pragma once

#include <functional>
#include <string>

#include "base/field.hpp"
#include "solver/flow_state.hpp"

// What the flow over level ground loses of its momentum along x, from the files that a direction
// leaves. In newtons, at a density of 1.
namespace torvex::test {

inline double wide(float x) {
    return static_cast<double>(x);
}

// A mesh over level ground: the cells of a direction in the order of their indices.
class LevelMesh {
 public:
    explicit LevelMesh(const std::string& file);

    double x(int i) const { return 0.5 * (wide(xn_(i - 1, 1, 1)) + wide(xn_(i, 1, 1))); }
    double y(int j) const { return 0.5 * (wide(yn_(1, j - 1, 1)) + wide(yn_(1, j, 1))); }
    // Height of the cell above the ground.
    double h(int k) const {
        return 0.5 * (wide(zn_(1, 1, k - 1)) + wide(zn_(1, 1, k))) - wide(zn_(1, 1, 1));
    }
    double dx(int i) const { return wide(xn_(i, 1, 1)) - wide(xn_(i - 1, 1, 1)); }
    double dy(int j) const { return wide(yn_(1, j, 1)) - wide(yn_(1, j - 1, 1)); }
    double dz(int k) const { return wide(zn_(1, 1, k)) - wide(zn_(1, 1, k - 1)); }

    template <class Cell>
    void for_cells(Cell cell) const {
        for (int k = 2; k <= nz; ++k) {
            for (int j = 2; j <= ny; ++j) {
                for (int i = 2; i <= nx; ++i) {
                    cell(i, j, k);
                }
            }
        }
    }

    int nx = 0, ny = 0, nz = 0;

 private:
    Field3 xn_, yn_, zn_;
};

struct MomentumBalance {
    double in = 0;
    double lost = 0;       // to whatever stands in the domain
    double drag = 0;       // of the canopy, by its own formula
    double imbalance = 0;  // mass that the cells gain and lose, all counted positive [kg/s]
};

// What comes in and goes out through the planes i = 1 and i = nx as first-order upwind counts it,
// the pressure on them, the normal stress in them, and the log law on a ground of z0 = 0.03 m
// (Launder and Spalding, 1974). Nothing passes the top and the sides. `drag_density(i, j, k)` is
// that of the canopy in a cell [1/m].
//
// It closes only without the deferred convection (RATIO = 0), which is not conservative in the
// second cells from the boundary: a difference over half a cell is doubled on one side of the face
// only.
MomentumBalance momentum_balance(const LevelMesh& m, const FlowState& s,
                                 const std::function<double(int, int, int)>& drag_density);

// What the cells' equations do not meet, at worst all of one sign: the residual of u, which is told
// as a part of the momentum that enters, and the mass imbalance at the speed of the wind.
double unsolved_momentum(const MomentumBalance& b, double resid_u);

}  // namespace torvex::test
