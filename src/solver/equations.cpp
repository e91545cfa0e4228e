#include "solver/equations.hpp"

#include "solver/calcp.hpp"
#include "solver/calcu.hpp"
#include "solver/calcv.hpp"
#include "solver/calcw.hpp"
#include "solver/turbulence/turbulence.hpp"

namespace torvex {

Equations flow_equations() {
    return {.CALCU = torvex::CALCU,
            .CALCV = torvex::CALCV,
            .CALCW = torvex::CALCW,
            .CALCP = torvex::CALCP,
            .CALCKE = torvex::CALCKE,
            .CALCED = torvex::CALCED,
            .CALCKLM = torvex::CALCKLM,
            .CALCLM = torvex::CALCLM,
            .CALCLM_ = torvex::CALCLM_,
            .CALCVIS = torvex::CALCVIS};
}

}  // namespace torvex
