#pragma once

namespace torvex {

// How an accelerated iteration is relaxed.
struct WorkingSet {
    float momentum = 0.9F;     // under-relaxation of u, v, w [-]
    float turbulence = 0.95F;  // of tke, ted and tkl [-]
    float viscosity = 1.0F;    // of vis [-]
    float limit = 3.0F;        // factor within which tke, ted and tkl stay in an iteration [-]
    float pressure = 0.6F;     // part of the consistent pressure correction that p takes [-]
    bool steep = false;        // the diffusion across the faces damps momentum
};

// How the coarse meshes help.
struct Cycling {
    int every = 2;              // iterations between two cycles
    int coarse_iterations = 4;  // on the coarse mesh in a cycle
    int start_iterations = 12;  // there at the start of a direction
    float gain = 1.2F;          // factor on the coarse change
};

// The set to begin with, and the one for ground too steep for it. With cycles on coarse meshes the
// first one takes more of the pressure correction.
inline constexpr WorkingSet common_set{};
inline constexpr WorkingSet robust_set{
    .turbulence = 0.9F, .viscosity = 0.8F, .limit = 1.5F, .steep = true};
inline constexpr float pressure_with_cycles = 1.2F;

}  // namespace torvex
