#include "solver/solve_controls.hpp"

#include <algorithm>

namespace torvex {

SolveControls solve_controls(const CaseSettings& settings) {
    return {.URFU = settings.URFU,
            .URFV = settings.URFV,
            .URFW = settings.URFW,
            .URFP = settings.URFP,
            .URFK = settings.URFK,
            .URFE = settings.URFE,
            .URFVIS = settings.URFVIS,
            .NSWPU = settings.NSWPU,
            .NSWPV = settings.NSWPV,
            .NSWPW = settings.NSWPW,
            .NSWPP = settings.NSWPP,
            .NSWPK = settings.NSWPK,
            .NSWPE = settings.NSWPE};
}

void boost(SolveControls& controls, const CaseSettings& settings) {
    const auto raise = [](float& factor, float ceiling) {
        factor = std::min(ceiling, 2.0F * factor);
    };
    raise(controls.URFU, settings.URFU_MAX);
    raise(controls.URFV, settings.URFV_MAX);
    raise(controls.URFW, settings.URFW_MAX);
    raise(controls.URFP, settings.URFP_MAX);
    raise(controls.URFK, settings.URFK_MAX);
    raise(controls.URFE, settings.URFE_MAX);
}

}  // namespace torvex
