#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "run/run_state.hpp"

namespace torvex {

// What the ground, the roughness and the inflow of a direction were made from, kept beside its
// saved state, so that a resume does not go on with the flow over another terrain. Of files the
// values count as they were read, not the text. Left out on purpose: what decides on the mesh
// (another mesh does not fit the saved files and is refused), on the iteration, the model and the
// output, since a resume may change these.
struct Fingerprint {
    std::vector<std::pair<std::string, std::string>> entries;  // key, what it came to
};

// "restart-240_0-fingerprint.info".
std::string fingerprint_path(const std::string& restart_stem);

// Of the case at hand: of the maps as the direction has just read them, or, for a state that was
// saved earlier, as they are now (without a line on the console). Nothing if one of the files
// cannot be read; `gone` then names it.
enum class MapsAre : std::uint8_t { as_read, read_anew };
std::optional<Fingerprint> fingerprint_of(Run& run, const Direction& direction, MapsAre maps,
                                          std::string& gone);

// A text file of one entry a line, "KEY = VALUE". Lines that hold none are passed over.
void write_fingerprint(const std::string& path, const Fingerprint& fingerprint);
std::optional<Fingerprint> read_fingerprint(const std::string& path);

// The keys, joined by ", ", whose entries differ or stand on one side only; empty if none does.
std::string difference(const Fingerprint& saved, const Fingerprint& at_hand);

}  // namespace torvex
