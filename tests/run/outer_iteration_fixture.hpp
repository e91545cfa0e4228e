#pragma once

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "results/restart_info.hpp"
#include "run/outer_iteration.hpp"
#include "run/run_fixture.hpp"

namespace torvex::test {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float far_off = 1.0e12F;  // raw residual that meets no criterion and is no divergence

// Routines that leave raw residuals of `level` and fluxes that carry what the inflow plane brings.
// A test changes any of them.
class FakeEquations {
 public:
    float level = 1.0F;               // raw residual of every equation
    std::vector<std::string> called;  // names in the order of the calls
    int iterations = 0;

    Equations equations() {
        Equations e;
        e.CALCU = sweep("CALCU", &FlowState::resid_u);
        e.CALCV = sweep("CALCV", &FlowState::resid_v);
        e.CALCW = sweep("CALCW", &FlowState::resid_w);
        e.CALCP = sweep("CALCP", &FlowState::resid_m);
        e.CALCKE = sweep("CALCKE", &FlowState::resid_k);
        e.CALCED = sweep("CALCED", &FlowState::resid_e);
        e.CALCKLM = sweep("CALCKLM", &FlowState::resid_klm);
        e.CALCLM = update("CALCLM");
        e.CALCLM_ = update("CALCLM_");
        e.CALCVIS = update("CALCVIS");
        return e;
    }

 private:
    Equations::Solve sweep(const std::string& name, float FlowState::*residual) {
        return [this, name, residual](const SolverContext& c, int iter, int /*interval*/) {
            called.push_back(name);
            iterations = iter;
            c.flow.*residual = level;
            if (name == "CALCP") {
                c.flow.flxU.fill(1.0F);
            }
            return SolveRecords{};
        };
    }
    Equations::Update update(const std::string& name) {
        return [this, name](const SolverContext& /*c*/) { called.push_back(name); };
    }
};

// The loop over a small level case, its routines given by the test.
class OuterIterationTest : public RunTest {
 protected:
    // Runs the flat case in this process. 99 cells of inflow plane or so: any level below 0.001
    // times the inflow converges, 1e30 does not.
    RunHere solve(const CaseItems& items, const Equations& equations) const {
        // Flat ground without a prefix, and the roughness of the map.
        CaseItems all{{"NML_RUN", "TERRAIN_MODE = 'flatX'"},
                      {"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 1"}};
        all.insert(all.end(), items.begin(), items.end());
        write_case(all);
        return run_here({}, [&equations](torvex::Run& run, Direction& direction) {
            OUTER_ITERATION(run, direction, equations);
        });
    }
    bool has(const std::string& name) const { return directory.has("restart-000_0-" + name); }
    RestartInfo info(const std::string& name = "restart.info") const {
        return read_restart_info(directory.file("restart-000_0-" + name)).value();
    }
    std::string convergence_log() const { return directory.read("restart-000_0-torvex.conv.log"); }
};

}  // namespace torvex::test
