#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "solver/flow_state.hpp"

// The list of the flow's fields on the cells. What makes room for them, clears them, stores them,
// reads them back and looks at their values goes through it; python/torvex/fields.py is made of it.
namespace torvex {

// What outlives the solve.
enum class Kept {
    start,          // in the start fields and in every result
    result,         // in every result
    kl_result,      // in results of the models with a mixing length, 2 and 4
    hybrid_result,  // in results of the hybrid model 4
    no              // scratch: cleared at the start of a direction
};

enum class Models { all, with_length };  // models 2 and 4 have a mixing length

// A field: name, unit and meaning as files and readers tell them, and where it stands.
struct FlowField {
    std::string_view name;
    std::string_view unit;
    std::string_view long_name;
    Field3 FlowState::*member;
    Models models = Models::all;  // that have the field
    Kept kept = Kept::no;
};

// Fields that are kept stand in the order of their records, those of the start fields first.
inline constexpr std::array flow_fields{
    FlowField{"u", "m/s", "velocity along the mesh axis i", &FlowState::u, {}, Kept::start},
    FlowField{"v", "m/s", "velocity along the mesh axis j", &FlowState::v, {}, Kept::start},
    FlowField{"w", "m/s", "vertical velocity", &FlowState::w, {}, Kept::start},
    FlowField{"p", "Pa", "pressure", &FlowState::p, {}, Kept::start},
    FlowField{"tke", "m2/s2", "turbulence energy", &FlowState::tke, {}, Kept::start},
    FlowField{"ted", "m2/s3", "dissipation of turbulence energy", &FlowState::ted, {}, Kept::start},
    FlowField{
        "flxU", "m3/s", "volume flux through the east face", &FlowState::flxU, {}, Kept::result},
    FlowField{
        "flxV", "m3/s", "volume flux through the north face", &FlowState::flxV, {}, Kept::result},
    FlowField{
        "flxW", "m3/s", "volume flux through the top face", &FlowState::flxW, {}, Kept::result},
    FlowField{"vis", "kg/(m s)", "effective viscosity", &FlowState::vis, {}, Kept::result},
    FlowField{"pp", "Pa", "pressure correction", &FlowState::pp, {}, Kept::result},
    FlowField{"lm", "m", "mixing length", &FlowState::lm, Models::with_length, Kept::kl_result},
    FlowField{"tkl", "m2/s2", "turbulence energy of the k-l part", &FlowState::tkl,
              Models::with_length, Kept::hybrid_result},
    FlowField{"viskl", "kg/(m s)", "viscosity of the k-l part", &FlowState::viskl,
              Models::with_length, Kept::hybrid_result},
    FlowField{"den", "kg/m3", "density", &FlowState::den},
    FlowField{"gen", "m2/s3", "production of turbulence energy", &FlowState::gen},
    FlowField{"dUxi", "m3 s/kg", "gain of u per pressure drop along i", &FlowState::dUxi},
    FlowField{"dUet", "m3 s/kg", "gain of u per pressure drop along j", &FlowState::dUet},
    FlowField{"dUze", "m3 s/kg", "gain of u per pressure drop along k", &FlowState::dUze},
    FlowField{"dVxi", "m3 s/kg", "gain of v per pressure drop along i", &FlowState::dVxi},
    FlowField{"dVet", "m3 s/kg", "gain of v per pressure drop along j", &FlowState::dVet},
    FlowField{"dVze", "m3 s/kg", "gain of v per pressure drop along k", &FlowState::dVze},
    FlowField{"dWxi", "m3 s/kg", "gain of w per pressure drop along i", &FlowState::dWxi},
    FlowField{"dWet", "m3 s/kg", "gain of w per pressure drop along j", &FlowState::dWet},
    FlowField{"dWze", "m3 s/kg", "gain of w per pressure drop along k", &FlowState::dWze},
    FlowField{"coefXi", "m3/(s Pa)", "flux per pressure drop at the east face", &FlowState::coefXi},
    FlowField{"coefEt", "m3/(s Pa)", "flux per pressure drop at the north face",
              &FlowState::coefEt},
    FlowField{"coefZe", "m3/(s Pa)", "flux per pressure drop at the top face", &FlowState::coefZe},
};

// Whether a run of that model has the field.
constexpr bool has_field(int turbulence_model, const FlowField& f) {
    return f.models == Models::all || turbulence_model == 2 || turbulence_model == 4;
}

// The arrays of the linear system but its sources: scratch as well.
inline constexpr std::array system_fields{&LinearSystem::ae, &LinearSystem::aw, &LinearSystem::an,
                                          &LinearSystem::as, &LinearSystem::at, &LinearSystem::ab,
                                          &LinearSystem::ap, &LinearSystem::res};

static_assert(std::ranges::is_sorted(flow_fields, {}, &FlowField::kept),
              "fields stand in the order of their records, scratch behind them");

// The fields from one kind to another, both included, in the order of their records.
constexpr std::span<const FlowField> fields_kept(Kept first, Kept last) {
    return {std::ranges::lower_bound(flow_fields, first, {}, &FlowField::kept),
            std::ranges::upper_bound(flow_fields, last, {}, &FlowField::kept)};
}

inline constexpr auto start_fields = fields_kept(Kept::start, Kept::start);
inline constexpr auto result_fields = fields_kept(Kept::start, Kept::result);  // of every result
inline constexpr auto length_fields = fields_kept(Kept::kl_result, Kept::hybrid_result);
inline constexpr auto kept_fields = fields_kept(Kept::start, Kept::hybrid_result);

// Room for some of the fields, ni*nj*nk each, all at 0; the others stay as they are.
inline void allocate(FlowState& s, std::span<const FlowField> fields, int ni, int nj, int nk) {
    for (const FlowField& field : fields) {
        (s.*field.member).allocate(ni, nj, nk);
    }
}

}  // namespace torvex
