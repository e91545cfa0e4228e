#pragma once

namespace torvex {

// d: what a velocity component of a cell gains per unit of the pressure drop across the cell along
// one direction of the mesh [m3 s/kg], from the component's metric in that direction [m2] and the
// central coefficient ap of its equation [kg/s]. The momentum equations leave it in dUxi..dWze; the
// face fluxes, the equation of the pressure correction and the corrections all take it from there.
[[gnu::always_inline]] inline float pressure_gain(float metric, float ap) {
    return metric / ap;
}

}  // namespace torvex
