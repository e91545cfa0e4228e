#pragma once

#include "base/case_settings.hpp"

namespace torvex {

// How the equations of a direction are relaxed and swept: copied from the case, and all of it that
// changes while a direction is solved.
struct SolveControls {
    float URFU = 0, URFV = 0, URFW = 0;    // under-relaxation of momentum [-]
    float URFP = 0;                        // part of the correction that the pressure takes [-]
    float URFK = 0, URFE = 0, URFVIS = 0;  // of turbulence energies, dissipation, viscosity [-]
    int NSWPU = 0, NSWPV = 0, NSWPW = 0;   // most sweeps in a call
    int NSWPP = 0;                         // most cycles of the pressure solver
    int NSWPK = 0, NSWPE = 0;
};

// Where a direction begins.
SolveControls solve_controls(const CaseSettings& settings);

// BOOSTCAL: the factors double, up to their ceilings; URFVIS is left alone on purpose.
void boost(SolveControls& controls, const CaseSettings& settings);

}  // namespace torvex
