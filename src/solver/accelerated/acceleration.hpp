#pragma once

#include <array>
#include <string>

#include "solver/accelerated/accelerated_work.hpp"
#include "solver/accelerated/stage.hpp"
#include "solver/accelerated/trouble.hpp"
#include "solver/outer_step.hpp"

namespace torvex {

// What the iterations remember beside the fields; with it a resume goes on as if there had been no
// stop.
struct AccelerationMemory {
    Stage stage = Stage::common;
    int begun = 0;  // iterations of the direction when the stage began
    Course course;
    Cycling cycling;
    bool cycles = true;      // false: they did harm and are left out
    float before_cycle = 0;  // mass residual in front of the last cycle, 0: none yet
};

// The accelerated iterations of one direction. It keeps copies of the fields to go back to: those
// of the start, and those in front of a cycle.
class Acceleration {
 public:
    // `fresh`: the fields are those of a start, not of a resume.
    Acceleration(AccelerationMemory& memory, bool fresh) : memory_(memory), fresh_(fresh) {}

    StepReport operator()(const SolverContext& c, int iter, int interval);

 private:
    using Kept = std::array<Field3, 14>;

    void prepare(const SolverContext& c, StepReport& report);
    void make_levels(const SolverContext& c, StepReport& report);
    void renew_levels(const SolverContext& c);
    void begin(const SolverContext& c, Stage stage, int iter, StepReport& report);
    bool goes_wrong(const SolverContext& c, int iter, StepReport& report);
    void keep_before_cycle(const FlowState& s);
    void undo_cycle(const SolverContext& c, StepReport& report);
    void iterate(const SolverContext& c, int iter, int interval, StepReport& report);
    StepReport plain_iteration(const SolverContext& c, int iter, int interval, StepReport report);
    void choose_set(const CaseSettings& settings);

    AccelerationMemory& memory_;
    bool fresh_;
    bool prepared_ = false;
    AcceleratedWork work_;
    Kept start_;   // the fields that a stage begins from
    Kept before_;  // the fields in front of the last cycle
    OuterStep plain_;
};

// How many meshes ACCEL_LEVELS asks for on a mesh of so many cells: by size (0) the fewest, at
// least two, whose coarsest has less than 80 000 cells.
int levels_wanted(int accel_levels, double cells);

}  // namespace torvex
