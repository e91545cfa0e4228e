// The accelerated iterations of a direction: which working set, when a cycle, what to do when it
// goes wrong.
//
//   common set -> robust set -> the plain iteration
//
// A stage that fails gives way to the next one, which begins from the direction's start fields
// (behind a resume from the resumed ones); the count of iterations goes on. Trouble is judged by
// the mass residual in front of a cycle, never behind it. A cycle behind which that residual has
// become threefold is undone; cycles are weaker then, and left out the second time.

#include "solver/accelerated/acceleration.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "solver/accelerated/accelerated_iteration.hpp"
#include "solver/accelerated/coarse_level.hpp"
#include "solver/accelerated/copy_field.hpp"
#include "solver/accelerated/plain_fields.hpp"
#include "solver/clearing_pass.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

namespace {

constexpr std::array kept_members{
    &FlowState::u,   &FlowState::v,   &FlowState::w,    &FlowState::p,    &FlowState::tke,
    &FlowState::ted, &FlowState::vis, &FlowState::flxU, &FlowState::flxV, &FlowState::flxW,
    &FlowState::pp,  &FlowState::lm,  &FlowState::tkl,  &FlowState::viskl};

// A field of zeros, as most are at a start, is kept without room.
bool is_zero(const Field3& x) {
    return std::all_of(x.data(), x.data() + x.size(), [](float value) { return value == 0.0F; });
}

template <class Kept>
void bring_back(const Kept& kept, FlowState& s) {
    for (std::size_t n = 0; n < kept_members.size(); ++n) {
        Field3& to = s.*kept_members[n];
        if (kept[n].size() == 0) {
            to.fill(0.0F);
        } else {
            copy_field(kept[n], to);
        }
    }
}

double cells_of(const GridGeometry& g) {
    return static_cast<double>(g.nx - 1) * (g.ny - 1) * (g.nz - 1);
}

// As they are in front of the first iteration.
void clear_residuals(FlowState& s) {
    for (float* x :
         {&s.resid_m, &s.resid_u, &s.resid_v, &s.resid_w, &s.resid_k, &s.resid_e, &s.resid_klm,
          &s.scale_u, &s.scale_v, &s.scale_w, &s.scale_k, &s.scale_e, &s.scale_klm}) {
        *x = 0.0F;
    }
}

// Residuals of a state that nobody has tested: 1, once they are normalised.
void unknown_residuals(FlowState& s) {
    s.resid_m = s.flow_in;
    for (float* x : {&s.resid_u, &s.resid_v, &s.resid_w, &s.resid_k, &s.resid_e, &s.resid_klm}) {
        *x = s.momentum_in;
    }
}

bool is_broken(const FlowState& s) {
    const std::array residuals{s.resid_m, s.resid_u, s.resid_v, s.resid_w, s.resid_k, s.resid_e};
    return std::ranges::any_of(residuals, [](float r) { return !std::isfinite(r); }) ||
           s.resid_m > 1.0e3F * s.flow_in;
}

constexpr std::string_view name_of(Stage stage) {
    return stage == Stage::robust ? "the set for steep ground" : "the keys of the case";
}

}  // namespace

int levels_wanted(int accel_levels, double cells) {
    if (accel_levels != 0) {
        return accel_levels;
    }
    constexpr double most = 80000;
    int levels = 2;
    for (double coarsest = cells / 4; coarsest >= most; coarsest /= 4) {
        ++levels;
    }
    return levels;
}

void Acceleration::make_levels(const SolverContext& c, StepReport& report) {
    const int wanted = levels_wanted(c.settings.ACCEL_LEVELS, cells_of(c.grid));
    const auto add_below = [&](const auto& self, const SolverContext& fine, AcceleratedWork& work,
                               int level) -> int {
        if (level == wanted) {
            return level;
        }
        work.coarser = make_coarse_level(fine);
        if (!work.coarser) {
            report.notes.push_back("Accelerated iteration: mesh " + std::to_string(level + 1) +
                                   " would be too small and is left out.");
            return level;
        }
        return self(self, context_of(fine, *work.coarser), work.coarser->work, level + 1);
    };
    const int made = add_below(add_below, c, work_, 1);
    report.notes.push_back("Accelerated iteration on " + std::to_string(made) +
                           (made == 1 ? " mesh." : " meshes."));
}

// Weak cycles, and those between side walls, go with the smaller part of the pressure correction.
void Acceleration::choose_set(const CaseSettings& settings) {
    const bool cycles = work_.coarser && memory_.cycles;
    WorkingSet set = memory_.stage == Stage::robust ? robust_set : common_set;
    const bool full = memory_.cycling.gain >= Cycling{}.gain && !settings.walls_on_sides();
    if (cycles && full && memory_.stage == Stage::common) {
        set.pressure = pressure_with_cycles;
    }
    for (AcceleratedWork* work = &work_; work != nullptr;
         work = work->coarser ? &work->coarser->work : nullptr) {
        work->set = set;
    }
}

void Acceleration::prepare(const SolverContext& c, StepReport& report) {
    prepared_ = true;
    plain_ = step_through(flow_equations());
    if (memory_.stage == Stage::plain) {
        return;
    }
    for (std::size_t n = 0; n < kept_members.size(); ++n) {
        const Field3& field = c.flow.*kept_members[n];
        if (!is_zero(field)) {
            start_[n] = field;
        }
    }
    release_plain_fields(c.flow);
    make_levels(c, report);
    choose_set(c.settings);
}

// The boundary values of the coarse meshes are those of broken fields otherwise.
void Acceleration::renew_levels(const SolverContext& c) {
    const auto renew = [](const auto& self, const SolverContext& fine,
                          AcceleratedWork& work) -> void {
        if (work.coarser) {
            restrict_fields(fine, *work.coarser, false);
            self(self, context_of(fine, *work.coarser), work.coarser->work);
        }
    };
    renew(renew, c, work_);
}

// The fields of the start, as in front of the first iteration.
void Acceleration::begin(const SolverContext& c, Stage stage, int iter, StepReport& report) {
    bring_back(start_, c.flow);
    memory_ = {};
    memory_.stage = stage;
    memory_.begun = iter - 1;
    report.notes.push_back("Accelerated iteration: it. " + std::to_string(iter) +
                           " begins anew with " + std::string(name_of(stage)) + ".");
    if (stage != Stage::plain) {
        renew_levels(c);
        choose_set(c.settings);
        return;
    }
    allocate_plain_fields(c.grid, c.flow);
    clearing_pass(c.settings, c.flow);
    clear_residuals(c.flow);
    work_ = AcceleratedWork();
    start_ = Kept();
    before_ = Kept();
}

void Acceleration::keep_before_cycle(const FlowState& s) {
    for (std::size_t n = 0; n < kept_members.size(); ++n) {
        if (kept_members[n] != &FlowState::pp) {
            copy_field(s.*kept_members[n], before_[n]);
        }
    }
}

void Acceleration::undo_cycle(const SolverContext& c, StepReport& report) {
    // Behind a resume there are none from in front of the cycle.
    const bool kept = std::ranges::any_of(before_, [](const Field3& x) { return x.size() > 0; });
    bring_back(kept ? before_ : start_, c.flow);
    const bool again = memory_.cycling.gain < Cycling{}.gain;
    if (again) {
        memory_.cycles = false;
    } else {
        memory_.cycling.coarse_iterations = 2;
        memory_.cycling.gain = 0.8F;
    }
    choose_set(c.settings);
    memory_.before_cycle = 0;
    report.notes.emplace_back(
        again ? "Accelerated iteration: a cycle is undone, no more are made."
              : "Accelerated iteration: a cycle is undone, the next are weaker.");
}

// True where a new stage has begun. At the head of an iteration the mass residual is that of the
// one before, normalised.
bool Acceleration::goes_wrong(const SolverContext& c, int iter, StepReport& report) {
    const int seen = iter - 1 - memory_.begun;
    const bool cycles = work_.coarser && memory_.cycles;
    if (seen == 0 || (cycles && seen % memory_.cycling.every != 0)) {
        return false;
    }
    const float resid_m = c.flow.resid_m;
    constexpr float harm = 3.0F;
    if (cycles && memory_.before_cycle > 0.0F && resid_m > harm * memory_.before_cycle) {
        c.flow.resid_m = memory_.before_cycle;
        undo_cycle(c, report);
        return false;
    }
    if (judge(memory_.course, seen, resid_m) == Trouble::none) {
        return false;
    }
    begin(c, memory_.stage == Stage::common ? Stage::robust : Stage::plain, iter, report);
    return true;
}

void Acceleration::iterate(const SolverContext& c, int iter, int interval, StepReport& report) {
    const int seen = iter - 1 - memory_.begun;
    Coarse coarse = Coarse::nothing;
    if (work_.coarser && memory_.cycles) {
        coarse = seen == 0 && fresh_ ? Coarse::start : coarse_at(memory_.cycling, seen);
    }
    if (coarse == Coarse::cycle) {
        keep_before_cycle(c.flow);
        memory_.before_cycle = seen == 0 ? 0.0F : c.flow.resid_m;
    }
    const bool residuals = iter % interval == 0;
    const SolveRecord pressure =
        accelerated_iteration(c, work_, memory_.cycling, coarse, residuals);
    report.solves.push_back({" uvw", {.n = 2, .r0 = residuals ? c.flow.resid_u : 0.0F}});
    report.solves.push_back({"   p", pressure});
    report.tested = residuals;
    if (!is_broken(c.flow)) {
        return;
    }
    report.tested = false;
    if (work_.coarser && memory_.cycles && memory_.before_cycle > 0.0F) {
        unknown_residuals(c.flow);
        c.flow.resid_m = memory_.before_cycle * c.flow.flow_in;
        undo_cycle(c, report);
    } else {
        begin(c, memory_.stage == Stage::common ? Stage::robust : Stage::plain, iter + 1, report);
        unknown_residuals(c.flow);
    }
}

StepReport Acceleration::plain_iteration(const SolverContext& c, int iter, int interval,
                                         StepReport report) {
    const int count = iter - memory_.begun;
    if (c.settings.canopy_on()) {
        c.flow.canopy_source_factor = count >= c.settings.canopy.start_cal_src ? 1.0F : 0.0F;
    }
    StepReport plain = plain_(c, count, interval);
    plain.notes.insert(plain.notes.begin(), report.notes.begin(), report.notes.end());
    return plain;
}

StepReport Acceleration::operator()(const SolverContext& c, int iter, int interval) {
    StepReport report;
    if (!prepared_) {
        prepare(c, report);
    }
    if (c.settings.canopy_on() && iter == c.settings.canopy.start_cal_src) {
        // The sources of the canopy raise the residuals from here on.
        memory_.course = {};
        memory_.before_cycle = 0;
    }
    while (memory_.stage != Stage::plain && goes_wrong(c, iter, report)) {
    }
    if (iter - 1 == memory_.begun) {
        c.flow.flow_in = c.flow.outflow_mass;  // start fields carry no flux yet
    }
    if (memory_.stage == Stage::plain) {
        return plain_iteration(c, iter, interval, std::move(report));
    }
    iterate(c, iter, interval, report);
    return report;
}

}  // namespace torvex
