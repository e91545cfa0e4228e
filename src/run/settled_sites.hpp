#pragma once

#include <vector>

#include "base/case_settings.hpp"
#include "results/mesh_column.hpp"
#include "run/run_state.hpp"

namespace torvex {

// The rule of STOP_SITES: a direction has settled where, over the last `window` iterations, the
// speed at MONITOR_HEIGHT above each site in the mesh and at the monitor has moved by less than
// that fraction of its value. The speeds behind them are kept in direction.settling.
class SettledSites {
 public:
    // Nothing is watched where the rule is off or no site lies in the mesh.
    SettledSites(const CaseSettings& settings, const Direction& direction);

    bool on() const { return !places_.empty(); }
    int sites() const { return sites_; }

    // Takes the speeds behind an iteration. `window` is the one that the iteration of now goes by.
    void record(const GridGeometry& grid, const FlowState& flow, int window, Settling& kept) const;

    bool settled(int window, const Settling& kept) const;

 private:
    float fraction_;
    float height_;
    std::vector<ColumnPlace> places_;  // of the sites, then of the monitor
    int sites_ = 0;
};

// Iterations over which speeds are compared. Slow relaxation hides a change that goes on: with the
// factor URFU a plain iteration covers as much as 9 (1 - URFU)/URFU times fewer at 0.9.
int settling_window(const CaseSettings& settings, const AccelerationMemory& memory,
                    bool accelerated);

}  // namespace torvex
