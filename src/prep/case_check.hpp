#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/stop.hpp"
#include "case/case_text.hpp"
#include "case/key_account.hpp"
#include "mesh/ground_slopes.hpp"
#include "run/run_state.hpp"

// What torvex-prep check finds out about a case: what a run would do, by the code of a run, without
// its files.
namespace torvex {

// One of the maps that must reach under the whole mesh.
struct MapCheck {
    std::string name;   // "terrain map", "roughness map"
    float cover_m = 0;  // from the centre to the nearest side
    // Longer side of the largest study area of this shape, up to that of the case, with which the
    // map covers the mesh in every direction; 0: none. Nothing where the lines do not come from it.
    std::optional<float> largest_study_m;
    std::vector<float> outside;  // wind directions whose mesh leaves the map [deg]
};

enum class DirectionState : std::uint8_t { good, saved, skipped, stopped, not_looked_at };

struct DirectionCheck {
    float angle = 0;  // [deg]
    DirectionState state = DirectionState::not_looked_at;
    int stop = 0;               // code, where a run stops in this direction
    float least_d_over_z0 = 0;  // centre of the first cell over the roughness length, smallest [-]
    GroundSlopes slopes;
};

struct SiteCheck {
    std::string label;
    bool inside = false;          // in the mesh of every direction
    std::optional<float> ground;  // height above the map datum in the first mesh [m]
};

struct ResourceCheck {
    std::int64_t memory = 0;        // of a direction at work [bytes]
    bool memory_measured = false;   // else estimated
    std::int64_t memory_limit = 0;  // this machine's
    std::optional<std::int64_t> group_limit;
    std::int64_t disk = 0;  // what a direction leaves
    std::optional<std::int64_t> disk_free;
};

struct CaseCheck {
    KeyAccount keys;
    bool sized = false;  // the members from here on
    int ni = 0, nj = 0, nk = 0;
    std::vector<MapCheck> maps;
    ResourceCheck resources;
    std::vector<DirectionCheck> directions;
    std::vector<SiteCheck> sites;
    std::optional<double> s_per_iteration;
    std::optional<Stop> stop;  // the first that a run would meet

    std::int64_t cells() const { return std::int64_t{ni} * nj * nk; }
};

// All of it. A stop is kept in the record, and what is known by then stands.
void check_case(const CaseText& file, CaseSettings& settings, Run& run, CaseCheck& check);

// The steps of it behind the sizing.
std::vector<MapCheck> check_maps(const Run& run);
ResourceCheck check_resources(const Run& run);

// What there is too little of, a sentence each. Pure arithmetic.
std::vector<std::string> resource_warnings(const ResourceCheck& resources, int directions);

// Prepares a direction as a run does, measures it, and, where the record has no time yet, iterates
// for about a second. Stops as a run does.
void check_direction(Run& run, int iwd, CaseCheck& check);

// The record as lines for people, and as JSON.
std::vector<std::string> check_lines(const Run& run, const CaseCheck& check);
std::string check_json(const Run& run, const CaseCheck& check);

}  // namespace torvex
