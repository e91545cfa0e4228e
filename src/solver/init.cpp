// INIT: the fields at the start of a wind direction, from the power law of the ground's roughness
// (power_law.hpp), from a profile given by the user or from an equilibrium layer
// (equilibrium_layer.cpp, which has a ted of its own), column by column at the height h above the
// column's own ground.
//
//   length = min(0.4 h, 0.4 Zg)
//   ted    = CMU^0.75 tke^1.5 / length
//   vis    = CMU DENSIT tke^2 / (TINY + ted) + VISCOS
//
// reads   zc, z0; SPECIFY_INFLOW_PROFILE and its file; with a canopy log-upwind_roughness-<tag>
// writes  u, tke, ted, vis in all cells; lm = length, tkl = tke, viskl = vis in models 2 and 4;
//         the other fields are 0
// ground  k = 1: u = 0, vis = VISCOS, the rest copies k = 2; the power law is never taken at h = 0
//
// All in single precision. 0.4 is the factor of the length here, not von Karman's constant.

#include "solver/init.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "base/assertion.hpp"
#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/upwind_roughness_log.hpp"
#include "solver/constants.hpp"
#include "solver/equilibrium_layer.hpp"
#include "solver/flow_fields.hpp"
#include "solver/inflow_profile.hpp"
#include "solver/power_law.hpp"

namespace torvex {

namespace {

// A nested run takes its inflow from the parent, whatever profile the case names.
bool profile_in_use(const CaseSettings& settings) {
    return settings.SPECIFY_INFLOW_PROFILE && !settings.nested();
}

// The upwind roughness that the roughness routine of canopy runs left for this direction: all
// columns share its exponent. Nothing if it left none.
std::optional<float> upwind_roughness(const CaseSettings& settings, const std::string& tag) {
    // Nested runs write no such file; the parent's carries no prefix.
    const std::string prefix = settings.nested() ? "" : settings.run_prefix;
    const std::optional<float> z_up =
        read_upwind_roughness(prefix + upwind_roughness_name(tag),
                              "delete the file, or let an earlier run write it anew");
    if (!z_up) {
        console("[CNPY]: fail to open log-upwind_roughness");
    }
    return z_up;
}

// What the formulas divide by or take the logarithm of.
void check_columns(const GridGeometry& g, const Field2& z0) {
    for (int j = 1; j <= g.nj; ++j) {
        for (int i = 1; i <= g.ni; ++i) {
            if (!(z0(i, j) > 0.0F) || !std::isfinite(z0(i, j))) {
                stop(1, "the roughness length" + edit::E(z0(i, j), 12, 4) + " m is not above 0",
                     "column (" + std::to_string(i) + ", " + std::to_string(j) + ")",
                     "check the roughness that the case, its maps or its canopy file give");
            }
            // Node levels rise (the mesh sees to it), so that the lowest cell tells.
            if (!(g.zc(i, j, 2) > g.zc(i, j, 1))) {
                stop(1, "the lowest cell does not lie above the ground",
                     "column (" + std::to_string(i) + ", " + std::to_string(j) + ")",
                     "check MIN_DZ and the ground of the mesh");
            }
        }
    }
}

// The power law of every column, `z0_up` in place of the local roughness in the exponent.
Array2<PowerLaw> power_laws(const GridGeometry& g, const Field2& z0, std::optional<float> z0_up) {
    Array2<PowerLaw> laws(g.ni, g.nj);
    for (int j = 1; j <= g.nj; ++j) {
        for (int i = 1; i <= g.ni; ++i) {
            laws(i, j) = {shear_exponent(z0_up.value_or(z0(i, j))), gradient_height(z0(i, j))};
        }
    }
    return laws;
}

void fill_by_power_law(const GridGeometry& g, const Array2<PowerLaw>& laws, FlowState& s) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const float h = height_above_ground(g, i, j, k);
                s.u(i, j, k) = speed_at(laws(i, j), h);
                s.tke(i, j, k) = energy_at(laws(i, j), h);
            }
        }
    }
    copy_lowest_level(s.tke);
}

void fill_by_profile(const GridGeometry& g, const InflowProfile& profile, FlowState& s) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const ProfilePlace place = place_in(profile, height_above_ground(g, i, j, k));
                s.u(i, j, k) = value_at(profile.u, place);
                s.tke(i, j, k) = value_at(profile.tke, place);
            }
        }
    }
    copy_lowest_level(s.tke);
}

void log_inflow(RunLog& log, float wd_angle, const std::string& what) {
    log.timed(" WD " + edit::F(wd_angle, 5, 1) + ": " + what);
}

// The exponent is that of the layer at a tenth of Zg, for comparison with that of a power law.
void log_layer(RunLog& log, float wd_angle, const EquilibriumLayer& layer) {
    log_inflow(
        log, wd_angle,
        "Inflow: equilibrium layer, u*=" + edit::F(layer.u_star, 8, 4) +
            ", z0=" + edit::E(layer.z0, 12, 4) + ", Zg=" + edit::F(layer.Zg, 10, 3) +
            ", exponent at Zg/10=" + edit::F(shear_exponent_at(layer, 0.1F * layer.Zg), 8, 4));
}

}  // namespace

void INIT(const CaseSettings& settings, const GridGeometry& g, float wd_angle,
          const std::string& tag, RunLog& log, FlowState& s) {
    allocate_fields(s, g, settings.TURBULENCE_MODEL);
    check_columns(g, s.z0);
    if (profile_in_use(settings)) {
        fill_by_profile(g, read_inflow_profile(settings), s);
        log_inflow(log, wd_angle, "Inflow profile was specified.");
    } else if (settings.equilibrium_inflow()) {
        log_layer(log, wd_angle, equilibrium_layer(s.z0(1, 1)));
    } else {
        std::optional<float> z0_up;
        if (settings.canopy_on()) {
            z0_up = upwind_roughness(settings, tag);
        }
        const Array2<PowerLaw> laws = power_laws(g, s.z0, z0_up);
        fill_by_power_law(g, laws, s);
        if (!settings.nested()) {
            log_inflow(log, wd_angle,
                       "Inflow: alpha=" + edit::F(laws(1, 1).alpha, 8, 4) +
                           ", Zg=" + edit::F(laws(1, 1).Zg, 10, 3));
        }
    }
    fill_dissipation(settings, g, s);
    if (settings.equilibrium_inflow()) {
        fill_equilibrium_layer(settings, g, s);  // the length is that of fill_dissipation
    }
    fill_viscosity(settings, s);
}

void copy_lowest_level(Field3& field) {
    for (int j = 1; j <= field.nj(); ++j) {
        for (int i = 1; i <= field.ni(); ++i) {
            field(i, j, 1) = field(i, j, 2);
        }
    }
}

void fill_dissipation(const CaseSettings& settings, const GridGeometry& g, FlowState& s) {
    const float cmu34 = std::pow(settings.CMU, 0.75F);
    const bool with_length = s.lm.size() > 0;
    Field2 longest(g.ni, g.nj);
    for (int j = 1; j <= g.nj; ++j) {
        for (int i = 1; i <= g.ni; ++i) {
            longest(i, j) = 0.4F * gradient_height(s.z0(i, j));
        }
    }
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const float length =
                    std::min(0.4F * height_above_ground(g, i, j, k), longest(i, j));
                const float tke = s.tke(i, j, k);
                s.ted(i, j, k) = cmu34 * std::sqrt(tke) * tke / length;
                if (with_length) {
                    s.lm(i, j, k) = length;
                }
            }
        }
    }
    copy_lowest_level(s.ted);
    if (with_length) {
        copy_lowest_level(s.lm);
    }
}

void fill_viscosity(const CaseSettings& settings, FlowState& s) {
    const float cmu_den = settings.CMU * settings.DENSIT;
    const float viscos = settings.VISCOS;
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= s.vis.nk(); ++k) {
        for (int j = 1; j <= s.vis.nj(); ++j) {
#pragma omp simd
            for (int i = 1; i <= s.vis.ni(); ++i) {
                const float tke = s.tke(i, j, k);
                s.vis(i, j, k) = cmu_den * (tke * tke) / (TINY + s.ted(i, j, k)) + viscos;
            }
        }
    }
    if (s.lm.size() > 0) {
        s.tkl = s.tke;
        s.viskl = s.vis;
        copy_lowest_level(s.viskl);
    }
    for (int j = 1; j <= s.vis.nj(); ++j) {
        for (int i = 1; i <= s.vis.ni(); ++i) {
            s.vis(i, j, 1) = viscos;
        }
    }
}

void apply_stored_start(FlowState& s, FlowState stored) {
    for (const FlowField& start : start_fields) {
        Field3& field = s.*start.member;
        Field3& from = stored.*start.member;
        require(from.ni() == field.ni() && from.nj() == field.nj() && from.nk() == field.nk(),
                "a stored start of another mesh");
        if (start.member != &FlowState::p) {
            for (int k = 1; k <= field.nk(); ++k) {
                for (int j = 1; j <= field.nj(); ++j) {
                    from(1, j, k) = field(1, j, k);
                }
            }
        }
        field = std::move(from);
    }
}

}  // namespace torvex
